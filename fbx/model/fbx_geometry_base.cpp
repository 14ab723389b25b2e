#include "fbx/model/fbx_geometry_base.h"

#include "fbx/model/fbx_status.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGeometryBase)

int FbxGeometryBase::sBBoxMin = -1;
int FbxGeometryBase::sBBoxMax = -1;

FbxGeometryBase::FbxGeometryBase(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxGeometryBase::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sBBoxMin = FbxProperty::Declare(root, "BBoxMin", FbxDouble3DT, FbxDouble3(0, 0, 0)).GetId();
    sBBoxMax = FbxProperty::Declare(root, "BBoxMax", FbxDouble3DT, FbxDouble3(0, 0, 0)).GetId();
    FbxProperty::Declare(root, "Primary Visibility", FbxBoolDT, true);
    FbxProperty::Declare(root, "Casts Shadows", FbxBoolDT, true);
    FbxProperty::Declare(root, "Receive Shadows", FbxBoolDT, true);
}

void FbxGeometryBase::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (const FbxGeometryBase* other =
            from && from->GetClassId() == GetClassId() ? FbxCast<FbxGeometryBase>(from) : nullptr) {
        controlPoints_ = other->controlPoints_;
        CopyLayers(*other);
    }
}

bool FbxGeometryBase::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) {
        const auto& geometry = static_cast<const FbxGeometryBase&>(other);
        controlPoints_ = geometry.controlPoints_;
        CopyLayers(geometry);
    }
    return true;
}

void FbxGeometryBase::InitControlPoints(int count) {
    controlPoints_.Clear();
    controlPoints_.Resize(count > 0 ? static_cast<size_t>(count) : 0);
}

void FbxGeometryBase::SetControlPointAt(const FbxVector4& point, int index) {
    if (index < 0) return;
    if (static_cast<size_t>(index) >= controlPoints_.Size() && !controlPoints_.Resize(static_cast<size_t>(index) + 1))
        return;
    controlPoints_[static_cast<size_t>(index)] = point;
}

void FbxGeometryBase::SetControlPointAt(const FbxVector4& point, const FbxVector4& normal, int index, bool indexed) {
    SetControlPointAt(point, index);
    SetControlPointNormalAt(normal, index, indexed);
}

FbxVector4 FbxGeometryBase::GetControlPointAt(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= controlPoints_.Size()) return FbxVector4();
    return controlPoints_[static_cast<size_t>(index)];
}

void FbxGeometryBase::SetControlPointNormalAt(const FbxVector4& normal, int index, bool indexed) {
    if (index < 0) return;
    if (GetLayerCount() == 0) CreateLayer();
    FbxLayer* layer = GetLayer(0);
    FbxLayerElementNormal* normals = layer->GetNormals();
    if (!normals) {
        normals = FbxLayerElementNormal::Create(this, "");
        normals->SetMappingMode(FbxLayerElement::eByControlPoint);
        normals->SetReferenceMode(indexed ? FbxLayerElement::eIndexToDirect : FbxLayerElement::eDirect);
        layer->SetNormals(normals);
    }
    if (indexed) {
        FbxLayerElementArrayTemplate<int>& indices = normals->GetIndexArray();
        if (index >= indices.GetCount()) indices.SetCount(index + 1);
        indices.SetAt(index, normals->GetDirectArray().Add(normal));
    } else {
        FbxLayerElementArrayTemplate<FbxVector4>& values = normals->GetDirectArray();
        if (index >= values.GetCount()) values.SetCount(index + 1);
        values.SetAt(index, normal);
    }
}

FbxVector4* FbxGeometryBase::GetControlPoints(FbxStatus* status) {
    if (status) status->Clear();
    return controlPoints_.Data();
}

void FbxGeometryBase::SetControlPointCount(int count) {
    controlPoints_.Resize(count > 0 ? static_cast<size_t>(count) : 0);
}

template <class E>
E* FbxGeometryBase::ElementOfType(FbxLayerElement::EType type, int index, bool isUV) const {
    const FbxLayer* layer = GetLayer(index, type, isUV);
    return layer ? static_cast<E*>(layer->GetLayerElementOfType(type, isUV)) : nullptr;
}

FbxLayerElementNormal* FbxGeometryBase::GetElementNormal(int index) const {
    return ElementOfType<FbxLayerElementNormal>(FbxLayerElement::eNormal, index);
}
FbxLayerElementBinormal* FbxGeometryBase::GetElementBinormal(int index) const {
    return ElementOfType<FbxLayerElementBinormal>(FbxLayerElement::eBinormal, index);
}
FbxLayerElementTangent* FbxGeometryBase::GetElementTangent(int index) const {
    return ElementOfType<FbxLayerElementTangent>(FbxLayerElement::eTangent, index);
}
FbxLayerElementMaterial* FbxGeometryBase::GetElementMaterial(int index) const {
    return ElementOfType<FbxLayerElementMaterial>(FbxLayerElement::eMaterial, index);
}
FbxLayerElementPolygonGroup* FbxGeometryBase::GetElementPolygonGroup(int index) const {
    return ElementOfType<FbxLayerElementPolygonGroup>(FbxLayerElement::ePolygonGroup, index);
}
FbxLayerElementVertexColor* FbxGeometryBase::GetElementVertexColor(int index) const {
    return ElementOfType<FbxLayerElementVertexColor>(FbxLayerElement::eVertexColor, index);
}
FbxLayerElementSmoothing* FbxGeometryBase::GetElementSmoothing(int index) const {
    return ElementOfType<FbxLayerElementSmoothing>(FbxLayerElement::eSmoothing, index);
}
FbxLayerElementVisibility* FbxGeometryBase::GetElementVisibility(int index) const {
    return ElementOfType<FbxLayerElementVisibility>(FbxLayerElement::eVisibility, index);
}
FbxLayerElementUV* FbxGeometryBase::GetElementUV(int index, FbxLayerElement::EType channel) const {
    if (channel < FbxLayerElement::sTypeTextureStartIndex || channel > FbxLayerElement::sTypeTextureEndIndex)
        return nullptr;
    return ElementOfType<FbxLayerElementUV>(channel, index, true);
}

template <class E>
void FbxGeometryBase::InitElement(int count, int layerIndex, const char* name, FbxLayerElement::EType type) {
    if (layerIndex < 0) return;
    if (layerIndex >= GetLayerCount()) layerIndex = CreateLayer();
    FbxLayer* layer = GetLayer(layerIndex);
    auto* element = static_cast<E*>(layer->GetLayerElementOfType(type));
    if (!element) {
        element = E::Create(this, name);
        layer->SetLayerElementOfType(element, type);
    }
    element->SetName(name);
    int points = GetControlPointsCount();
    bool byCorner = count >= 1 && count != points;
    element->SetMappingMode(byCorner ? FbxLayerElement::eByPolygonVertex : FbxLayerElement::eByControlPoint);
    element->SetReferenceMode(FbxLayerElement::eDirect);
    element->GetIndexArray().Clear();
    element->GetDirectArray().Clear();
    element->GetDirectArray().SetCount(byCorner ? count : points);
}

void FbxGeometryBase::InitTangents(int count, int layer, const char* name) {
    InitElement<FbxLayerElementTangent>(count, layer, name, FbxLayerElement::eTangent);
}

void FbxGeometryBase::InitBinormals(int count, int layer, const char* name) {
    InitElement<FbxLayerElementBinormal>(count, layer, name, FbxLayerElement::eBinormal);
}
