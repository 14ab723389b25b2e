#include "fbx/model/fbx_library.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxLibrary)

FbxLibrary::FbxLibrary(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
