#include "fbx/model/fbx_layer.h"

FbxLayerElementUV* FbxLayer::GetUVs(FbxLayerElement::EType channel) const {
    return IsChannel(channel) ? uvs_[channel - FbxLayerElement::sTypeTextureStartIndex] : nullptr;
}

void FbxLayer::SetUVs(FbxLayerElementUV* e, FbxLayerElement::EType channel) {
    if (IsChannel(channel)) uvs_[channel - FbxLayerElement::sTypeTextureStartIndex] = e;
}

FbxLayerElementTexture* FbxLayer::GetTextures(FbxLayerElement::EType channel) const {
    return IsChannel(channel) ? textures_[channel - FbxLayerElement::sTypeTextureStartIndex] : nullptr;
}

void FbxLayer::SetTextures(FbxLayerElement::EType channel, FbxLayerElementTexture* e) {
    if (IsChannel(channel)) textures_[channel - FbxLayerElement::sTypeTextureStartIndex] = e;
}

int FbxLayer::GetUVSetCount() const {
    int count = 0;
    for (const FbxLayerElementUV* uv : uvs_) count += uv != nullptr;
    return count;
}

std::vector<const FbxLayerElementUV*> FbxLayer::GetUVSets() const {
    std::vector<const FbxLayerElementUV*> sets;
    for (const FbxLayerElementUV* uv : uvs_)
        if (uv) sets.push_back(uv);
    return sets;
}

std::vector<FbxLayerElement::EType> FbxLayer::GetUVSetChannels() const {
    std::vector<FbxLayerElement::EType> channels;
    for (int i = 0; i < FbxLayerElement::sTypeTextureCount; ++i)
        if (uvs_[i])
            channels.push_back(static_cast<FbxLayerElement::EType>(FbxLayerElement::sTypeTextureStartIndex + i));
    return channels;
}

FbxLayerElement* FbxLayer::GetLayerElementOfType(FbxLayerElement::EType type, bool isUV) const {
    if (type == FbxLayerElement::eUV) return uvs_[0];
    if (type > FbxLayerElement::eUnknown && type <= FbxLayerElement::sTypeNonTextureCount) return slots_[type];
    if (IsChannel(type)) return isUV ? static_cast<FbxLayerElement*>(GetUVs(type)) : GetTextures(type);
    return nullptr;
}

bool FbxLayer::SetLayerElementOfType(FbxLayerElement* element, FbxLayerElement::EType type, bool isUV) {
    if (IsChannel(type)) {
        if (isUV) {
            if (element && element->GetType() != FbxLayerElement::eUV) return false;
            SetUVs(static_cast<FbxLayerElementUV*>(element), type);
        } else {
            if (element && element->GetType() != type) return false;
            SetTextures(type, static_cast<FbxLayerElementTexture*>(element));
        }
        return true;
    }
    if (type == FbxLayerElement::eUV) return SetLayerElementOfType(element, FbxLayerElement::eTextureDiffuse, true);
    if (type <= FbxLayerElement::eUnknown || type > FbxLayerElement::sTypeNonTextureCount) return false;
    if (element && element->GetType() != type) return false;
    slots_[type] = element;
    return true;
}
