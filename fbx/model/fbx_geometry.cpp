#include "fbx/model/fbx_geometry.h"

#include "fbx/model/fbx_document.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGeometry)

FbxGeometry::FbxGeometry(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

int FbxGeometry::GetDeformerCount(FbxDeformer::EDeformerType type) const {
    int count = 0;
    for (int i = 0; i < GetDeformerCount(); ++i) count += GetDeformer(i)->GetDeformerType() == type;
    return count;
}

FbxDeformer* FbxGeometry::GetDeformer(int index, FbxDeformer::EDeformerType type) const {
    if (index < 0) return nullptr;
    for (int i = 0; i < GetDeformerCount(); ++i) {
        FbxDeformer* deformer = GetDeformer(i);
        if (deformer->GetDeformerType() == type && index-- == 0) return deformer;
    }
    return nullptr;
}

int FbxGeometry::AddDeformer(FbxDeformer* deformer) {
    if (!deformer || !ConnectSrcObject(deformer)) return -1;
    return GetDeformerCount() - 1;
}

void FbxGeometry::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CloneDeformersOf(*static_cast<const FbxGeometry*>(from));
}

bool FbxGeometry::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) {
        // Deformers that no other geometry uses go with the connection.
        for (int i = GetDeformerCount() - 1; i >= 0; --i) {
            FbxDeformer* own = GetDeformer(i);
            DisconnectSrcObject(own);
            if (own->GetDstObjectCount<FbxGeometry>() == 0) own->Destroy();
        }
        CloneDeformersOf(static_cast<const FbxGeometry&>(other));
    }
    return true;
}

void FbxGeometry::CloneDeformersOf(const FbxGeometry& other) {
    // A clone joins the document of its original.
    for (int i = 0; i < other.GetDeformerCount(); ++i) {
        FbxDeformer* deformer = other.GetDeformer(i);
        if (auto* clone = static_cast<FbxDeformer*>(deformer->Clone(deformer->GetOwnerDocument()))) AddDeformer(clone);
    }
}
