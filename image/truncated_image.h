#pragma once

#include <cstdint>
#include <span>

// Whether the bytes of an image file end before the data that its header
// promises: a PNG whose chunks stop before the end chunk or whose image
// data is too short to inflate to the size its header gives, or a TGA whose
// palette or pixels (raw, or in run-length packets) pass the end of the file.
// The decoder fills such gaps silently or tries to allocate what the header
// claims, so they are caught before decoding. Other files give false and are
// left to the decoder.
bool imageIsTruncated(std::span<const uint8_t> file);
