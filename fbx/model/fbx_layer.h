#pragma once

#include "fbx/model/fbx_layer_element.h"

// One layer of a geometry: at most one element of each type, and for each of
// the 17 texture channels a UV element and a texture element. The layer
// refers to elements; their owner is the layer container. All slots are
// empty on creation.
class FbxLayer {
public:
    FbxLayer() = default;
    FbxLayer(const FbxLayer&) = delete;
    FbxLayer& operator=(const FbxLayer&) = delete;

    FbxLayerElementNormal* GetNormals() const { return Get<FbxLayerElementNormal>(FbxLayerElement::eNormal); }
    void SetNormals(FbxLayerElementNormal* e) { slots_[FbxLayerElement::eNormal] = e; }
    FbxLayerElementBinormal* GetBinormals() const { return Get<FbxLayerElementBinormal>(FbxLayerElement::eBinormal); }
    void SetBinormals(FbxLayerElementBinormal* e) { slots_[FbxLayerElement::eBinormal] = e; }
    FbxLayerElementTangent* GetTangents() const { return Get<FbxLayerElementTangent>(FbxLayerElement::eTangent); }
    void SetTangents(FbxLayerElementTangent* e) { slots_[FbxLayerElement::eTangent] = e; }
    FbxLayerElementMaterial* GetMaterials() const { return Get<FbxLayerElementMaterial>(FbxLayerElement::eMaterial); }
    void SetMaterials(FbxLayerElementMaterial* e) { slots_[FbxLayerElement::eMaterial] = e; }
    FbxLayerElementPolygonGroup* GetPolygonGroups() const {
        return Get<FbxLayerElementPolygonGroup>(FbxLayerElement::ePolygonGroup);
    }
    void SetPolygonGroups(FbxLayerElementPolygonGroup* e) { slots_[FbxLayerElement::ePolygonGroup] = e; }
    FbxLayerElementVertexColor* GetVertexColors() const {
        return Get<FbxLayerElementVertexColor>(FbxLayerElement::eVertexColor);
    }
    void SetVertexColors(FbxLayerElementVertexColor* e) { slots_[FbxLayerElement::eVertexColor] = e; }
    FbxLayerElementSmoothing* GetSmoothing() const {
        return Get<FbxLayerElementSmoothing>(FbxLayerElement::eSmoothing);
    }
    void SetSmoothing(FbxLayerElementSmoothing* e) { slots_[FbxLayerElement::eSmoothing] = e; }
    FbxLayerElementVertexCrease* GetVertexCrease() const {
        return Get<FbxLayerElementVertexCrease>(FbxLayerElement::eVertexCrease);
    }
    void SetVertexCrease(FbxLayerElementVertexCrease* e) { slots_[FbxLayerElement::eVertexCrease] = e; }
    FbxLayerElementEdgeCrease* GetEdgeCrease() const {
        return Get<FbxLayerElementEdgeCrease>(FbxLayerElement::eEdgeCrease);
    }
    void SetEdgeCrease(FbxLayerElementEdgeCrease* e) { slots_[FbxLayerElement::eEdgeCrease] = e; }
    FbxLayerElementHole* GetHole() const { return Get<FbxLayerElementHole>(FbxLayerElement::eHole); }
    void SetHole(FbxLayerElementHole* e) { slots_[FbxLayerElement::eHole] = e; }
    FbxLayerElementUserData* GetUserData() const { return Get<FbxLayerElementUserData>(FbxLayerElement::eUserData); }
    void SetUserData(FbxLayerElementUserData* e) { slots_[FbxLayerElement::eUserData] = e; }
    FbxLayerElementVisibility* GetVisibility() const {
        return Get<FbxLayerElementVisibility>(FbxLayerElement::eVisibility);
    }
    void SetVisibility(FbxLayerElementVisibility* e) { slots_[FbxLayerElement::eVisibility] = e; }

    // The UV element of a texture channel (eTextureDiffuse to
    // eTextureDisplacementVector); null for any other type. The diffuse
    // channel is also the layer's eUV slot.
    FbxLayerElementUV* GetUVs(FbxLayerElement::EType channel = FbxLayerElement::eTextureDiffuse) const;
    void SetUVs(FbxLayerElementUV* e, FbxLayerElement::EType channel = FbxLayerElement::eTextureDiffuse);
    // The texture element of a channel; null for any other type.
    FbxLayerElementTexture* GetTextures(FbxLayerElement::EType channel) const;
    void SetTextures(FbxLayerElement::EType channel, FbxLayerElementTexture* e);
    // The UV elements of the layer in channel order, and their channels.
    int GetUVSetCount() const;
    std::vector<const FbxLayerElementUV*> GetUVSets() const;
    std::vector<FbxLayerElement::EType> GetUVSetChannels() const;

    // The element of a type: for the texture channels the UV element when
    // `isUV`, else the texture element. Null when empty or for a bad type.
    FbxLayerElement* GetLayerElementOfType(FbxLayerElement::EType type, bool isUV = false) const;
    // The setter of the type; false (nothing set) when the element is of
    // another class.
    bool SetLayerElementOfType(FbxLayerElement* element, FbxLayerElement::EType type, bool isUV = false);

private:
    static bool IsChannel(FbxLayerElement::EType type) {
        return type >= FbxLayerElement::sTypeTextureStartIndex && type <= FbxLayerElement::sTypeTextureEndIndex;
    }
    template <class E>
    E* Get(FbxLayerElement::EType type) const {
        return static_cast<E*>(type == FbxLayerElement::eUV ? uvs_[0] : slots_[type]);
    }

    // By type 1 to 13; slot 6 stays empty, the diffuse UV stands for it.
    FbxLayerElement* slots_[FbxLayerElement::sTypeNonTextureCount + 1] = {};
    FbxLayerElementUV* uvs_[FbxLayerElement::sTypeTextureCount] = {};
    FbxLayerElementTexture* textures_[FbxLayerElement::sTypeTextureCount] = {};
};
