#pragma once

#include <cstdint>

#include "image/encoder.h"
#include "tarn/texture.h"
#include "tarn/texture_format.h"

// The mip chain: level 0 is the image as given; each further level halves
// the width (while above 1), then the height (while above 1), in place in
// pixels, so each level is made from the one before. Every level is encoded
// into one zeroed buffer of ceil(w / block width) * bytes per block by
// ceil(h / block height) rows and written to the texture. On return width
// and height are those of the last level.
void writeLevels(uint8_t* pixels, int32_t& width, int32_t& height, int32_t mipCount, tarn::TextureFormat format,
                 Encoder encoder, tarn::Texture& texture);

// The number of levels of a full chain: the smallest n >= 1 with 2^n no
// smaller than both sides. A square power-of-two image thus ends at 2 by 2.
int32_t fullMipCount(int32_t width, int32_t height);
