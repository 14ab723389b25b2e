#pragma once

#include <cstdint>
#include <vector>

#include "fbx/model/fbx_string.h"

class FbxFieldStream;
class FbxManager;
class FbxObject;
class FbxStatus;
class FbxTemplateMap;

// Flag word of a property record's flag letters: "A" animatable (2), "U"
// user defined (16), "+" animated (4), "H" hidden (32), "L" and "M" each
// followed by a character n that gives the lock field n * 128 and the mute
// field n * 2048: "1" to "9" are 1 to 9, "a" to "e" 10 to 14, anything else
// (or nothing) 15.
uint32_t FbxParsePropertyFlags(const char* letters);

// Reads the "Properties70" block of the current field onto the object: for
// each "P" record the property is found (a "Parent|Child" name as a path)
// or made, its flags follow the file, and its value is read by the
// property's base type and set so that a value equal to the class default
// leaves no entry. User properties bring limits and enum items. Records of
// an unknown type, or under a missing parent, are skipped. Always true;
// a blob that does not decode leaves its message in `status`.
bool FbxReadProperties70(FbxFieldStream& stream, FbxObject& object, FbxStatus& status);

// Reads the file's "Definitions": the object type words, in file order and
// each once ("Character" counts as "Constraint"), and the property
// templates of every class that the registry knows, into `templates`.
// Always true; a file without "Definitions" gives nothing.
bool FbxReadDefinitions(FbxFieldStream& stream, FbxManager& manager, std::vector<FbxString>& objectTypes,
                        FbxTemplateMap& templates, FbxStatus& status);
