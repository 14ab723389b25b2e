#include "fbx/model/fbx_document.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxDocument)

FbxDocument::FbxDocument(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

bool FbxDocument::SetTakeInfo(const FbxTakeInfo& takeInfo) {
    if (takeInfo.name.empty()) return false;
    for (FbxTakeInfo& existing : takeInfos_) {
        if (existing.name == takeInfo.name) {
            existing = takeInfo;
            return true;
        }
    }
    takeInfos_.push_back(takeInfo);
    return true;
}

const FbxTakeInfo* FbxDocument::GetTakeInfo(const char* name) const {
    if (!name) return nullptr;
    for (const FbxTakeInfo& info : takeInfos_)
        if (info.name == name) return &info;
    return nullptr;
}
