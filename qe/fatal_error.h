#pragma once

namespace qe {

// Ends the process for a broken invariant: writes text and a line end to the
// standard error stream, flushes it and aborts. Never used for bad input.
// Once installFailureHandlers ran, the abort report follows the text:
// "Aborting..." and the stacks of the failing and the registered threads.
[[noreturn]] void fatalError(const char* text);

}  // namespace qe
