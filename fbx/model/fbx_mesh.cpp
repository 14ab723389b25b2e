#include "fbx/model/fbx_mesh.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxMesh)

FbxMesh::FbxMesh(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
