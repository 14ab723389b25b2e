#pragma once

#include <cstdint>
#include <vector>

#include "fbx/model/fbx_array.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_vector2.h"

// A polygon mesh: control points, polygons as runs of the polygon-vertex
// array (each entry a control point index, one per corner), and layers of
// per-element data. Polygon p's corner k is entry start(p) + k of that array;
// that entry's number is the corner's polygon-vertex index.
//
// The value of a layer element for corner k of polygon p is found by the
// element's mapping: by control point it is the corner's control point, by
// polygon vertex the corner's polygon-vertex index, by polygon p itself; the
// modes none, by edge and all same give no value for a corner. With a
// reference mode other than direct that number goes through the index array
// first. An index of -1 stands for no value.
class FbxMesh : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxMesh, FbxGeometry)

public:
    struct Polygon {
        int32_t start;  // first entry in the polygon-vertex array
        int32_t size;   // number of corners
        int32_t group;
    };

    FbxNodeAttribute::EType GetAttributeType() const override { return FbxNodeAttribute::eMesh; }

    // --- Building ---
    // Starts a polygon behind the last one. With a material element on
    // layer 0 mapped by polygon and indexed, its index array is grown to the
    // polygon count and the new entry gets `material`; with no material
    // element, a first polygon of a material other than -1 makes one (and
    // layer 0 when missing). `texture` and `legacy` are kept for callers
    // that pass them; nothing reads them.
    void BeginPolygon(int material = -1, int texture = -1, int group = -1, bool legacy = true);
    // Appends a corner of control point `index` to the last polygon, as it
    // stands (no range check). Does nothing before the first BeginPolygon.
    void AddPolygon(int index, int textureIndex = -1);
    void EndPolygon() {}
    // Removes every polygon; control points and layers stay.
    void ClearPolygons();
    void ReservePolygonCount(int count);
    void ReservePolygonVertexCount(int count);

    // --- Polygons ---
    int GetPolygonCount() const { return static_cast<int>(polygons_.Size()); }
    // -1 for a bad polygon.
    int GetPolygonSize(int polygon) const;
    // The polygon's start in the polygon-vertex array; -1 for a bad polygon.
    int GetPolygonVertexIndex(int polygon) const;
    int GetPolygonGroup(int polygon) const;
    // The control point of a corner; -1 for a bad polygon or corner.
    int GetPolygonVertex(int polygon, int corner) const;
    int GetPolygonVertexCount() const { return static_cast<int>(polygonVertices_.Size()); }
    // Null when empty.
    int* GetPolygonVertices() { return polygonVertices_.Data(); }
    const int* GetPolygonVertices() const { return polygonVertices_.Data(); }
    // True when every polygon has three corners; an empty mesh counts.
    bool IsTriangleMesh() const;
    // The raw arrays, for readers and converters that build or rewrite a
    // whole mesh in one go. A polygon's run must lie inside the
    // polygon-vertex array.
    FbxArray<Polygon>& GetPolygonArray() { return polygons_; }
    const FbxArray<Polygon>& GetPolygonArray() const { return polygons_; }
    FbxArray<int>& GetPolygonVertexArray() { return polygonVertices_; }
    const FbxArray<int>& GetPolygonVertexArray() const { return polygonVertices_; }

    // --- Edges and subdivision, kept as a file gives them ---
    int GetMeshEdgeCount() const { return static_cast<int>(edges_.Size()); }
    FbxArray<int>& GetEdgeArray() { return edges_; }
    const FbxArray<int>& GetEdgeArray() const { return edges_; }
    uint32_t GetSmoothness() const { return smoothness_; }
    void SetSmoothness(uint32_t v) { smoothness_ = v; }
    uint32_t GetBoundaryRule() const { return boundaryRule_; }
    void SetBoundaryRule(uint32_t v) { boundaryRule_ = v; }
    int GetPreviewDivisionLevels() const { return previewDivisionLevels_; }
    // A negative level becomes 0.
    void SetPreviewDivisionLevels(int v) { previewDivisionLevels_ = v < 0 ? 0 : v; }
    int GetRenderDivisionLevels() const { return renderDivisionLevels_; }
    void SetRenderDivisionLevels(int v) { renderDivisionLevels_ = v < 0 ? 0 : v; }
    bool GetDisplaySubdivisions() const { return displaySubdivisions_; }
    void SetDisplaySubdivisions(bool v) { displaySubdivisions_ = v; }
    bool GetPreserveBorders() const { return preserveBorders_; }
    void SetPreserveBorders(bool v) { preserveBorders_ = v; }
    bool GetPreserveHardEdges() const { return preserveHardEdges_; }
    void SetPreserveHardEdges(bool v) { preserveHardEdges_ = v; }
    bool GetPropagateEdgeHardness() const { return propagateEdgeHardness_; }
    void SetPropagateEdgeHardness(bool v) { propagateEdgeHardness_ = v; }

    // --- Corner values ---
    // The value index of corner `corner` of `polygon` in `element` (see the
    // class comment); false for a bad polygon or corner, a mapping without
    // corner values, or a place outside the array consulted. The index may
    // be -1.
    bool ResolveElementIndex(const FbxLayerElement& element, int polygon, int corner, int& index) const;
    // The corner's normal from GetElementNormal(0); false (normal untouched)
    // without one or when the index does not resolve into the values.
    bool GetPolygonVertexNormal(int polygon, int corner, FbxVector4& normal) const;
    // The corner's UV of the named set. False when there is no such set or
    // the index does not resolve. An index of -1 gives true with `unmapped`
    // set; another index outside the values gives false. `uv` is untouched
    // unless a value is found.
    bool GetPolygonVertexUV(int polygon, int corner, const char* uvSetName, FbxVector2& uv, bool& unmapped) const;
    // The UV set names of every layer, each layer's channels in order; the
    // same name may come twice. `names` is cleared first.
    void GetUVSetNames(std::vector<FbxString>& names) const;
    // The first UV element in the order of GetUVSetNames with that name, and
    // the index of its layer.
    const FbxLayerElementUV* GetUVElement(const char* name, int* layer = nullptr) const;

    // Computes a tangent and a binormal for every corner from the UV set of
    // that name and the normals of layer 0, into elements of the UV set's
    // layer: each corner's values are averaged with those of the other
    // corners at its control point that share its normal and UV index.
    // False without such a UV set or without normals on layer 0; without
    // `overwrite`, existing tangents on layer 0 give true and stay.
    bool GenerateTangentsData(const char* uvSetName, bool overwrite = false);

    // Takes over the other mesh's geometry and layers, its polygons, edges
    // and subdivision settings, and clones of its deformers.
    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;

private:
    void CopyMeshValues(const FbxMesh& other);

    FbxArray<Polygon> polygons_;
    FbxArray<int> polygonVertices_;
    FbxArray<int> edges_;
    uint32_t smoothness_ = 0;
    uint32_t boundaryRule_ = 0;
    int previewDivisionLevels_ = 0;
    int renderDivisionLevels_ = 0;
    bool displaySubdivisions_ = false;
    bool preserveBorders_ = false;
    bool preserveHardEdges_ = false;
    bool propagateEdgeHardness_ = false;
};
