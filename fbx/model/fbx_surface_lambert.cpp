#include "fbx/model/fbx_surface_lambert.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfaceLambert)

FbxSurfaceLambert::FbxSurfaceLambert(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
