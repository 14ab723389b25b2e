#include "fbx/model/fbx_layered_texture.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxLayeredTexture)

FbxLayeredTexture::FbxLayeredTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxLayeredTexture::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) entries_ = static_cast<const FbxLayeredTexture*>(from)->entries_;
}
