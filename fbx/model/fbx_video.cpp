#include "fbx/model/fbx_video.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxVideo)

int FbxVideo::sPath = -1;

FbxVideo::FbxVideo(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxVideo::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sPath = FbxProperty::Declare(ClassId.GetRootClassProperty(), "Path", FbxStringDT, FbxString()).GetId();
}

bool FbxVideo::SetFileName(const char* name) {
    if (!name || !*name) return false;
    fileName_ = name;
    return true;
}

bool FbxVideo::SetRelativeFileName(const char* name) {
    if (!name || !*name) return false;
    relativeFileName_ = name;
    return true;
}

void FbxVideo::CopyVideoValues(const FbxVideo& other) {
    fileName_ = other.fileName_;
    relativeFileName_ = other.relativeFileName_;
    originalFileName_ = other.originalFileName_;
    embeddedSize_ = other.embeddedSize_;
    useMipMap_ = other.useMipMap_;
}

void FbxVideo::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyVideoValues(*static_cast<const FbxVideo*>(from));
}

bool FbxVideo::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyVideoValues(static_cast<const FbxVideo&>(other));
    return true;
}
