#pragma once

// Turns the texels of a .kiva texture into RGBA images a person can look at:
// raw formats are converted to 8-bit RGBA (one-channel formats as grey, two
// channels as red and green, floats clamped to 0..1, integer and depth
// formats scaled from their full range), DXT1/3/5 blocks are decoded.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tarn/kivadump/kiva_file.h"

namespace tarn::kivaread {

// Decodes mip level `level` of a texture of a file that read without fault
// into width * height RGBA pixels, rows top to bottom. Gives false for formats
// that hold no texels (Invalid, D0) and for a level at or past the mip count.
bool decodeTextureLevel(const KivaFile& file, const KivaTexture& texture, std::uint32_t level,
                        std::vector<std::uint8_t>& rgba);

// The PNG file name of a mip level: "<index>_<name>_mip<level>.png", with the
// name's characters other than letters, digits, '.', '-' and '_' replaced by
// '_' ("<index>_mip<level>.png" for an unnamed texture).
std::string textureFileName(const KivaFile& file, std::size_t textureIndex, std::uint32_t level);

// Writes every mip level of every texture that holds texels into `directory`
// (created when missing) as PNG. Gives false and a one-line `error` when a
// file cannot be written.
bool extractTextures(const KivaFile& file, const std::filesystem::path& directory, std::string& error);

}  // namespace tarn::kivaread
