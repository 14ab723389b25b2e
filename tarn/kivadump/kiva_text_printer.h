#pragma once

#include <ostream>

#include "tarn/kivadump/kiva_file.h"

namespace tarn::kivaread {

// Prints a file that read without fault for a person: the header, then each
// table with its rows, names resolved through the string table and formats by
// name. Bulk data (texels, vertices, indices, transforms) shows as sizes and
// counts only.
void printKivaText(const KivaFile& file, std::ostream& out);

}  // namespace tarn::kivaread
