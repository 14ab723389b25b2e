#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "fbx/model/fbx_layer_element.h"
#include "fbx/model/fbx_string.h"
#include "fbx/model/fbx_vector4.h"
#include "qe/counted.h"
#include "scene/mesh_assembler.h"
#include "scene/skin_influences.h"
#include "scene/vertex_formats.h"
#include "tarn/material_data.h"
#include "tarn/mesh.h"
#include "tarn/mesh_factory.h"

class FbxMesh;

// What a mesh builder reads of one FbxMesh, gathered once for all its
// polygons. The arrays belong to the mesh (and the caller) and must outlive
// the builder's addPolygon calls.
struct PolygonSource {
    const FbxMesh* mesh = nullptr;
    int32_t controlPointCount = 0;
    const FbxVector4* controlPoints = nullptr;
    int32_t polygonVertexCount = 0;
    const int* polygonVertices = nullptr;
    // Taken by polygon vertex; either may be null (zeros then).
    const FbxLayerElementTangent* tangents = nullptr;
    const FbxLayerElementBinormal* binormals = nullptr;
    // Every UV set name of the mesh: the first gives a vertex's first
    // texture coordinates, the second its second.
    std::span<const FbxString> uvSetNames;
    // One entry per control point for a skinned mesh, with packed bytes.
    std::span<const SkinInfluences> skinInfluences;
};

// The mesh's own control points and polygon vertices; the rest stays empty
// for the caller to fill.
PolygonSource polygonSourceOf(const FbxMesh& mesh);

// The UV of a polygon corner in UV set `setNumber`, with V flipped (1 - v,
// worked out in double precision). (0, 0) when the mesh has no such set; a
// corner of an existing set whose UV cannot be read gives (0, 1).
std::array<float, 2> readPolygonUv(const FbxMesh& mesh, int32_t polygonIndex, int32_t vertexInPolygon,
                                   std::span<const FbxString> uvSetNames, size_t setNumber);

// The same for the UV element of a set (null when the mesh has none of that
// name: (0, 1)).
std::array<float, 2> readElementUv(const FbxMesh& mesh, const FbxLayerElementUV* element, int32_t polygonIndex,
                                   int32_t vertexInPolygon);

// The UV elements of the first two UV set names of a PolygonSource, found
// once for as long as the builder is fed the same mesh and names.
class UvSets {
public:
    void update(const PolygonSource& source);
    // As readPolygonUv with set number `set` (0 or 1).
    std::array<float, 2> read(const FbxMesh& mesh, size_t set, int32_t polygonIndex, int32_t vertexInPolygon) const {
        if (set >= count_) return {0.0f, 0.0f};
        return readElementUv(mesh, elements_[set], polygonIndex, vertexInPolygon);
    }

private:
    const FbxMesh* mesh_ = nullptr;
    const FbxString* names_ = nullptr;
    size_t count_ = 0;
    std::array<const FbxLayerElementUV*, 2> elements_{};
};

// Turns the polygons of one FbxMesh into meshes of one vertex format.
// Use: setMaterial, then the polygons drawn with it, any number of times;
// then finish once.
class GenericMeshBuilder {
public:
    virtual ~GenericMeshBuilder() = default;

    // An empty material is allowed (materials switched off).
    virtual void setMaterial(qe::Ref<tarn::MaterialData> material) = 0;
    // Fans the polygon into triangles (0, k-1, k), keeping its winding.
    // A polygon that does not exist, has fewer than three corners, runs
    // past the polygon-vertex array or names a control point that does not
    // exist adds nothing, without a message.
    virtual void addPolygon(const PolygonSource& source, int32_t polygonIndex) = 0;
    // Appends the builder's meshes, in order, to `out`.
    virtual void finish(std::vector<qe::Ref<tarn::Mesh>>& out) = 0;
};

// A builder for one of the vertex structs of vertex_formats.h. Positions and
// normals are the mesh's own, narrowed to float (a missing normal is
// zero); texture coordinates have V flipped (1 - v).
template <class Vertex>
class MeshBuilderImpl final : public GenericMeshBuilder {
public:
    MeshBuilderImpl(tarn::MeshFactory* factory, bool multipleGroups) : assembler_(factory, multipleGroups) {}

    void setMaterial(qe::Ref<tarn::MaterialData> material) override { assembler_.setMaterial(std::move(material)); }
    void addPolygon(const PolygonSource& source, int32_t polygonIndex) override;
    void finish(std::vector<qe::Ref<tarn::Mesh>>& out) override { assembler_.finish(out); }

private:
    MeshAssembler<Vertex> assembler_;
    UvSets uvSets_;
    std::vector<Vertex> corners_;  // of the polygon being added
};

extern template class MeshBuilderImpl<VertexP3N3C4T4>;
extern template class MeshBuilderImpl<VertexP3W4B4N3T2>;
extern template class MeshBuilderImpl<VertexP3N3G3B3T4>;

// A builder of the format, with one material group per material. The
// formats are those that vertexFormatFor gives; any other stops the
// program with "Incompletely implemented vertex format.".
std::unique_ptr<GenericMeshBuilder> createMeshBuilder(tarn::VertexFormat format, tarn::MeshFactory& factory);
