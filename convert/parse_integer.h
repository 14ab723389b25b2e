#pragma once

#include <cstdint>
#include <string_view>

// Parses an optional '-' followed by at least one digit and nothing else
// into a 32-bit signed value. Refuses '+', empty text, a lone '-' and any
// value outside the 32-bit range. Writes no message; out changes only on
// success.
bool parseInteger(std::string_view text, int32_t& out);
