#include "fbx/model/fbx_blend_shape_channel.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxBlendShapeChannel)

FbxBlendShapeChannel::FbxBlendShapeChannel(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
