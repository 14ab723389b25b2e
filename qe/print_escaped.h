#pragma once

#include <ostream>
#include <string_view>

namespace qe {

// Writes text so that it stays on one line: quotes and backslashes get a
// backslash, control bytes 7..13 their letter escapes, and every other byte
// below 32, 127 and every byte above 127 the form \xhh (lower-case hex).
void printEscaped(std::ostream& out, std::string_view text);

}  // namespace qe
