#include "fbx/model/fbx_light.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxLight)

FbxLight::FbxLight(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
