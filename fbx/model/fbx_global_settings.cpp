#include "fbx/model/fbx_global_settings.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGlobalSettings)

FbxGlobalSettings::FbxGlobalSettings(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
