#pragma once

namespace qe {

// Ends the process for a broken invariant: writes text and a line end to the
// standard error stream, flushes it and aborts. Never used for bad input.
[[noreturn]] void fatalError(const char* text);

}  // namespace qe
