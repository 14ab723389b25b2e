#include "fbx/model/fbx_surface_phong.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxSurfacePhong)

FbxSurfacePhong::FbxSurfacePhong(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
