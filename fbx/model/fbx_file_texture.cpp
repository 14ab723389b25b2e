#include "fbx/model/fbx_file_texture.h"

#include "fbx/model/fbx_video.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxFileTexture)

int FbxFileTexture::sUseMaterial = -1;
int FbxFileTexture::sUseMipMap = -1;

FbxFileTexture::FbxFileTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxFileTexture::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sUseMaterial = FbxProperty::Declare(root, "UseMaterial", FbxBoolDT, false).GetId();
    sUseMipMap = FbxProperty::Declare(root, "UseMipMap", FbxBoolDT, false).GetId();
}

bool FbxFileTexture::SetFileName(const char* name) {
    if (!name || !*name) return false;
    fileName_ = name;
    if (FbxVideo* video = GetSrcObject<FbxVideo>()) video->SetFileName(name);
    return true;
}

bool FbxFileTexture::SetRelativeFileName(const char* name) {
    if (!name || !*name) return false;
    relativeFileName_ = name;
    if (FbxVideo* video = GetSrcObject<FbxVideo>()) video->SetRelativeFileName(name);
    return true;
}

void FbxFileTexture::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) {
        const auto* other = static_cast<const FbxFileTexture*>(from);
        fileName_ = other->fileName_;
        relativeFileName_ = other->relativeFileName_;
        mediaName_ = other->mediaName_;
    }
}

bool FbxFileTexture::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    const auto& texture = static_cast<const FbxFileTexture&>(other);
    fileName_ = texture.fileName_;
    relativeFileName_ = texture.relativeFileName_;
    mediaName_ = texture.mediaName_;
    return true;
}
