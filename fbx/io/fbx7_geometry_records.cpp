// The geometry records of the FBX 7 document reader: meshes with their
// control points, polygons, edges, layer elements and layers.
//
// Large arrays are decoded once, straight into the block that the mesh
// keeps: the stream inflates a field's array into a buffer whose memory is
// then handed to the mesh's array (widened in place where the mesh keeps
// four doubles for the file's three).

#include <climits>
#include <cstring>
#include <vector>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_byte_buffer.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_mesh.h"

namespace {

using EType = FbxLayerElement::EType;

bool enterBlock(FbxFieldStream& s) {
    if (!s.HasBlock()) return false;
    s.EnterBlock();
    return true;
}

FbxLayerElement::EMappingMode mappingOf(const FbxString& word) {
    if (word == "ByVertice") return FbxLayerElement::eByControlPoint;
    if (word == "ByPolygonVertex") return FbxLayerElement::eByPolygonVertex;
    if (word == "ByPolygon") return FbxLayerElement::eByPolygon;
    if (word == "ByEdge") return FbxLayerElement::eByEdge;
    if (word == "AllSame") return FbxLayerElement::eAllSame;
    return FbxLayerElement::eNone;
}

FbxLayerElement::EReferenceMode referenceOf(const FbxString& word) {
    if (word == "Index") return FbxLayerElement::eIndex;
    if (word == "IndexToDirect") return FbxLayerElement::eIndexToDirect;
    return FbxLayerElement::eDirect;
}

// The element words of a file, by type; for the texture channels the UV
// words and the texture words of the "Layer" record.
const char* const kElementWords[FbxLayerElement::sTypeNonTextureCount + 1] = {
    "",
    "LayerElementNormal",
    "LayerElementBinormal",
    "LayerElementTangent",
    "LayerElementMaterial",
    "LayerElementPolygonGroup",
    "LayerElementUV",
    "LayerElementColor",
    "LayerElementSmoothing",
    "LayerElementVertexCrease",
    "LayerElementEdgeCrease",
    "LayerElementHole",
    "LayerElementUserData",
    "LayerElementVisibility",
};
const char* const kUVWords[FbxLayerElement::sTypeTextureCount] = {
    "LayerElementUV",
    "LayerElementDiffuseFactorUV",
    "LayerElementEmissiveUV",
    "LayerElementEmissiveFactorUV",
    "LayerElementAmbientUV",
    "LayerElementAmbientFactorUV",
    "LayerElementSpecularUV",
    "LayerElementSpecularFactorUV",
    "LayerElementShininessUV",
    "LayerElementNormalMapUV",
    "LayerElementBumpUV",
    "LayerElementTransparentUV",
    "LayerElementTransparencyFactorUV",
    "LayerElementReflectionUV",
    "LayerElementReflectionFactorUV",
    "LayerElementDisplacementUV",
    "LayerElementVectorDisplacementUV",
};
const char* const kTextureWords[FbxLayerElement::sTypeTextureCount] = {
    "LayerElementTexture",
    "LayerElementDiffuseFactorTextures",
    "LayerElementEmissive_Textures",
    "LayerElementEmissiveFactorTextures",
    "LayerElementAmbientTextures",
    "LayerElementAmbientFactorTextures",
    "LayerElementSpecularTextures",
    "LayerElementSpecularFactorTextures",
    "LayerElementShininessTextures",
    "LayerElementNormalMapTextures",
    "LayerElementBumpTextures",
    "LayerElementTransparentTextures",
    "LayerElementTransparencyFactorTextures",
    "LayerElementReflectionTextures",
    "LayerElementReflectionFactorTextures",
    "LayerElementDisplacementTextures",
    "LayerElementVectorDisplacementTextures",
};

// The order in which the element kinds are read.
const EType kReadOrder[] = {
    FbxLayerElement::eMaterial,   FbxLayerElement::eNormal,       FbxLayerElement::eTangent,
    FbxLayerElement::eBinormal,   FbxLayerElement::eVertexColor,  FbxLayerElement::ePolygonGroup,
    FbxLayerElement::eSmoothing,  FbxLayerElement::eUserData,     FbxLayerElement::eVisibility,
    FbxLayerElement::eEdgeCrease, FbxLayerElement::eVertexCrease, FbxLayerElement::eHole,
};

// The elements read for one mesh, in file order, by type (the UV family by
// channel); they belong to the mesh, the lists only find them again.
struct ElementLists {
    std::vector<FbxLayerElement*> byType[FbxLayerElement::eTypeCount];
};

// Reads field `name`, an array of `code`, into `buffer`; its count, 0 when
// the field is missing or holds no such array.
int readArray(FbxFieldStream& s, const char* name, char code, FbxByteBuffer& buffer) {
    buffer.Clear();
    if (!s.BeginField(name)) return 0;
    int count = s.NextArrayInto(buffer, code);
    s.EndField();
    return count;
}

// Spreads `groups` groups of `from` doubles in `buffer` to `to` doubles each,
// in place from the back, filling the new components with `fill`.
bool widenDoubles(FbxByteBuffer& buffer, size_t groups, size_t from, size_t to, double fill) {
    size_t needed = groups * to * sizeof(double);
    if (!buffer.Reserve(needed, buffer.Size())) return false;
    auto* d = reinterpret_cast<double*>(buffer.Data());
    if (to != from) {
        for (size_t g = groups; g-- > 0;) {
            std::memmove(d + g * to, d + g * from, from * sizeof(double));
            for (size_t c = from; c < to; ++c) d[g * to + c] = fill;
        }
    }
    buffer.SetSize(needed);
    return true;
}

// Hands the decoded block to an array of the model.
template <class T>
void adopt(FbxByteBuffer& buffer, size_t count, FbxArray<T>& array) {
    size_t capacity = 0;
    uint8_t* block = buffer.Detach(capacity);
    array.Adopt(block, count, capacity);
}

void adopt(FbxByteBuffer& buffer, size_t count, FbxLayerElementArray& array) {
    size_t capacity = 0;
    uint8_t* block = buffer.Detach(capacity);
    array.Adopt(block, count, capacity);
}

// Reads an array of doubles in groups of `width` into the direct array,
// each group stored as `stride` doubles (the rest 0).
void readGroups(FbxFieldStream& s, const char* name, size_t width, size_t stride, FbxLayerElementArray& out) {
    FbxByteBuffer buffer;
    int count = readArray(s, name, 'd', buffer);
    size_t groups = static_cast<size_t>(count) / width;
    if (groups == 0 || !widenDoubles(buffer, groups, width, stride, 0.0)) return;
    adopt(buffer, groups, out);
}

void readInts(FbxFieldStream& s, const char* name, FbxLayerElementArray& out) {
    FbxByteBuffer buffer;
    int count = readArray(s, name, 'i', buffer);
    if (count > 0) adopt(buffer, static_cast<size_t>(count), out);
}

// The "W" of vectors stored as four doubles, one double per vector.
void readW(FbxFieldStream& s, const char* name, FbxLayerElementArray& vectors) {
    int count = 0;
    const double* w = s.NextDoubleArray(name, count);
    auto* v = static_cast<FbxVector4*>(vectors.GetData());
    for (int i = 0; w && i < count && i < vectors.GetCount(); ++i) v[i][3] = w[i];
}

// Booleans widened to ints, for smoothing of old element versions.
void readBoolsAsInts(FbxFieldStream& s, const char* name, FbxLayerElementArray& out) {
    FbxByteBuffer buffer;
    int count = readArray(s, name, 'b', buffer);
    if (count <= 0 || !buffer.Reserve(static_cast<size_t>(count) * sizeof(int), buffer.Size())) return;
    uint8_t* bytes = buffer.Data();
    for (size_t i = static_cast<size_t>(count); i-- > 0;) {
        int value = bytes[i];
        std::memcpy(bytes + i * sizeof(int), &value, sizeof(int));
    }
    adopt(buffer, static_cast<size_t>(count), out);
}

void readBools(FbxFieldStream& s, const char* name, FbxLayerElementArray& out) {
    FbxByteBuffer buffer;
    int count = readArray(s, name, 'b', buffer);
    if (count > 0) adopt(buffer, static_cast<size_t>(count), out);
}

void readDoubles(FbxFieldStream& s, const char* name, FbxLayerElementArray& out) { readGroups(s, name, 1, 1, out); }

// The columns of a user data element: "UserDataArray" entries, each with a
// type word and a name, and their values in a "UserData" field of the
// entry, or else the entry's turn among the element's "UserData" fields.
void readUserData(FbxFieldStream& s, FbxLayerElementUserData& element) {
    int entry = 0;
    while (s.BeginField("UserDataArray")) {
        if (enterBlock(s)) {
            FbxString type = s.NextString("UserDataType", "");
            FbxString name = s.NextString("UserDataName", "");
            EFbxType valueType = type == "Float"     ? eFbxFloat
                                 : type == "Double"  ? eFbxDouble
                                 : type == "Integer" ? eFbxInt
                                 : type == "Boolean" ? eFbxBool
                                                     : eFbxUndefined;
            FbxLayerElementUserData::Column* column = element.AddColumn(name.c_str(), valueType);
            if (column) {
                char code = valueType == eFbxFloat    ? 'f'
                            : valueType == eFbxDouble ? 'd'
                            : valueType == eFbxInt    ? 'i'
                                                      : 'b';
                FbxByteBuffer buffer;
                int count = readArray(s, "UserData", code, buffer);
                s.LeaveBlock();
                if (count == 0 && s.BeginField("UserData", entry)) {
                    count = s.NextArrayInto(buffer, code);
                    s.EndField();
                }
                if (count > 0) adopt(buffer, static_cast<size_t>(count), column->values);
            } else {
                s.LeaveBlock();
            }
        }
        s.EndField();
        ++entry;
    }
}

FbxLayerElement* createElement(FbxMesh& mesh, EType type) {
    switch (type) {
    case FbxLayerElement::eNormal:
        return FbxLayerElementNormal::Create(&mesh, "");
    case FbxLayerElement::eBinormal:
        return FbxLayerElementBinormal::Create(&mesh, "");
    case FbxLayerElement::eTangent:
        return FbxLayerElementTangent::Create(&mesh, "");
    case FbxLayerElement::eMaterial:
        return FbxLayerElementMaterial::Create(&mesh, "");
    case FbxLayerElement::ePolygonGroup:
        return FbxLayerElementPolygonGroup::Create(&mesh, "");
    case FbxLayerElement::eVertexColor:
        return FbxLayerElementVertexColor::Create(&mesh, "");
    case FbxLayerElement::eSmoothing:
        return FbxLayerElementSmoothing::Create(&mesh, "");
    case FbxLayerElement::eVertexCrease:
        return FbxLayerElementVertexCrease::Create(&mesh, "");
    case FbxLayerElement::eEdgeCrease:
        return FbxLayerElementEdgeCrease::Create(&mesh, "");
    case FbxLayerElement::eHole:
        return FbxLayerElementHole::Create(&mesh, "");
    case FbxLayerElement::eUserData:
        return FbxLayerElementUserData::Create(&mesh, "");
    case FbxLayerElement::eVisibility:
        return FbxLayerElementVisibility::Create(&mesh, "");
    default:
        return FbxLayerElementUV::Create(&mesh, "");
    }
}

// The data fields of one element, inside its block.
void readElementData(FbxFieldStream& s, FbxLayerElement& element, EType type, int version) {
    FbxLayerElementArray& direct = element.GetDirectArrayBase();
    FbxLayerElementArray& index = element.GetIndexArray();
    bool indexed = element.GetReferenceMode() != FbxLayerElement::eDirect;
    bool indexToDirect = element.GetReferenceMode() == FbxLayerElement::eIndexToDirect;
    auto vectors = [&](const char* values, const char* w, const char* indices) {
        readGroups(s, values, 3, 4, direct);
        if (version >= 102) readW(s, w, direct);
        if (indexed) readInts(s, indices, index);
    };
    switch (type) {
    case FbxLayerElement::eNormal:
        vectors("Normals", "NormalsW", "NormalsIndex");
        break;
    case FbxLayerElement::eTangent:
        vectors("Tangents", "TangentsW", "TangentsIndex");
        break;
    case FbxLayerElement::eBinormal:
        vectors("Binormals", "BinormalsW", "BinormalsIndex");
        break;
    case FbxLayerElement::eVertexColor:
        readGroups(s, "Colors", 4, 4, direct);
        if (indexToDirect) readInts(s, "ColorIndex", index);
        break;
    case FbxLayerElement::eMaterial:
        readInts(s, "Materials", index);
        break;
    case FbxLayerElement::ePolygonGroup:
        readInts(s, "PolygonGroup", index);
        break;
    case FbxLayerElement::eSmoothing:
        if (version >= 102)
            readInts(s, "Smoothing", direct);
        else
            readBoolsAsInts(s, "Smoothing", direct);
        break;
    case FbxLayerElement::eVisibility:
        readBools(s, "Visibility", direct);
        break;
    case FbxLayerElement::eEdgeCrease:
        readDoubles(s, "EdgeCrease", direct);
        break;
    case FbxLayerElement::eVertexCrease:
        readDoubles(s, "VertexCrease", direct);
        break;
    case FbxLayerElement::eHole:
        readBools(s, "Hole", direct);
        break;
    case FbxLayerElement::eUserData:
        readUserData(s, static_cast<FbxLayerElementUserData&>(element));
        if (indexed) readInts(s, "UserDataIndex", index);
        break;
    default:  // the UV family
        readGroups(s, "UV", 2, 2, direct);
        if (indexToDirect) readInts(s, "UVIndex", index);
        break;
    }
}

// Every element field of one kind (`listType` is the channel for UVs).
void readElements(FbxFieldStream& s, FbxMesh& mesh, const char* word, EType type, EType listType, ElementLists& lists) {
    while (s.BeginField(word)) {
        s.NextInt();  // the element's index: the file order is what counts
        FbxLayerElement* element = createElement(mesh, type);
        lists.byType[listType].push_back(element);
        if (enterBlock(s)) {
            int version = s.NextInt("Version", 0);
            if (version >= 101) element->SetName(FbxObject::StripPrefix(s.NextString("Name", "")).c_str());
            element->SetMappingMode(mappingOf(s.NextString("MappingInformationType", "")));
            element->SetReferenceMode(referenceOf(s.NextString("ReferenceInformationType", "")));
            readElementData(s, *element, type, version);
            s.LeaveBlock();
        }
        s.EndField();
    }
}

// Puts the element that a "LayerElement" record names into the layer.
void placeElement(FbxMesh& mesh, FbxLayer& layer, const ElementLists& lists, const FbxString& word, int typed) {
    auto pick = [&](EType listType) -> FbxLayerElement* {
        const std::vector<FbxLayerElement*>& list = lists.byType[listType];
        return typed >= 0 && static_cast<size_t>(typed) < list.size() ? list[static_cast<size_t>(typed)] : nullptr;
    };
    for (int c = 0; c < FbxLayerElement::sTypeTextureCount; ++c) {
        auto channel = static_cast<EType>(FbxLayerElement::sTypeTextureStartIndex + c);
        if (word == kUVWords[c]) {
            if (FbxLayerElement* uv = pick(channel)) layer.SetLayerElementOfType(uv, channel, true);
            return;
        }
        if (word == kTextureWords[c]) {
            // No element reader makes textures: a layer that names one gets
            // a texture element for the whole mesh.
            if (typed == 0) {
                FbxLayerElementTexture* texture = FbxLayerElementTexture::Create(&mesh, "", channel);
                texture->SetMappingMode(FbxLayerElement::eAllSame);
                layer.SetTextures(channel, texture);
            }
            return;
        }
    }
    for (int type = 1; type <= FbxLayerElement::sTypeNonTextureCount; ++type) {
        if (type == FbxLayerElement::eUV || word != kElementWords[type]) continue;
        auto t = static_cast<EType>(type);
        if (t == FbxLayerElement::eMaterial && lists.byType[t].empty() && typed == 0) {
            // A layer that names a material element always has one.
            FbxLayerElementMaterial* materials = FbxLayerElementMaterial::Create(&mesh, "");
            materials->SetMappingMode(FbxLayerElement::eAllSame);
            layer.SetMaterials(materials);
        } else if (FbxLayerElement* element = pick(t)) {
            layer.SetLayerElementOfType(element, t);
        }
        return;
    }
}

void readLayers(FbxFieldStream& s, FbxMesh& mesh, const ElementLists& lists) {
    while (s.BeginField("Layer")) {
        int index = s.NextInt();
        if (enterBlock(s)) {
            while (s.BeginField("LayerElement")) {
                if (enterBlock(s)) {
                    FbxString type = s.NextString("Type", "");
                    int typed = s.NextInt("TypedIndex", 0);
                    // Layers are dense: a record may add the next layer, and
                    // one that skips ahead cannot be stored.
                    if (index >= 0 && index == mesh.GetLayerCount()) mesh.CreateLayer();
                    if (FbxLayer* layer = mesh.GetLayer(index)) placeElement(mesh, *layer, lists, type, typed);
                    s.LeaveBlock();
                }
                s.EndField();
            }
            s.LeaveBlock();
        }
        s.EndField();
    }
}

// The polygons of a "PolygonVertexIndex" array: a negative entry v ends its
// polygon and stands for control point -v - 1; an array that ends without
// one leaves its last polygon open. The decoded block becomes the mesh's
// polygon-vertex array.
void buildPolygons(FbxMesh& mesh, FbxByteBuffer& buffer, int count) {
    auto* v = reinterpret_cast<int32_t*>(buffer.Data());
    size_t polygons = v[count - 1] >= 0 ? 1 : 0;
    for (int i = 0; i < count; ++i) polygons += v[i] < 0;
    FbxArray<FbxMesh::Polygon>& out = mesh.GetPolygonArray();
    out.Clear();
    if (!out.ResizeUninitialized(polygons)) {
        mesh.ClearPolygons();
        return;
    }
    size_t p = 0;
    int32_t start = 0;
    for (int i = 0; i < count; ++i) {
        if (v[i] >= 0) continue;
        v[i] = v[i] == INT32_MIN ? 2147483646 : -v[i] - 1;
        out[p++] = FbxMesh::Polygon{start, i + 1 - start, -1};
        start = i + 1;
    }
    if (start < count) out[p++] = FbxMesh::Polygon{start, count - start, -1};
    adopt(buffer, static_cast<size_t>(count), mesh.GetPolygonVertexArray());
}

}  // namespace

FbxObject* Fbx7DocumentReader::ReadGeometry(const char* subclass, const char* name, FbxObject* referenced) {
    if (FbxString(subclass) != "Mesh") return ReadGeneric("Geometry", subclass, name, referenced);
    FbxMesh* mesh = FbxCast<FbxMesh>(MakeObject(FbxMesh::ClassId, name, referenced));
    if (mesh && inBlock_) ReadMesh(*mesh);
    return mesh;
}

void Fbx7DocumentReader::ReadMesh(FbxMesh& mesh) {
    FbxFieldStream& s = *stream_;
    s.NextInt("GeometryVersion", 0);
    StepProgress(mesh.GetName());
    reader_.ReadProperties70(&mesh);

    if (s.BeginField("Smoothness")) {
        mesh.SetSmoothness(s.NextUInt());
        s.EndField();
        mesh.SetPreviewDivisionLevels(s.NextInt("PreviewDivisionLevels", 0));
        mesh.SetRenderDivisionLevels(s.NextInt("RenderDivisionLevels", 0));
        mesh.SetDisplaySubdivisions(s.NextBool("DisplaySubdivisions", false));
        mesh.SetBoundaryRule(s.NextUInt("BoundaryRule", 0));
        mesh.SetPreserveBorders(s.NextBool("PreserveBorders", false));
        mesh.SetPreserveHardEdges(s.NextBool("PreserveHardEdges", false));
        mesh.SetPropagateEdgeHardness(s.NextBool("PropagateEdgeHardness", false));
    }

    FbxByteBuffer buffer;
    if (s.FieldInstanceCount("Vertices") > 0) {
        size_t points = static_cast<size_t>(readArray(s, "Vertices", 'd', buffer)) / 3;
        mesh.InitControlPoints(0);
        if (points > 0 && widenDoubles(buffer, points, 3, 4, 0.0)) adopt(buffer, points, mesh.GetControlPointArray());
    }
    if (s.FieldInstanceCount("PolygonVertexIndex") > 0) {
        mesh.ClearPolygons();
        int count = readArray(s, "PolygonVertexIndex", 'i', buffer);
        if (count > 0) buildPolygons(mesh, buffer, count);
    }
    int edges = readArray(s, "Edges", 'i', buffer);
    if (edges > 0) adopt(buffer, static_cast<size_t>(edges), mesh.GetEdgeArray());

    ElementLists lists;
    for (EType type : kReadOrder) readElements(s, mesh, kElementWords[type], type, type, lists);
    for (int c = 0; c < FbxLayerElement::sTypeTextureCount; ++c) {
        auto channel = static_cast<EType>(FbxLayerElement::sTypeTextureStartIndex + c);
        readElements(s, mesh, kUVWords[c], FbxLayerElement::eUV, channel, lists);
    }
    readLayers(s, mesh, lists);
}
