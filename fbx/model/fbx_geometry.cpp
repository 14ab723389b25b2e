#include "fbx/model/fbx_geometry.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGeometry)

FbxGeometry::FbxGeometry(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
