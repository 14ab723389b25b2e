#pragma once

#include "fbx/model/fbx_string.h"

// Path helpers of the file reading layer, for "/"-separated paths.

// The path made absolute against the working directory; as it stands when
// it already is absolute or the working directory is unknown.
FbxString FbxMakeAbsolutePath(const char* path);
// The part before the last "/", "" when there is none; "/" for a file in
// the root.
FbxString FbxPathDirectory(const char* path);
// `relative` joined to `directory`; `relative` itself when it is absolute
// or the directory is empty.
FbxString FbxJoinPath(const char* directory, const char* relative);
// True when a file or a folder of that name exists.
bool FbxPathExists(const char* path);
