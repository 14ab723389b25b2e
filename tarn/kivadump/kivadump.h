#pragma once

// The kivadump program as a function, so that tests can run it in-process.
//
//   kivadump [--json] [--extract-textures DIR] FILE.kiva
//
// Reads and checks FILE, prints it as text (or JSON with --json) on `out`, and
// with --extract-textures writes every mip level of every texture as PNG into
// DIR. Exit codes: 0 for a valid file, 1 for a fault in the file (one line on
// `err` naming table, row and field), for a file that cannot be read and for
// a PNG that cannot be written, 2 for a usage error.

#include <ostream>
#include <span>

namespace tarn::kivaread {

inline constexpr const char* kKivadumpUsage = "usage: kivadump [--json] [--extract-textures DIR] FILE.kiva";

// `args` are the arguments behind the program name.
int runKivadump(std::span<const char* const> args, std::ostream& out, std::ostream& err);

}  // namespace tarn::kivaread
