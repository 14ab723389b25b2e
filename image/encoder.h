#pragma once

#include <cstddef>
#include <cstdint>

#include "tarn/texture_format.h"

// Encodes one level: reads width x height RGBA pixels (rows packed) and
// writes the level's bytes to destination, whose rows (of blocks, for block
// formats) lie pitch bytes apart.
using Encoder = void (*)(const uint8_t* pixels, int32_t width, int32_t height, uint8_t* destination, size_t pitch);

// The encoder of a format that a format word can choose. Any other format
// throws std::runtime_error("no encoder for texture format").
Encoder selectEncoder(tarn::TextureFormat format, bool isNormalMap);
