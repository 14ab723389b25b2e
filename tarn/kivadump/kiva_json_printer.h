#pragma once

#include <ostream>

#include "tarn/kivadump/kiva_file.h"

namespace tarn::kivaread {

// Prints a file that read without fault as one JSON document holding what the
// text dump shows: "header", then one array per table ("strings", "textures",
// "vertexBuffers", "indexBuffers", "materials", "meshes", "skeletons",
// "models", "animations"), each row at the position of its index. Names are
// strings ("" for none), references to rows are indices or null, payload
// offsets are numbers or null for empty payloads.
void printKivaJson(const KivaFile& file, std::ostream& out);

}  // namespace tarn::kivaread
