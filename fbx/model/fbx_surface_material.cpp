#include "fbx/model/fbx_surface_material.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfaceMaterial)

FbxSurfaceMaterial::FbxSurfaceMaterial(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
