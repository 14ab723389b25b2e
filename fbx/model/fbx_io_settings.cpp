#include "fbx/model/fbx_io_settings.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxIOSettings)

FbxIOSettings::FbxIOSettings(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
