#include "scene/mesh_builder.h"

#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_vector2.h"
#include "qe/fatal_error.h"

namespace {

std::array<float, 3> narrow3(const FbxVector4& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

// A tangent or binormal of a corner, taken by its polygon-vertex index
// (through the index array when the element is indexed); zeros without an
// element or for an index outside its values.
template <class Element>
std::array<float, 3> tangentSpaceValue(const Element* element, int polygonVertex) {
    if (!element) return {0.0f, 0.0f, 0.0f};
    int index = polygonVertex;
    if (element->GetReferenceMode() == FbxLayerElement::eIndexToDirect) index = element->GetIndexArray().GetAt(index);
    return narrow3(element->GetDirectArray().GetAt(index));
}

// The attributes beyond position and normal, by format.
void fillCorner(VertexP3N3C4T4& v, const PolygonSource& source, const UvSets& uvs, int32_t polygon, int32_t corner, int,
                int) {
    v.texCoord0 = uvs.read(*source.mesh, 0, polygon, corner);
    v.texCoord1 = uvs.read(*source.mesh, 1, polygon, corner);
}

void fillCorner(VertexP3W4B4N3T2& v, const PolygonSource& source, const UvSets& uvs, int32_t polygon, int32_t corner,
                int, int controlPoint) {
    if (static_cast<size_t>(controlPoint) < source.skinInfluences.size()) {
        const SkinInfluences& influences = source.skinInfluences[static_cast<size_t>(controlPoint)];
        v.weights = influences.weights;
        v.bones = influences.bones;
    }
    v.texCoord = uvs.read(*source.mesh, 0, polygon, corner);
}

void fillCorner(VertexP3N3G3B3T4& v, const PolygonSource& source, const UvSets& uvs, int32_t polygon, int32_t corner,
                int polygonVertex, int) {
    v.tangent = tangentSpaceValue(source.tangents, polygonVertex);
    v.binormal = tangentSpaceValue(source.binormals, polygonVertex);
    v.texCoord0 = uvs.read(*source.mesh, 0, polygon, corner);
    v.texCoord1 = uvs.read(*source.mesh, 1, polygon, corner);
}

}  // namespace

PolygonSource polygonSourceOf(const FbxMesh& mesh) {
    PolygonSource source;
    source.mesh = &mesh;
    source.controlPointCount = mesh.GetControlPointsCount();
    source.controlPoints = mesh.GetControlPoints();
    source.polygonVertexCount = mesh.GetPolygonVertexCount();
    source.polygonVertices = mesh.GetPolygonVertices();
    return source;
}

std::array<float, 2> readPolygonUv(const FbxMesh& mesh, int32_t polygonIndex, int32_t vertexInPolygon,
                                   std::span<const FbxString> uvSetNames, size_t setNumber) {
    if (setNumber >= uvSetNames.size()) return {0.0f, 0.0f};
    return readElementUv(mesh, mesh.GetUVElement(uvSetNames[setNumber].c_str()), polygonIndex, vertexInPolygon);
}

std::array<float, 2> readElementUv(const FbxMesh& mesh, const FbxLayerElementUV* element, int32_t polygonIndex,
                                   int32_t vertexInPolygon) {
    // The same reading as FbxMesh::GetPolygonVertexUV, without finding the
    // element by its name again for every corner.
    FbxVector2 uv(0.0, 0.0);
    int index = -1;
    if (element && mesh.ResolveElementIndex(*element, polygonIndex, vertexInPolygon, index) && index >= 0 &&
        index < element->GetDirectArray().GetCount())
        uv = element->GetDirectArray().GetArray()[index];
    return {static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1])};
}

void UvSets::update(const PolygonSource& source) {
    if (source.mesh == mesh_ && source.uvSetNames.data() == names_ && source.uvSetNames.size() == count_) return;
    mesh_ = source.mesh;
    names_ = source.uvSetNames.data();
    count_ = source.uvSetNames.size();
    for (size_t set = 0; set < elements_.size(); ++set)
        elements_[set] = set < count_ ? mesh_->GetUVElement(names_[set].c_str()) : nullptr;
}

template <class Vertex>
void MeshBuilderImpl<Vertex>::addPolygon(const PolygonSource& source, int32_t polygonIndex) {
    const FbxMesh& mesh = *source.mesh;
    if (polygonIndex < 0 || polygonIndex >= mesh.GetPolygonCount()) return;
    const int size = mesh.GetPolygonSize(polygonIndex);
    if (size < 3) return;
    const int start = mesh.GetPolygonVertexIndex(polygonIndex);
    if (start < 0 || int64_t{start} + size > source.polygonVertexCount) return;

    uvSets_.update(source);
    corners_.resize(static_cast<size_t>(size));
    for (int k = 0; k < size; ++k) {
        const int controlPoint = source.polygonVertices[start + k];
        // One bad corner loses the whole polygon.
        if (controlPoint < 0 || controlPoint >= source.controlPointCount) return;
        Vertex& v = corners_[static_cast<size_t>(k)];
        v = Vertex{};
        v.position = narrow3(source.controlPoints[controlPoint]);
        FbxVector4 normal(0.0, 0.0, 0.0);
        mesh.GetPolygonVertexNormal(polygonIndex, k, normal);
        v.normal = narrow3(normal);
        fillCorner(v, source, uvSets_, polygonIndex, k, start + k, controlPoint);
    }
    for (size_t k = 2; k < corners_.size(); ++k) assembler_.addTriangle(corners_[0], corners_[k - 1], corners_[k]);
}

template class MeshBuilderImpl<VertexP3N3C4T4>;
template class MeshBuilderImpl<VertexP3W4B4N3T2>;
template class MeshBuilderImpl<VertexP3N3G3B3T4>;

std::unique_ptr<GenericMeshBuilder> createMeshBuilder(tarn::VertexFormat format, tarn::MeshFactory& factory) {
    switch (format) {
    case VertexP3N3C4T4::kFormat:
        return std::make_unique<MeshBuilderImpl<VertexP3N3C4T4>>(&factory, true);
    case VertexP3W4B4N3T2::kFormat:
        return std::make_unique<MeshBuilderImpl<VertexP3W4B4N3T2>>(&factory, true);
    case VertexP3N3G3B3T4::kFormat:
        return std::make_unique<MeshBuilderImpl<VertexP3N3G3B3T4>>(&factory, true);
    default:
        qe::fatalError("Incompletely implemented vertex format.");
    }
}
