#pragma once

#include <string>

class DumpWriter;
class FbxFieldStream;

// Writes the raw field tree of the stream's current list and every block
// below it, as it walks, as an array with one object per field instance
// ("name", "values" and, when it has a block, "fields"). Fields come in the
// stream's order (by name, without regard to case), the instances of one
// name in file order. Each value is a pair of its code and its value; an
// array value is given by its element type and count, a blob by its size.
// Arrays are checked, not kept, and no value outlives its line, so that
// memory stays within the levels on the path.
//
// The walk stops at the first fault, a block that does not load or an
// array that does not decode: it gives false and the problem in `fault`;
// what was written up to there stays well formed once the writer is
// finished.
bool dumpFields(FbxFieldStream& stream, DumpWriter& writer, std::string& fault);
