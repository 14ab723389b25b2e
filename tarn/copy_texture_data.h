#pragma once

#include <cstddef>
#include <cstdint>

#include "tarn/texture_format.h"

namespace tarn {

// Copies width x height texels (in blocks of the format) from source to
// destination. A pitch of 0 means tightly packed rows; a pitch below one row
// stops the program. Gaps between destination rows keep their bytes.
void copyTextureData(uint8_t* destination, size_t destinationPitch, const uint8_t* source, size_t sourcePitch,
                     uint32_t width, uint32_t height, const TextureFormatInfo& format);

}  // namespace tarn
