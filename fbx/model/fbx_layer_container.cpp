#include "fbx/model/fbx_layer_container.h"

#include <map>

KIVA_FBX_OBJECT_IMPLEMENT(FbxLayerContainer)

FbxLayerContainer::FbxLayerContainer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

int FbxLayerContainer::GetLayerCount(FbxLayerElement::EType type, bool isUV) const {
    int count = 0;
    for (const auto& layer : layers_) count += layer->GetLayerElementOfType(type, isUV) != nullptr;
    return count;
}

FbxLayer* FbxLayerContainer::GetLayer(int index) {
    return index >= 0 && index < GetLayerCount() ? layers_[static_cast<size_t>(index)].get() : nullptr;
}

const FbxLayer* FbxLayerContainer::GetLayer(int index) const {
    return index >= 0 && index < GetLayerCount() ? layers_[static_cast<size_t>(index)].get() : nullptr;
}

FbxLayer* FbxLayerContainer::GetLayer(int index, FbxLayerElement::EType type, bool isUV) {
    return const_cast<FbxLayer*>(static_cast<const FbxLayerContainer*>(this)->GetLayer(index, type, isUV));
}

const FbxLayer* FbxLayerContainer::GetLayer(int index, FbxLayerElement::EType type, bool isUV) const {
    if (index < 0) return nullptr;
    for (const auto& layer : layers_)
        if (layer->GetLayerElementOfType(type, isUV) && index-- == 0) return layer.get();
    return nullptr;
}

int FbxLayerContainer::CreateLayer() {
    layers_.push_back(std::make_unique<FbxLayer>());
    return GetLayerCount() - 1;
}

void FbxLayerContainer::ClearLayers() {
    layers_.clear();
    elements_.clear();
}

FbxLayerElement* FbxLayerContainer::GetLayerElement(int index) const {
    return index >= 0 && index < GetLayerElementCount() ? elements_[static_cast<size_t>(index)].get() : nullptr;
}

void FbxLayerContainer::CopyLayers(const FbxLayerContainer& other) {
    if (&other == this) return;
    ClearLayers();
    // Lookup only: each element of the other container to its copy.
    std::map<const FbxLayerElement*, FbxLayerElement*> copies;
    for (const auto& element : other.elements_) copies[element.get()] = element->Clone(this);
    for (const auto& from : other.layers_) {
        FbxLayer& to = *layers_[static_cast<size_t>(CreateLayer())];
        for (int type = 1; type < FbxLayerElement::eTypeCount; ++type) {
            auto t = static_cast<FbxLayerElement::EType>(type);
            if (t == FbxLayerElement::eUV) continue;
            for (bool isUV : {false, true}) {
                if (isUV && type < FbxLayerElement::sTypeTextureStartIndex) continue;
                FbxLayerElement* element = from->GetLayerElementOfType(t, isUV);
                if (!element) continue;
                auto it = copies.find(element);
                // An element of another container is copied here as well.
                FbxLayerElement* copy = it != copies.end() ? it->second : element->Clone(this);
                to.SetLayerElementOfType(copy, t, isUV);
            }
        }
    }
}
