#pragma once

#include <cstdint>

#include "qe/report_writer.h"

namespace qe {

// Most frames a report lists for one thread.
constexpr int kMaxStackFrames = 64;

// Stores the code addresses of the calling thread's stack, innermost first,
// at most maxFrames of them, and returns their number. Safe in a signal
// handler, where the walk goes on through the handler's frame into the code
// that the signal interrupted.
int captureStack(uintptr_t* frames, int maxFrames);

// Writes one line per frame: "function+0xoffset, file, line N", without the
// file and line where no debug information covers the address, and only
// "0xaddress" where no symbol does. A call inlined at the address gets a line
// of its own, marked "[inlined]", before its caller. Reads the symbols on
// first use and allocates nothing on the heap.
void printFrames(ReportWriter& out, const uintptr_t* frames, int count);

// Writes the calling thread's stack; the frames of the reporting functions
// themselves head the list.
void printCurrentStack(ReportWriter& out);

// Writes a C++ type name (as std::type_info gives it) in source form.
void printTypeName(ReportWriter& out, const char* mangledName);

}  // namespace qe
