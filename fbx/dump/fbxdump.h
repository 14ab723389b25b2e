#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// The fbxdump program without its process: `args` are the command-line
// arguments behind the program name. Writes the dump to `out` and messages
// to `err`; gives the exit code: 0 for a dump, 1 for a usage error or a
// file that cannot be read.
//
//     fbxdump [--fields] [--json] [--convert] [--triangulate] [--time SECONDS[,SECONDS...]]...
//             [--write-text OUT.fbx] FILE.fbx
//
// FILE may be a binary or a text FBX file. By default it shows the file's
// version, creator and syntax, the node tree from the root, every object of
// the scene by class, the animation stacks and each node's local and global
// matrix: static, or at each --time given. --fields shows the raw field tree
// of the file instead; --json writes either as one JSON document.
// --write-text writes the file's field tree to OUT.fbx in the text syntax
// and shows nothing. --convert first brings the scene to up +Z, front -Y,
// coord +X in metres, as the converter does; --triangulate (after that)
// turns every node's mesh into triangles and lists each mesh node with its
// triangle count under "triangulation". The dump is written as it is made. A file that imports
// only in part is dumped as far as it was read, its status goes to `err` as
// one line headed by the file, and the exit code is 1; --fields stops the
// same way at the first array or block that does not read.
int runFbxDump(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
