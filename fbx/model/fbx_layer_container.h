#pragma once

#include <memory>
#include <vector>

#include "fbx/model/fbx_layer.h"
#include "fbx/model/fbx_node_attribute.h"

// A node attribute that holds layers of per-element data. The container owns
// its layers and every layer element made for it, whether a layer refers to
// it or not: an element that a file declares but no layer names still
// belongs to the container.
class FbxLayerContainer : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxLayerContainer, FbxNodeAttribute)

public:
    int GetLayerCount() const { return static_cast<int>(layers_.size()); }
    // The number of layers that have an element of the type (see
    // FbxLayer::GetLayerElementOfType).
    int GetLayerCount(FbxLayerElement::EType type, bool isUV = false) const;
    // Null past the end.
    FbxLayer* GetLayer(int index);
    const FbxLayer* GetLayer(int index) const;
    // The index-th layer among those that have an element of the type.
    FbxLayer* GetLayer(int index, FbxLayerElement::EType type, bool isUV = false);
    const FbxLayer* GetLayer(int index, FbxLayerElement::EType type, bool isUV = false) const;
    // Appends a layer; its index.
    int CreateLayer();
    // Removes every layer and every element.
    void ClearLayers();

    // Every element owned, in order of creation.
    int GetLayerElementCount() const { return static_cast<int>(elements_.size()); }
    FbxLayerElement* GetLayerElement(int index) const;

    // Takes an element made for this container; gives it back.
    template <class E>
    E* AdoptElement(E* element) {
        elements_.emplace_back(element);
        return element;
    }

protected:
    // Replaces the layers and elements by copies of the other's; layers
    // that shared an element share its copy.
    void CopyLayers(const FbxLayerContainer& other);

private:
    std::vector<std::unique_ptr<FbxLayer>> layers_;
    std::vector<std::unique_ptr<FbxLayerElement>> elements_;
};
