#pragma once

#include <cstdint>

// Halving of an RGBA image (4 bytes a pixel, rows packed) in place. Each new
// channel byte is the truncated average of two old ones; an odd side loses
// its last column or row. The result is packed with the new size from the
// start of the buffer. Shared by the size limit and the mip chain.
void halveWidth(uint8_t* pixels, int32_t& width, int32_t height);
void halveHeight(uint8_t* pixels, int32_t width, int32_t& height);
