#pragma once

#include <string_view>

#include "tarn/texture_format.h"

// The texture format named by a word of the "texture-format-alpha" and
// "texture-format-noalpha" settings, compared over its whole length without
// regard to case: argb and rgba (A8R8G8B8, no channels moved), rgb
// (X8R8G8B8), dxt1, dxt3, dxt5, r8. False for any other word.
bool textureFormatFromWord(std::string_view word, tarn::TextureFormat& format);
