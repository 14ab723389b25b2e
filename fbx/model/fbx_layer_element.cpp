#include "fbx/model/fbx_layer_element.h"

#include "fbx/model/fbx_layer_container.h"

void FbxLayerElement::Clear() {
    GetDirectArrayBase().Clear();
    indexArray_.Clear();
}

void FbxLayerElement::CopyBaseTo(FbxLayerElement& to) const {
    to.mappingMode_ = mappingMode_;
    to.referenceMode_ = referenceMode_;
    to.name_ = name_;
    to.indexArray_.CopyFrom(indexArray_);
    to.GetDirectArrayBase().CopyFrom(GetDirectArrayBase());
}

#define KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(Class) \
    Class* Class::Create(FbxLayerContainer* owner, const char* name) { \
        return owner ? owner->AdoptElement(new Class(owner, name)) : nullptr; \
    } \
    FbxLayerElement* Class::Clone(FbxLayerContainer* owner) const { \
        Class* copy = Create(owner, GetName()); \
        if (copy) CopyBaseTo(*copy); \
        return copy; \
    }

KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementNormal)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementBinormal)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementTangent)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementMaterial)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementPolygonGroup)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementUV)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementVertexColor)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementSmoothing)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementVertexCrease)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementEdgeCrease)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementHole)
KIVA_FBX_LAYER_ELEMENT_IMPLEMENT(FbxLayerElementVisibility)
#undef KIVA_FBX_LAYER_ELEMENT_IMPLEMENT

FbxLayerElementTexture* FbxLayerElementTexture::Create(FbxLayerContainer* owner, const char* name, EType channel) {
    if (!owner || channel < sTypeTextureStartIndex || channel > sTypeTextureEndIndex) return nullptr;
    return owner->AdoptElement(new FbxLayerElementTexture(owner, name, channel));
}

FbxLayerElement* FbxLayerElementTexture::Clone(FbxLayerContainer* owner) const {
    FbxLayerElementTexture* copy = Create(owner, GetName(), GetType());
    if (copy) CopyBaseTo(*copy);
    return copy;
}

FbxLayerElementUserData* FbxLayerElementUserData::Create(FbxLayerContainer* owner, const char* name) {
    return owner ? owner->AdoptElement(new FbxLayerElementUserData(owner, name)) : nullptr;
}

FbxLayerElement* FbxLayerElementUserData::Clone(FbxLayerContainer* owner) const {
    FbxLayerElementUserData* copy = Create(owner, GetName());
    if (!copy) return nullptr;
    CopyBaseTo(*copy);
    for (const auto& column : columns_)
        if (Column* to = copy->AddColumn(column->name.c_str(), column->values.GetDataType()))
            to->values.CopyFrom(column->values);
    return copy;
}

const FbxLayerElementUserData::Column* FbxLayerElementUserData::GetColumn(int index) const {
    return index >= 0 && index < GetColumnCount() ? columns_[static_cast<size_t>(index)].get() : nullptr;
}

FbxLayerElementUserData::Column* FbxLayerElementUserData::GetColumn(int index) {
    return index >= 0 && index < GetColumnCount() ? columns_[static_cast<size_t>(index)].get() : nullptr;
}

FbxLayerElementUserData::Column* FbxLayerElementUserData::AddColumn(const char* name, EFbxType type) {
    if (type != eFbxBool && type != eFbxInt && type != eFbxFloat && type != eFbxDouble) return nullptr;
    columns_.push_back(std::unique_ptr<Column>(new Column{name ? name : "", FbxLayerElementArray(type)}));
    return columns_.back().get();
}
