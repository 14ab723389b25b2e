#pragma once

#include "fbx/dump/dump_value.h"

class FbxFieldStream;

// The raw field tree of the stream's current list and every block below
// it: an array with one object per field instance ("name", "values" and,
// when it has a block, "fields"). Fields come in the stream's order (by
// name, without regard to case), the instances of one name in file order.
// Each value is a pair of its code and its value; an array value is given
// by its element type and count ("array" in a text file, whose values carry
// no type), a blob by its size. Leaves the list
// rewound.
DumpValue dumpFields(FbxFieldStream& stream);

// One value of the current instance, read by its code, as dumpFields
// shows it.
DumpValue dumpFieldValue(FbxFieldStream& stream);
