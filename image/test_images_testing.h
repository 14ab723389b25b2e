#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Test images made at test time, so that no binaries need committing.

// width * height pixels of `channels` bytes each with a deterministic
// pattern that varies in every channel.
std::vector<uint8_t> patternPixels(int width, int height, int channels, uint32_t seed = 1);

// Write pixels of `channels` bytes each (1 grey, 2 grey+alpha, 3 RGB,
// 4 RGBA). False when the file could not be written.
bool writePng(const std::string& path, int width, int height, int channels, const std::vector<uint8_t>& pixels);
bool writeTga(const std::string& path, int width, int height, int channels, const std::vector<uint8_t>& pixels);
