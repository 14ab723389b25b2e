#pragma once

#include <cstddef>
#include <cstdint>

// Block compression of one level through libsquish with its defaults
// (cluster fit, perceptual metric, no alpha weighting). Edge blocks of sizes
// that are no multiple of 4 use only the pixels that exist. The destination
// must be packed rows of blocks: pitch is one row of blocks.
void encodeDxt1(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);
void encodeDxt3(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);
void encodeDxt5(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);

// DXT5 of a normal map: each pixel becomes (255, green, 255, red), so the
// source's red travels in the alpha block, which keeps it at higher
// precision. The source pixels are not changed: the next mip level halves
// the real channels.
void encodeNormalDxt5(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);

// The swizzle alone, into a buffer of width * height pixels.
void swizzleNormal(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* swizzled);
