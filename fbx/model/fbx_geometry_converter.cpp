#include "fbx/model/fbx_geometry_converter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "fbx/model/fbx_criteria.h"
#include "fbx/model/fbx_layer.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_polygon_triangulator.h"
#include "fbx/model/fbx_scene.h"

namespace {

// The element types whose arrays follow the polygons: per layer, the
// elements of types 1 to 5, 7 and 8, and the UV and texture element of each
// texture channel.
std::vector<std::pair<FbxLayerElement*, FbxLayerElement*>> ElementPairs(FbxLayer& to, const FbxLayer* from) {
    std::vector<std::pair<FbxLayerElement*, FbxLayerElement*>> pairs;
    auto add = [&](FbxLayerElement::EType type, bool isUV) {
        if (FbxLayerElement* element = to.GetLayerElementOfType(type, isUV))
            pairs.emplace_back(element, from ? from->GetLayerElementOfType(type, isUV) : nullptr);
    };
    for (FbxLayerElement::EType type :
         {FbxLayerElement::eNormal, FbxLayerElement::eBinormal, FbxLayerElement::eTangent, FbxLayerElement::eMaterial,
          FbxLayerElement::ePolygonGroup, FbxLayerElement::eVertexColor, FbxLayerElement::eSmoothing})
        add(type, false);
    for (int t = FbxLayerElement::sTypeTextureStartIndex; t <= FbxLayerElement::sTypeTextureEndIndex; ++t) {
        add(static_cast<FbxLayerElement::EType>(t), false);
        add(static_cast<FbxLayerElement::EType>(t), true);
    }
    return pairs;
}

// The array that holds an element's per-polygon or per-corner entries.
FbxLayerElementArray& EntryArray(FbxLayerElement& element) {
    if (element.GetReferenceMode() == FbxLayerElement::eDirect) return element.GetDirectArrayBase();
    return element.GetIndexArray();
}

bool FollowsPolygons(const FbxLayerElement& element) {
    return element.GetMappingMode() == FbxLayerElement::eByPolygon ||
           element.GetMappingMode() == FbxLayerElement::eByPolygonVertex;
}

// One element of the new mesh with the matching element of the old one,
// their entry arrays locked for the whole remap.
struct ElementRemap {
    FbxLayerElementArray* to;
    const FbxLayerElementArray* from;  // null when the old entries do not fit
    FbxLayerElement::EMappingMode mapping;
    size_t stride;
    uint8_t* toData;
    const uint8_t* fromData;
    int fromCount;

    void Copy(int toIndex, int fromIndex) const {
        if (!fromData || fromIndex < 0 || fromIndex >= fromCount) return;  // stays zero
        std::memcpy(toData + static_cast<size_t>(toIndex) * stride, fromData + static_cast<size_t>(fromIndex) * stride,
                    stride);
    }
};

// Gives a direct material element of the first layer that has one an index
// array 0, 1, 2, ... so that it reads the same as an indexed one.
void IndexDirectMaterials(FbxMesh& mesh) {
    for (int l = 0; l < mesh.GetLayerCount(); ++l) {
        FbxLayerElementMaterial* materials = mesh.GetLayer(l)->GetMaterials();
        if (!materials || materials->GetReferenceMode() != FbxLayerElement::eDirect) continue;
        int count = 0;
        switch (materials->GetMappingMode()) {
        case FbxLayerElement::eByControlPoint:
            count = mesh.GetControlPointsCount();
            break;
        case FbxLayerElement::eByPolygonVertex:
            count = mesh.GetPolygonVertexCount();
            break;
        case FbxLayerElement::eByPolygon:
            count = mesh.GetPolygonCount();
            break;
        case FbxLayerElement::eByEdge:
            count = mesh.GetMeshEdgeCount();
            break;
        case FbxLayerElement::eAllSame:
            count = 1;
            break;
        default:
            break;
        }
        materials->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        FbxLayerElementArrayTemplate<int>& indices = materials->GetIndexArray();
        indices.Clear();
        if (indices.SetCount(count))
            for (int i = 0; i < count; ++i) indices.SetAt(i, i);
        return;
    }
}

// For each corner of a polygon, the first corner that visits the same
// control point: the corner whose old values the new corners take.
void FirstVisits(const int* vertices, int size, std::vector<int>& first, std::vector<std::pair<int, int>>& scratch) {
    first.resize(static_cast<size_t>(size));
    if (size <= 16) {
        for (int i = 0; i < size; ++i) {
            int j = 0;
            while (vertices[j] != vertices[i]) ++j;
            first[static_cast<size_t>(i)] = j;
        }
        return;
    }
    scratch.clear();
    for (int i = 0; i < size; ++i) scratch.emplace_back(vertices[i], i);
    std::sort(scratch.begin(), scratch.end());
    for (size_t k = 0; k < scratch.size(); ++k)
        first[static_cast<size_t>(scratch[k].second)] = k > 0 && scratch[k - 1].first == scratch[k].first
                                                            ? first[static_cast<size_t>(scratch[k - 1].second)]
                                                            : scratch[k].second;
}

// The edges of a mesh: for each undirected pair of control points joined
// by consecutive corners, the polygon-vertex index where it is first met.
// Pairs are bucketed by their smaller control point, in corner order, so
// that a pair's first corner is the first of its kind in its bucket: linear
// work with local memory, where a hash table or a sort of all pairs misses
// the caches on large meshes.
void BuildEdges(FbxMesh& mesh) {
    FbxArray<int>& edges = mesh.GetEdgeArray();
    edges.Clear();
    const int* vertices = mesh.GetPolygonVertices();
    const int pointCount = mesh.GetControlPointsCount();
    const int cornerCount = std::max(0, mesh.GetPolygonVertexCount());
    struct Pair {
        int low = 0, high = 0;
    };
    std::vector<Pair> pairs(static_cast<size_t>(cornerCount));
    std::vector<int> bucketStart(static_cast<size_t>(pointCount) + 2, 0);
    for (int p = 0; p < mesh.GetPolygonCount(); ++p) {
        const int start = mesh.GetPolygonVertexIndex(p), size = mesh.GetPolygonSize(p);
        for (int i = 0; i < size; ++i) {
            int a = vertices[start + i], b = vertices[start + (i + 1) % size];
            // A corner that names no control point shares the last bucket.
            a = a < 0 || a >= pointCount ? pointCount : a;
            b = b < 0 || b >= pointCount ? pointCount : b;
            pairs[static_cast<size_t>(start + i)] = {std::min(a, b), std::max(a, b)};
            ++bucketStart[static_cast<size_t>(std::min(a, b)) + 1];
        }
    }
    for (size_t k = 1; k < bucketStart.size(); ++k) bucketStart[k] += bucketStart[k - 1];
    std::vector<int> fill(bucketStart.begin(), bucketStart.end() - 1);
    std::vector<int> bucketed(static_cast<size_t>(cornerCount));  // corners, by bucket, in corner order
    for (int corner = 0; corner < cornerCount; ++corner)
        bucketed[static_cast<size_t>(fill[static_cast<size_t>(pairs[static_cast<size_t>(corner)].low)]++)] = corner;

    std::vector<char> first(static_cast<size_t>(cornerCount), 0);
    std::vector<std::pair<int, int>> wide;  // (high, corner) of a bucket too large to scan
    for (size_t bucket = 0; bucket + 1 < bucketStart.size(); ++bucket) {
        const int begin = bucketStart[bucket], end = bucketStart[bucket + 1];
        if (end - begin <= 32) {
            for (int k = begin; k < end; ++k) {
                const int corner = bucketed[static_cast<size_t>(k)];
                bool seen = false;
                for (int j = begin; j < k && !seen; ++j)
                    seen = pairs[static_cast<size_t>(bucketed[static_cast<size_t>(j)])].high ==
                           pairs[static_cast<size_t>(corner)].high;
                first[static_cast<size_t>(corner)] = !seen;
            }
            continue;
        }
        wide.clear();
        for (int k = begin; k < end; ++k) {
            const int corner = bucketed[static_cast<size_t>(k)];
            wide.emplace_back(pairs[static_cast<size_t>(corner)].high, corner);
        }
        std::sort(wide.begin(), wide.end());
        for (size_t k = 0; k < wide.size(); ++k)
            if (k == 0 || wide[k].first != wide[k - 1].first) first[static_cast<size_t>(wide[k].second)] = 1;
    }
    for (int corner = 0; corner < cornerCount; ++corner)
        if (first[static_cast<size_t>(corner)]) edges.PushBack(corner);
}

}  // namespace

FbxMesh* FbxGeometryConverter::TriangulateMesh(FbxMesh* mesh) {
    if (!mesh) return nullptr;
    IndexDirectMaterials(*mesh);

    FbxMesh* result = mesh->GetScene() ? FbxMesh::Create(mesh->GetScene(), "") : FbxMesh::Create(mManager, "");
    if (!result) return nullptr;
    result->CopyFrom(*mesh);

    // A by-edge smoothing element cannot follow the new edges: it becomes
    // a by-polygon element whose entries stay zero (no smoothing group).
    for (int l = 0; l < result->GetLayerCount(); ++l) {
        FbxLayerElementSmoothing* smoothing = result->GetLayer(l)->GetSmoothing();
        if (smoothing && smoothing->GetMappingMode() == FbxLayerElement::eByEdge &&
            smoothing->GetReferenceMode() == FbxLayerElement::eDirect)
            smoothing->SetMappingMode(FbxLayerElement::eByPolygon);
    }

    // The triangles of each polygon, as control point indices, and the
    // first old corner of each new corner.
    const int polygonCount = mesh->GetPolygonCount();
    const int* vertices = mesh->GetPolygonVertices();
    const FbxVector4* points = mesh->GetControlPoints();
    const int pointCount = mesh->GetControlPointsCount();
    std::vector<int> cornerSource, triangleCounts(static_cast<size_t>(polygonCount));
    {
        PolygonTriangulator triangulator;
        std::vector<FbxVector4> corners;
        std::vector<int> triangles, first;
        std::vector<std::pair<int, int>> scratch;
        for (int p = 0; p < polygonCount; ++p) {
            const int start = mesh->GetPolygonVertexIndex(p), size = mesh->GetPolygonSize(p);
            corners.clear();
            for (int i = 0; i < size; ++i) {
                const int v = vertices[start + i];
                corners.push_back(v >= 0 && v < pointCount ? points[v] : FbxVector4());
            }
            triangulator.Triangulate(corners, triangles);
            triangleCounts[static_cast<size_t>(p)] = static_cast<int>(triangles.size() / 3);
            FirstVisits(vertices + start, size, first, scratch);
            for (int corner : triangles) cornerSource.push_back(start + first[static_cast<size_t>(corner)]);
        }
    }
    const int newCorners = static_cast<int>(cornerSource.size()), newPolygons = newCorners / 3;

    std::vector<int> materialOf;
    if (const FbxLayer* layer = mesh->GetLayer(0))
        if (const FbxLayerElementMaterial* materials = layer->GetMaterials();
            materials && materials->GetMappingMode() == FbxLayerElement::eByPolygon &&
            materials->GetReferenceMode() != FbxLayerElement::eDirect) {
            const FbxLayerElementArrayTemplate<int>& indices = materials->GetIndexArray();
            materialOf.resize(static_cast<size_t>(polygonCount), -1);
            for (int p = 0; p < polygonCount && p < indices.GetCount(); ++p)
                materialOf[static_cast<size_t>(p)] = indices[p];
        }

    // Empty the polygons and size every element that follows them; the
    // new entries are written below, or stay zero.
    result->ClearPolygons();
    result->ReservePolygonCount(newPolygons);
    result->ReservePolygonVertexCount(newCorners);
    std::vector<ElementRemap> remaps;
    for (int l = 0; l < result->GetLayerCount(); ++l) {
        const FbxLayer* old = mesh->GetLayer(l);
        for (auto [to, from] : ElementPairs(*result->GetLayer(l), old)) {
            if (!FollowsPolygons(*to)) continue;
            FbxLayerElementArray& array = EntryArray(*to);
            array.Clear();
            array.SetCount(to->GetMappingMode() == FbxLayerElement::eByPolygon ? newPolygons : newCorners);
            const FbxLayerElementArray* source = nullptr;
            if (from && from->GetMappingMode() == to->GetMappingMode() &&
                (from->GetReferenceMode() == FbxLayerElement::eDirect) ==
                    (to->GetReferenceMode() == FbxLayerElement::eDirect))
                source = &EntryArray(*from);
            if (source && source->GetStride() != array.GetStride()) source = nullptr;
            remaps.push_back(
                {&array, source, to->GetMappingMode(), array.GetStride(), static_cast<uint8_t*>(array.GetData()),
                 source ? static_cast<const uint8_t*>(source->GetData()) : nullptr, source ? source->GetCount() : 0});
        }
    }

    int corner = 0, triangle = 0;
    for (int p = 0; p < polygonCount; ++p) {
        const int count = triangleCounts[static_cast<size_t>(p)];
        const int material = materialOf.empty() ? -1 : materialOf[static_cast<size_t>(p)];
        for (int t = 0; t < count; ++t) {
            result->BeginPolygon(material, -1, -1, false);
            for (int k = 0; k < 3; ++k)
                result->AddPolygon(vertices[cornerSource[static_cast<size_t>(corner + 3 * t + k)]], -1);
            result->EndPolygon();
        }
        for (const ElementRemap& remap : remaps) {
            if (remap.mapping == FbxLayerElement::eByPolygon) {
                for (int t = 0; t < count; ++t) remap.Copy(triangle + t, p);
            } else {
                for (int k = 0; k < 3 * count; ++k)
                    remap.Copy(corner + k, cornerSource[static_cast<size_t>(corner + k)]);
            }
        }
        corner += 3 * count;
        triangle += count;
    }

    if (mesh->GetMeshEdgeCount() > 0)
        BuildEdges(*result);
    else
        result->GetEdgeArray().Clear();
    return result;
}

bool FbxGeometryConverter::TriangulateInPlace(FbxNode* node) {
    if (!node) return false;
    auto* mesh = FbxCast<FbxMesh>(node->GetNodeAttribute());
    if (!mesh) return false;
    if (mesh->IsTriangleMesh()) return true;
    FbxMesh* result = TriangulateMesh(mesh);
    if (!result) return false;

    std::vector<FbxNode*> users;
    const FbxCriteria nodes = FbxCriteria::ObjectType(FbxNode::ClassId);
    for (int i = 0; i < mesh->GetDstObjectCount(nodes); ++i)
        if (auto* user = static_cast<FbxNode*>(mesh->GetDstObject(nodes, i))) users.push_back(user);
    for (FbxNode* user : users) {
        user->AddNodeAttribute(result);
        user->RemoveNodeAttribute(mesh);
        user->DefaultAttributeIndex().Set(user->GetNodeAttributeIndex(result));
    }
    mesh->Destroy();
    return true;
}
