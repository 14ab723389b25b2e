#pragma once

#include <memory>
#include <vector>

#include "fbx/model/fbx_layer_element_array.h"
#include "fbx/model/fbx_string.h"

class FbxLayerContainer;

// One kind of per-element data of a geometry (normals, UVs, materials, ...):
// the values in the direct array, and how they are found for a control
// point, polygon corner, polygon or edge. Elements are made for a layer
// container, which owns them; layers refer to them.
//
// The value of one place is found by the mapping mode, which tells what a
// value belongs to, and the reference mode: direct takes the mapped number
// as the index into the direct array; index and index to direct take the
// mapped number as an index into the index array, whose entry is the index
// into the direct array (-1 for no value).
class FbxLayerElement {
public:
    // Element types by number; 14 to 30 are the texture channels, which
    // have a UV element and a texture element each.
    enum EType {
        eUnknown = 0,
        eNormal = 1,
        eBinormal = 2,
        eTangent = 3,
        eMaterial = 4,
        ePolygonGroup = 5,
        eUV = 6,
        eVertexColor = 7,
        eSmoothing = 8,
        eVertexCrease = 9,
        eEdgeCrease = 10,
        eHole = 11,
        eUserData = 12,
        eVisibility = 13,
        eTextureDiffuse = 14,
        eTextureDiffuseFactor = 15,
        eTextureEmissive = 16,
        eTextureEmissiveFactor = 17,
        eTextureAmbient = 18,
        eTextureAmbientFactor = 19,
        eTextureSpecular = 20,
        eTextureSpecularFactor = 21,
        eTextureShininess = 22,
        eTextureNormalMap = 23,
        eTextureBump = 24,
        eTextureTransparency = 25,
        eTextureTransparencyFactor = 26,
        eTextureReflection = 27,
        eTextureReflectionFactor = 28,
        eTextureDisplacement = 29,
        eTextureDisplacementVector = 30,
        eTypeCount = 31,
    };
    static constexpr int sTypeTextureStartIndex = eTextureDiffuse;
    static constexpr int sTypeTextureEndIndex = eTextureDisplacementVector;
    static constexpr int sTypeTextureCount = 17;
    static constexpr int sTypeNonTextureCount = 13;

    enum EMappingMode {
        eNone = 0,
        eByControlPoint = 1,
        eByPolygonVertex = 2,
        eByPolygon = 3,
        eByEdge = 4,
        eAllSame = 5
    };
    enum EReferenceMode { eDirect = 0, eIndex = 1, eIndexToDirect = 2 };

    virtual ~FbxLayerElement() = default;
    FbxLayerElement(const FbxLayerElement&) = delete;
    FbxLayerElement& operator=(const FbxLayerElement&) = delete;

    // The kind; every UV element is eUV, a texture element has its channel.
    EType GetType() const { return type_; }
    FbxLayerContainer* GetOwner() const { return owner_; }

    EMappingMode GetMappingMode() const { return mappingMode_; }
    void SetMappingMode(EMappingMode mode) { mappingMode_ = mode; }
    EReferenceMode GetReferenceMode() const { return referenceMode_; }
    void SetReferenceMode(EReferenceMode mode) { referenceMode_ = mode; }
    // For a UV element, the UV set's name.
    const char* GetName() const { return name_.c_str(); }
    void SetName(const char* name) { name_ = name ? name : ""; }

    // The values, whatever their type; the typed form is GetDirectArray of
    // the element's class.
    virtual FbxLayerElementArray& GetDirectArrayBase() = 0;
    virtual const FbxLayerElementArray& GetDirectArrayBase() const = 0;
    // Used when the reference mode is not direct.
    FbxLayerElementArrayTemplate<int>& GetIndexArray() { return indexArray_; }
    const FbxLayerElementArrayTemplate<int>& GetIndexArray() const { return indexArray_; }

    // Empties both arrays.
    void Clear();
    // A copy of this element for another owner (made there).
    virtual FbxLayerElement* Clone(FbxLayerContainer* owner) const = 0;

protected:
    FbxLayerElement(EType type, FbxLayerContainer* owner, const char* name)
        : type_(type), owner_(owner), name_(name ? name : "") {}
    void CopyBaseTo(FbxLayerElement& to) const;

private:
    EType type_;
    FbxLayerContainer* owner_;
    EMappingMode mappingMode_ = eNone;
    EReferenceMode referenceMode_ = eDirect;
    FbxString name_;
    FbxLayerElementArrayTemplate<int> indexArray_;
};

// An element whose direct array holds values of type T.
template <class T>
class FbxLayerElementTemplate : public FbxLayerElement {
public:
    FbxLayerElementArrayTemplate<T>& GetDirectArray() { return directArray_; }
    const FbxLayerElementArrayTemplate<T>& GetDirectArray() const { return directArray_; }
    FbxLayerElementArray& GetDirectArrayBase() override { return directArray_; }
    const FbxLayerElementArray& GetDirectArrayBase() const override { return directArray_; }

protected:
    using FbxLayerElement::FbxLayerElement;

private:
    FbxLayerElementArrayTemplate<T> directArray_;
};

// The element classes. Create makes an element owned by `owner` (null for
// a null owner); it belongs to no layer until a layer's setter takes it.
#define KIVA_FBX_LAYER_ELEMENT(Class, ValueType, Type) \
    class Class : public FbxLayerElementTemplate<ValueType> { \
    public: \
        static Class* Create(FbxLayerContainer* owner, const char* name); \
        FbxLayerElement* Clone(FbxLayerContainer* owner) const override; \
\
    protected: \
        friend class FbxLayerContainer; \
        Class(FbxLayerContainer* owner, const char* name) : FbxLayerElementTemplate(Type, owner, name) {} \
    };

KIVA_FBX_LAYER_ELEMENT(FbxLayerElementNormal, FbxVector4, eNormal)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementBinormal, FbxVector4, eBinormal)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementTangent, FbxVector4, eTangent)
// Materials use the index array alone: each entry is a material slot of
// the node, the node's n-th material.
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementMaterial, int, eMaterial)
// Polygon groups use the index array alone.
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementPolygonGroup, int, ePolygonGroup)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementUV, FbxVector2, eUV)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementVertexColor, FbxColor, eVertexColor)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementSmoothing, int, eSmoothing)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementVertexCrease, double, eVertexCrease)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementEdgeCrease, double, eEdgeCrease)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementHole, bool, eHole)
KIVA_FBX_LAYER_ELEMENT(FbxLayerElementVisibility, bool, eVisibility)
#undef KIVA_FBX_LAYER_ELEMENT

// The textures of one channel. Its entries number the textures connected to
// the channel's material property; as a rule only the index array is used.
class FbxLayerElementTexture : public FbxLayerElementTemplate<int> {
public:
    // `channel` is one of eTextureDiffuse to eTextureDisplacementVector.
    static FbxLayerElementTexture* Create(FbxLayerContainer* owner, const char* name, EType channel = eTextureDiffuse);
    FbxLayerElement* Clone(FbxLayerContainer* owner) const override;

protected:
    friend class FbxLayerContainer;
    FbxLayerElementTexture(FbxLayerContainer* owner, const char* name, EType channel)
        : FbxLayerElementTemplate(channel, owner, name) {}
};

// Data of the writing tool's own, in named columns of one type each
// (eFbxBool, eFbxInt, eFbxFloat or eFbxDouble). The direct array is unused.
class FbxLayerElementUserData : public FbxLayerElementTemplate<int> {
public:
    struct Column {
        FbxString name;
        FbxLayerElementArray values;
    };

    static FbxLayerElementUserData* Create(FbxLayerContainer* owner, const char* name);
    FbxLayerElement* Clone(FbxLayerContainer* owner) const override;

    int GetColumnCount() const { return static_cast<int>(columns_.size()); }
    // Null for an index out of range.
    const Column* GetColumn(int index) const;
    Column* GetColumn(int index);
    // Appends an empty column; null for a type that a column cannot hold.
    Column* AddColumn(const char* name, EFbxType type);

protected:
    friend class FbxLayerContainer;
    FbxLayerElementUserData(FbxLayerContainer* owner, const char* name)
        : FbxLayerElementTemplate(eUserData, owner, name) {}

private:
    std::vector<std::unique_ptr<Column>> columns_;
};
