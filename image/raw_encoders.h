#pragma once

#include <cstddef>
#include <cstdint>

// The four bytes of each pixel unchanged, in decoded order (red, green,
// blue, alpha), for A8R8G8B8 and X8R8G8B8 alike.
void encodeRawCopy(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);

// Only the red byte of each pixel, for R8.
void encodeRedChannel(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);
