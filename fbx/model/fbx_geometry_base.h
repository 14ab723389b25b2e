#pragma once

#include "fbx/model/fbx_array.h"
#include "fbx/model/fbx_layer_container.h"
#include "fbx/model/fbx_vector4.h"

class FbxStatus;

// Control points and the layers over them. A control point is x, y, z in
// the geometry's own space and a w that stays as the reader left it (0 for
// points read from a file).
class FbxGeometryBase : public FbxLayerContainer {
    KIVA_FBX_OBJECT_DECLARE(FbxGeometryBase, FbxLayerContainer)

public:
    // Sizes the control point array to `count` zero points.
    virtual void InitControlPoints(int count);
    // Grows the array when `index` lies past its end; a negative index does
    // nothing.
    virtual void SetControlPointAt(const FbxVector4& point, int index);
    // The point, and the normal on layer 0 (see SetControlPointNormalAt).
    virtual void SetControlPointAt(const FbxVector4& point, const FbxVector4& normal, int index, bool indexed = false);
    // A zero vector past the end.
    virtual FbxVector4 GetControlPointAt(int index) const;
    // Sets the normal of control point `index` in the normals of layer 0,
    // made (with layer 0) mapped by control point when missing. With
    // `indexed` the element becomes index to direct, the normal is appended
    // and the index entry points at it.
    virtual void SetControlPointNormalAt(const FbxVector4& normal, int index, bool indexed = false);
    virtual int GetControlPointsCount() const { return static_cast<int>(controlPoints_.Size()); }
    // Null for an empty array.
    virtual FbxVector4* GetControlPoints(FbxStatus* status = nullptr);
    const FbxVector4* GetControlPoints() const { return controlPoints_.Data(); }
    // Resizes, keeping the points; new ones are zero.
    virtual void SetControlPointCount(int count);
    // The control points as one array, for readers and converters that work
    // on all of them at once.
    FbxArray<FbxVector4>& GetControlPointArray() { return controlPoints_; }
    const FbxArray<FbxVector4>& GetControlPointArray() const { return controlPoints_; }

    // The index-th element of a type, counting only the layers that have
    // one, in layer order; null when there are fewer.
    FbxLayerElementNormal* GetElementNormal(int index = 0) const;
    FbxLayerElementBinormal* GetElementBinormal(int index = 0) const;
    FbxLayerElementTangent* GetElementTangent(int index = 0) const;
    FbxLayerElementMaterial* GetElementMaterial(int index = 0) const;
    FbxLayerElementPolygonGroup* GetElementPolygonGroup(int index = 0) const;
    FbxLayerElementVertexColor* GetElementVertexColor(int index = 0) const;
    FbxLayerElementSmoothing* GetElementSmoothing(int index = 0) const;
    FbxLayerElementVisibility* GetElementVisibility(int index = 0) const;
    // Of the UV elements of a channel.
    FbxLayerElementUV* GetElementUV(int index = 0,
                                    FbxLayerElement::EType channel = FbxLayerElement::eTextureDiffuse) const;
    int GetElementNormalCount() const { return GetLayerCount(FbxLayerElement::eNormal); }
    int GetElementTangentCount() const { return GetLayerCount(FbxLayerElement::eTangent); }
    int GetElementMaterialCount() const { return GetLayerCount(FbxLayerElement::eMaterial); }

    // Makes sure that layer `layer` (a new one when the index is past the
    // end) has a tangent (binormal) element named `name`, direct, sized to
    // `count` values mapped by polygon vertex, or to the control point count
    // mapped by control point when `count` is below 1 or equal to it.
    void InitTangents(int count, int layer = 0, const char* name = "");
    void InitBinormals(int count, int layer = 0, const char* name = "");

    // "BBoxMin", "BBoxMax" (double3, zero); "Primary Visibility",
    // "Casts Shadows", "Receive Shadows" (bool, true).
    FbxPropertyT<FbxDouble3> BBoxMin() const { return FbxProperty(GetPropertyPage(), sBBoxMin); }
    FbxPropertyT<FbxDouble3> BBoxMax() const { return FbxProperty(GetPropertyPage(), sBBoxMax); }

    // Takes over the other's properties, control points and layers.
    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    template <class E>
    E* ElementOfType(FbxLayerElement::EType type, int index, bool isUV = false) const;
    template <class E>
    void InitElement(int count, int layer, const char* name, FbxLayerElement::EType type);

    static int sBBoxMin;
    static int sBBoxMax;

    FbxArray<FbxVector4> controlPoints_;
};
