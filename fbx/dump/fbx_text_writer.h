#pragma once

#include <iosfwd>
#include <string>

class FbxFieldStream;

// Writes the field tree of the stream's open section as a text FBX file:
// a header comment with the file's version, then every field instance as
// "Name: values", with its block in braces, indented by tabs. The tree reads
// back through FbxFieldStream to the same fields and values as the source,
// whatever its syntax:
//
// - "FBXHeaderExtension" comes first, where a reader looks for it; the other
//   fields follow in the stream's order (by name, the instances of one name
//   in file order), which is all the order a reader of the tree can see;
// - strings are quoted, with their quotes and line ends escaped; integers
//   are written in decimal, floating-point values in the shortest form that
//   reads back to the same bits (a float value as the double it widens to);
// - arrays become "*count" with a block holding one field "a" of the
//   elements; binary data becomes base64, and embedded file content (a
//   "Content" field of one blob) the size with "BinaryData" values in a
//   block, the form in which text files keep it;
// - key attribute data ("KeyAttrDataFloat") of curves whose "KeyVer" is not
//   4007 is written as the integers of the floats' bits, which is how text
//   files of that version keep it.
//
// Long value lists are wrapped. A text source is copied value for value.
// False, with a message in `error`, for a binary field that text cannot
// hold: an array beside another array or beside nested fields, since text
// gives each field instance one block.
bool writeFbxText(FbxFieldStream& stream, std::ostream& out, std::string& error);
