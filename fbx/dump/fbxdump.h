#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// The fbxdump program without its process: `args` are the command-line
// arguments behind the program name. Writes the dump to `out` and messages
// to `err`; gives the exit code: 0 for a dump, 1 for a usage error or a
// file that cannot be read.
//
//     fbxdump [--fields] [--json] FILE.fbx
//
// By default it shows the file's version and creator, the node tree from
// the root and every object of the scene by class. --fields shows the raw
// field tree of the file instead; --json writes either as one JSON
// document. The dump is written as it is made. A file that imports only in
// part is dumped as far as it was read, its status goes to `err` as one
// line headed by the file, and the exit code is 1; --fields stops the same
// way at the first array or block that does not read.
int runFbxDump(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
