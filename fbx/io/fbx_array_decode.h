#pragma once

#include "fbx/io/fbx_byte_buffer.h"

#include <cstddef>
#include <cstdint>

// Decodes one binary array value into `out`. `value` points at the array
// header behind the code byte (element count, encoding, byte length, data)
// and `available` is how many bytes of the value list lie from there on.
// Raw data must be exactly count * elementSize bytes; zlib data must inflate
// to exactly that many bytes, end its stream and use up its byte length.
// Elements are byte-swapped when `swap` is set; with `boolean` every non-zero
// byte becomes 1. Returns the element count, 0 on any failure.
uint32_t FbxDecodeArray(const uint8_t* value, size_t available, size_t elementSize, bool swap, bool boolean,
                        FbxByteBuffer& out);

// Inflates a zlib stream of `size` bytes into exactly `expected` bytes at the
// start of `out`. The output grows with what the stream really gives, so a
// count that claims more than the data holds costs no memory up front.
bool FbxInflateExact(const uint8_t* data, size_t size, size_t expected, FbxByteBuffer& out);

// Checks one binary array value as FbxDecodeArray would decode it, without
// keeping its elements: zlib data is inflated through a small buffer of
// the stack and counted. True, with the element count, when it decodes;
// an array of count 0 is empty whatever its data.
bool FbxCheckArray(const uint8_t* value, size_t available, size_t elementSize, bool swap, uint32_t& count);
