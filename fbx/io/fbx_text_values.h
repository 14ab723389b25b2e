#pragma once

#include "fbx/io/fbx_byte_buffer.h"

#include <cstdint>
#include <string>
#include <string_view>

// How the values of a text FBX file are spelt, in both directions: numbers
// in base 10, strings with their three escapes, and binary data in base64.
//
// The conversions read like the C library's: leading blanks and one sign
// are taken, then as many digits as stand there; text that holds no number
// gives 0. They do not depend on the process locale.

// A signed 64-bit integer; out-of-range values saturate.
int64_t FbxTextToLong(std::string_view text);
// A signed 32-bit integer; out-of-range values saturate.
int32_t FbxTextToInt(std::string_view text);
// An unsigned 64-bit integer; a leading "-" negates it modulo 2^64, and
// values out of range give the largest one.
uint64_t FbxTextToULong(std::string_view text);
// A double in decimal notation, with "inf" and "nan" as the C library
// spells them; no hexadecimal floats.
double FbxTextToDouble(std::string_view text);

// Undoes the escapes of a value: "&quot;" is a double quote, "&lf;" a line
// feed, "&cr;" a carriage return. Any other "&" stands for itself.
void FbxTextUnescape(std::string_view text, std::string& out);
// The reverse: the value as it goes between two double quotes.
void FbxTextEscape(std::string_view text, std::string& out);

// Decodes base64 text into `out` (its size is the decoded length). Blanks
// and line ends are skipped, decoding stops at the first "=" or at a byte
// outside the alphabet. False when memory cannot be had.
bool FbxDecodeBase64(std::string_view text, FbxByteBuffer& out);
// Appends the base64 form of the bytes, padded with "=".
void FbxEncodeBase64(const void* data, size_t size, std::string& out);
