#include "fbx/model/fbx_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>

KIVA_FBX_OBJECT_IMPLEMENT(FbxMesh)

FbxMesh::FbxMesh(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

namespace {

// Two normals at one control point count as one when no component differs
// by more than this.
constexpr double kNormalTolerance = 1e-6;
// Below this the x of a tangent frame's cross product counts as zero.
constexpr double kFrameTolerance = 1e-6;
// Corner records at one control point up to which they are grouped pair by
// pair; beyond it (only a crafted mesh gets there) equal values are grouped
// by sorting, so that no control point costs quadratic time.
constexpr size_t kPairwiseGroupingLimit = 4096;

FbxVector4 normalized3(const FbxVector4& v) {
    double length = v.Length();
    if (length == 0.0 || !std::isfinite(length)) return FbxVector4(0.0, 0.0, 0.0, v[3]);
    return FbxVector4(v[0] / length, v[1] / length, v[2] / length, v[3]);
}

// One corner of a polygon for the tangent pass.
struct CornerRecord {
    bool live = true;
    int group = -1;
    int polygonVertex;
    int uvIndex;
    FbxVector4 normal;
    FbxVector4 tangent;
    FbxVector4 binormal;
};

bool sameNormalAndUv(const CornerRecord& a, const CornerRecord& b) {
    if (a.uvIndex != b.uvIndex) return false;
    for (int i = 0; i < 4; ++i)
        if (!(std::fabs(a.normal[i] - b.normal[i]) <= kNormalTolerance)) return false;
    return true;
}

// The tangent and binormal of each corner of one triangle, from the
// triangle's positions and UVs and each corner's normal.
void triangleTangents(const FbxVector4 (&position)[3], const FbxVector4 (&normal)[3], const FbxVector2 (&uv)[3],
                      FbxVector4 (&tangent)[3], FbxVector4 (&binormal)[3]) {
    double du1 = uv[1][0] - uv[0][0], dv1 = uv[1][1] - uv[0][1];
    double du2 = uv[2][0] - uv[0][0], dv2 = uv[2][1] - uv[0][1];
    FbxVector4 rawTangent, rawBinormal;
    for (int axis = 0; axis < 3; ++axis) {
        FbxVector4 e1(position[1][axis] - position[0][axis], du1, dv1);
        FbxVector4 e2(position[2][axis] - position[0][axis], du2, dv2);
        FbxVector4 c = normalized3(e1.CrossProduct(e2));
        double x = std::fabs(c[0]) <= kFrameTolerance ? 1.0 : c[0];
        rawTangent[axis] = -c[1] / x;
        rawBinormal[axis] = -c[2] / x;
    }
    double handedness = 0.0;
    for (int k = 0; k < 3; ++k) {
        const FbxVector4& n = normal[k];
        tangent[k] = normalized3(rawTangent - n * rawTangent.DotProduct(n));
        tangent[k][3] = 0.0;
        handedness += tangent[k].CrossProduct(rawBinormal).DotProduct(n);
    }
    double sign = handedness >= 0.0 ? 1.0 : -1.0;
    for (int k = 0; k < 3; ++k) {
        tangent[k][3] = sign;
        FbxVector4 b = normalized3(normal[k].CrossProduct(tangent[k]));
        binormal[k] = FbxVector4(b[0] * sign, b[1] * sign, b[2] * sign);
    }
}

// Gives each record a group: pair by pair in list order, a record without a
// group starts one and every later record that matches it joins its group.
void groupRecords(std::vector<CornerRecord>& records) {
    int next = 0;
    if (records.size() <= kPairwiseGroupingLimit) {
        for (size_t i = 0; i < records.size(); ++i) {
            if (records[i].group < 0) records[i].group = next++;
            for (size_t j = i + 1; j < records.size(); ++j)
                if (sameNormalAndUv(records[i], records[j])) records[j].group = records[i].group;
        }
        return;
    }
    std::vector<size_t> order(records.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    auto key = [&](size_t i) {
        const CornerRecord& r = records[i];
        return std::make_tuple(r.uvIndex, r.normal[0], r.normal[1], r.normal[2], r.normal[3]);
    };
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return key(a) < key(b); });
    for (size_t i = 0; i < order.size(); ++i) {
        bool same = i > 0 && !(key(order[i]) < key(order[i - 1])) && !(key(order[i - 1]) < key(order[i]));
        records[order[i]].group = same ? records[order[i - 1]].group : next++;
    }
}

}  // namespace

// --- Building ---------------------------------------------------------------

void FbxMesh::BeginPolygon(int material, int, int group, bool) {
    if (!polygons_.PushBack(Polygon{static_cast<int32_t>(polygonVertices_.Size()), 0, group})) return;
    int count = GetPolygonCount();
    FbxLayer* layer = GetLayer(0);
    FbxLayerElementMaterial* materials = layer ? layer->GetMaterials() : nullptr;
    if (materials) {
        if (materials->GetMappingMode() != FbxLayerElement::eByPolygon ||
            materials->GetReferenceMode() == FbxLayerElement::eDirect)
            return;
    } else {
        if (count != 1 || material == -1) return;
        if (!layer) layer = GetLayer(CreateLayer());
        materials = FbxLayerElementMaterial::Create(this, "");
        materials->SetMappingMode(FbxLayerElement::eByPolygon);
        materials->SetReferenceMode(FbxLayerElement::eIndexToDirect);
        layer->SetMaterials(materials);
    }
    FbxLayerElementArrayTemplate<int>& indices = materials->GetIndexArray();
    if (indices.GetCount() < count) indices.SetCount(count);
    indices.SetAt(count - 1, material);
}

void FbxMesh::AddPolygon(int index, int) {
    if (polygons_.Empty() || !polygonVertices_.PushBack(index)) return;
    ++polygons_[polygons_.Size() - 1].size;
}

void FbxMesh::ClearPolygons() {
    polygons_.Clear();
    polygonVertices_.Clear();
}

void FbxMesh::ReservePolygonCount(int count) {
    if (count > 0) polygons_.Reserve(static_cast<size_t>(count));
}

void FbxMesh::ReservePolygonVertexCount(int count) {
    if (count > 0) polygonVertices_.Reserve(static_cast<size_t>(count));
}

// --- Polygons ---------------------------------------------------------------

int FbxMesh::GetPolygonSize(int polygon) const {
    return polygon >= 0 && polygon < GetPolygonCount() ? polygons_[static_cast<size_t>(polygon)].size : -1;
}

int FbxMesh::GetPolygonVertexIndex(int polygon) const {
    return polygon >= 0 && polygon < GetPolygonCount() ? polygons_[static_cast<size_t>(polygon)].start : -1;
}

int FbxMesh::GetPolygonGroup(int polygon) const {
    return polygon >= 0 && polygon < GetPolygonCount() ? polygons_[static_cast<size_t>(polygon)].group : -1;
}

int FbxMesh::GetPolygonVertex(int polygon, int corner) const {
    if (polygon < 0 || polygon >= GetPolygonCount()) return -1;
    const Polygon& p = polygons_[static_cast<size_t>(polygon)];
    if (corner < 0 || corner >= p.size) return -1;
    int64_t at = static_cast<int64_t>(p.start) + corner;
    return at >= 0 && at < GetPolygonVertexCount() ? polygonVertices_[static_cast<size_t>(at)] : -1;
}

bool FbxMesh::IsTriangleMesh() const {
    for (const Polygon& p : polygons_)
        if (p.size != 3) return false;
    return true;
}

// --- Corner values --------------------------------------------------------------

bool FbxMesh::ResolveElementIndex(const FbxLayerElement& element, int polygon, int corner, int& index) const {
    if (polygon < 0 || polygon >= GetPolygonCount()) return false;
    const Polygon& p = polygons_[static_cast<size_t>(polygon)];
    if (corner < 0 || corner >= p.size) return false;
    int64_t at = static_cast<int64_t>(p.start) + corner;
    int64_t i;
    switch (element.GetMappingMode()) {
    case FbxLayerElement::eByControlPoint:
        if (at < 0 || at >= GetPolygonVertexCount()) return false;
        i = polygonVertices_[static_cast<size_t>(at)];
        break;
    case FbxLayerElement::eByPolygonVertex:
        i = at;
        break;
    case FbxLayerElement::eByPolygon:
        i = polygon;
        break;
    default:
        return false;
    }
    if (element.GetReferenceMode() != FbxLayerElement::eDirect) {
        const FbxLayerElementArrayTemplate<int>& indices = element.GetIndexArray();
        if (i < 0 || i >= indices.GetCount()) return false;
        i = indices.GetArray()[i];
    }
    if (i < INT32_MIN || i > INT32_MAX) return false;
    index = static_cast<int>(i);
    return true;
}

bool FbxMesh::GetPolygonVertexNormal(int polygon, int corner, FbxVector4& normal) const {
    const FbxLayerElementNormal* normals = GetElementNormal(0);
    int i;
    if (!normals || !ResolveElementIndex(*normals, polygon, corner, i)) return false;
    const FbxLayerElementArrayTemplate<FbxVector4>& values = normals->GetDirectArray();
    if (i < 0 || i >= values.GetCount()) return false;
    normal = values.GetArray()[i];
    return true;
}

bool FbxMesh::GetPolygonVertexUV(int polygon, int corner, const char* uvSetName, FbxVector2& uv, bool& unmapped) const {
    unmapped = false;
    const FbxLayerElementUV* uvs = GetUVElement(uvSetName);
    int i;
    if (!uvs || !ResolveElementIndex(*uvs, polygon, corner, i)) return false;
    if (i == -1) {
        unmapped = true;
        return true;
    }
    const FbxLayerElementArrayTemplate<FbxVector2>& values = uvs->GetDirectArray();
    if (i < 0 || i >= values.GetCount()) return false;
    uv = values.GetArray()[i];
    return true;
}

void FbxMesh::GetUVSetNames(std::vector<FbxString>& names) const {
    names.clear();
    for (int l = 0; l < GetLayerCount(); ++l)
        for (const FbxLayerElementUV* uv : GetLayer(l)->GetUVSets()) names.emplace_back(uv->GetName());
}

const FbxLayerElementUV* FbxMesh::GetUVElement(const char* name, int* layer) const {
    if (!name) return nullptr;
    for (int l = 0; l < GetLayerCount(); ++l)
        for (const FbxLayerElementUV* uv : GetLayer(l)->GetUVSets())
            if (std::strcmp(uv->GetName(), name) == 0) {
                if (layer) *layer = l;
                return uv;
            }
    return nullptr;
}

// --- Tangents -------------------------------------------------------------------

bool FbxMesh::GenerateTangentsData(const char* uvSetName, bool overwrite) {
    int uvLayer = 0;
    const FbxLayerElementUV* uvs = GetUVElement(uvSetName, &uvLayer);
    if (!uvs) return false;
    const FbxLayer* first = GetLayer(0);
    if (!first || !first->GetNormals()) return false;
    if (!overwrite && first->GetTangents()) return true;

    const int points = GetControlPointsCount();
    const int corners = GetPolygonVertexCount();
    // The records of each control point; corners of control points out of
    // range have no list and keep zero values.
    std::vector<std::vector<CornerRecord>> records(static_cast<size_t>(points));
    const FbxLayerElementArrayTemplate<FbxVector2>& uvValues = uvs->GetDirectArray();
    for (int p = 0; p < GetPolygonCount(); ++p) {
        const Polygon& polygon = polygons_[static_cast<size_t>(p)];
        if (polygon.size < 3) continue;
        std::vector<bool> recorded(static_cast<size_t>(polygon.size), false);
        for (int t = 0; t + 2 < polygon.size; ++t) {
            const int fan[3] = {0, t + 1, t + 2};
            FbxVector4 position[3], normal[3], tangent[3], binormal[3];
            FbxVector2 uv[3];
            int uvIndex[3];
            for (int c = 0; c < 3; ++c) {
                position[c] = GetControlPointAt(GetPolygonVertex(p, fan[c]));
                GetPolygonVertexNormal(p, fan[c], normal[c]);
                if (!ResolveElementIndex(*uvs, p, fan[c], uvIndex[c])) uvIndex[c] = -1;
                if (uvIndex[c] >= 0 && uvIndex[c] < uvValues.GetCount()) uv[c] = uvValues.GetArray()[uvIndex[c]];
            }
            triangleTangents(position, normal, uv, tangent, binormal);
            for (int c = 0; c < 3; ++c) {
                if (recorded[static_cast<size_t>(fan[c])]) continue;
                recorded[static_cast<size_t>(fan[c])] = true;
                int64_t corner = static_cast<int64_t>(polygon.start) + fan[c];
                int point = GetPolygonVertex(p, fan[c]);
                if (point < 0 || point >= points || corner >= corners) continue;
                records[static_cast<size_t>(point)].push_back(
                    CornerRecord{true, -1, static_cast<int>(corner), uvIndex[c], normal[c], tangent[c], binormal[c]});
            }
        }
    }

    InitTangents(corners, uvLayer, uvSetName);
    InitBinormals(corners, uvLayer, uvSetName);
    FbxLayer* layer = GetLayer(uvLayer);
    FbxVector4* tangentOut = layer->GetTangents()->GetDirectArray().GetArray();
    FbxVector4* binormalOut = layer->GetBinormals()->GetDirectArray().GetArray();
    const int written = layer->GetTangents()->GetDirectArray().GetCount();

    for (std::vector<CornerRecord>& list : records) {
        groupRecords(list);
        // Each group's members, in list order, found through one sort.
        std::vector<size_t> byGroup(list.size());
        for (size_t i = 0; i < list.size(); ++i) byGroup[i] = i;
        std::stable_sort(byGroup.begin(), byGroup.end(),
                         [&](size_t a, size_t b) { return list[a].group < list[b].group; });
        for (size_t begin = 0; begin < byGroup.size();) {
            size_t end = begin;
            FbxVector4 t, b;
            while (end < byGroup.size() && list[byGroup[end]].group == list[byGroup[begin]].group) {
                t = t + list[byGroup[end]].tangent;
                b = b + list[byGroup[end]].binormal;
                ++end;
            }
            FbxVector4 tangent = normalized3(t), binormal = normalized3(b);
            tangent[3] = t[3] >= 0.0 ? 1.0 : -1.0;
            binormal[3] = b[3] >= 0.0 ? 1.0 : -1.0;
            for (size_t m = begin; m < end; ++m) {
                int at = list[byGroup[m]].polygonVertex;
                if (at >= written) continue;
                tangentOut[at] = tangent;
                binormalOut[at] = binormal;
            }
            begin = end;
        }
    }
    return true;
}

// --- Copies ---------------------------------------------------------------------

void FbxMesh::CopyMeshValues(const FbxMesh& other) {
    polygons_ = other.polygons_;
    polygonVertices_ = other.polygonVertices_;
    edges_ = other.edges_;
    smoothness_ = other.smoothness_;
    boundaryRule_ = other.boundaryRule_;
    previewDivisionLevels_ = other.previewDivisionLevels_;
    renderDivisionLevels_ = other.renderDivisionLevels_;
    displaySubdivisions_ = other.displaySubdivisions_;
    preserveBorders_ = other.preserveBorders_;
    preserveHardEdges_ = other.preserveHardEdges_;
    propagateEdgeHardness_ = other.propagateEdgeHardness_;
}

void FbxMesh::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyMeshValues(*static_cast<const FbxMesh*>(from));
}

bool FbxMesh::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyMeshValues(static_cast<const FbxMesh&>(other));
    return true;
}
