#include "fbx/model/fbx_geometry_base.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGeometryBase)

FbxGeometryBase::FbxGeometryBase(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
