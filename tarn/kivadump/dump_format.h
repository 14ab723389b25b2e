#pragma once

// Text forms shared by the text and JSON dumps: numbers that read back to the
// same bits and quoted byte strings.

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::kivaread {

// Shortest decimal text that reads back to the same float ("1", "0.1",
// "-2.5e-08"); "nan", "inf" and "-inf" for the values without a decimal form.
std::string formatFloat(float value);
// "0x1F8"
std::string formatHex(std::uint64_t value);
// The bytes in double quotes, with '"' and '\' escaped by a backslash and
// control bytes as \xNN. Other bytes pass as they are (names are usually UTF-8).
std::string quoteText(std::string_view text);
// The bytes as the body of a JSON string: '"', '\' and control characters
// escaped, valid UTF-8 kept, every byte of an invalid UTF-8 sequence written as
// \u00NN so that the document stays valid.
std::string jsonEscape(std::string_view text);

}  // namespace tarn::kivaread
