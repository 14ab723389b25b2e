#include "fbx/dump/geometry_dump.h"

#include <string>

#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_video.h"

namespace {

using EType = FbxLayerElement::EType;

const char* const kKinds[FbxLayerElement::sTypeNonTextureCount + 1] = {
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
// The texture channels' names, as the file words use them.
const char* const kChannels[FbxLayerElement::sTypeTextureCount] = {
    "",
    "DiffuseFactor",
    "Emissive",
    "EmissiveFactor",
    "Ambient",
    "AmbientFactor",
    "Specular",
    "SpecularFactor",
    "Shininess",
    "NormalMap",
    "Bump",
    "Transparent",
    "TransparencyFactor",
    "Reflection",
    "ReflectionFactor",
    "Displacement",
    "VectorDisplacement",
};

const char* mappingWord(FbxLayerElement::EMappingMode mode) {
    switch (mode) {
    case FbxLayerElement::eByControlPoint:
        return "ByVertice";
    case FbxLayerElement::eByPolygonVertex:
        return "ByPolygonVertex";
    case FbxLayerElement::eByPolygon:
        return "ByPolygon";
    case FbxLayerElement::eByEdge:
        return "ByEdge";
    case FbxLayerElement::eAllSame:
        return "AllSame";
    default:
        return "None";
    }
}

const char* referenceWord(FbxLayerElement::EReferenceMode mode) {
    return mode == FbxLayerElement::eIndex           ? "Index"
           : mode == FbxLayerElement::eIndexToDirect ? "IndexToDirect"
                                                     : "Direct";
}

DumpValue element(const FbxLayerElement& e, const std::string& kind) {
    DumpValue value = DumpValue::object();
    value.add("kind", kind);
    value.add("name", e.GetName());
    value.add("mapping", mappingWord(e.GetMappingMode()));
    value.add("reference", referenceWord(e.GetReferenceMode()));
    value.add("direct", e.GetDirectArrayBase().GetCount());
    value.add("index", e.GetIndexArray().GetCount());
    return value;
}

DumpValue dumpMesh(const FbxMesh& mesh) {
    DumpValue value = DumpValue::object();
    value.add("controlPoints", mesh.GetControlPointsCount());
    value.add("polygons", mesh.GetPolygonCount());
    value.add("polygonVertices", mesh.GetPolygonVertexCount());
    value.add("edges", mesh.GetMeshEdgeCount());
    DumpValue& layers = value.add("layers", DumpValue::array());
    int placed = 0;
    std::vector<const FbxLayerElement*> seen;
    auto count = [&](const FbxLayerElement* e) {
        for (const FbxLayerElement* s : seen)
            if (s == e) return;
        seen.push_back(e);
        ++placed;
    };
    for (int l = 0; l < mesh.GetLayerCount(); ++l) {
        const FbxLayer* layer = mesh.GetLayer(l);
        DumpValue& elements = layers.push(DumpValue::array());
        for (int type = 1; type <= FbxLayerElement::sTypeNonTextureCount; ++type) {
            if (type == FbxLayerElement::eUV) continue;
            if (const FbxLayerElement* e = layer->GetLayerElementOfType(static_cast<EType>(type))) {
                elements.push(element(*e, kKinds[type]));
                count(e);
            }
        }
        for (int c = 0; c < FbxLayerElement::sTypeTextureCount; ++c) {
            auto channel = static_cast<EType>(FbxLayerElement::sTypeTextureStartIndex + c);
            if (const FbxLayerElement* uv = layer->GetLayerElementOfType(channel, true)) {
                elements.push(element(*uv, std::string("LayerElement") + kChannels[c] + "UV"));
                count(uv);
            }
            if (const FbxLayerElement* texture = layer->GetLayerElementOfType(channel, false)) {
                elements.push(element(*texture, c == 0 ? std::string("LayerElementTexture")
                                                       : std::string("LayerElement") + kChannels[c] + "Textures"));
                count(texture);
            }
        }
    }
    value.add("unlayeredElements", mesh.GetLayerElementCount() - placed);
    return value;
}

DumpValue dumpClusters(const FbxSkin& skin) {
    DumpValue clusters = DumpValue::array();
    for (int i = 0; i < skin.GetClusterCount(); ++i) {
        const FbxCluster* cluster = skin.GetCluster(i);
        DumpValue value = DumpValue::object();
        value.add("name", cluster->GetName());
        const FbxNode* link = cluster->GetLink();
        value.add("link", link ? DumpValue(link->GetName()) : DumpValue());
        int n = cluster->GetControlPointIndicesCount();
        value.add("indices", n);
        double sum = 0.0;
        for (int k = 0; k < n; ++k) sum += cluster->GetControlPointWeights()[k];
        value.add("weightSum", sum);
        clusters.push(std::move(value));
    }
    return clusters;
}

DumpValue dumpPose(const FbxPose& pose) {
    DumpValue value = DumpValue::object();
    value.add("type", pose.IsBindPose() ? "bind" : "rest");
    DumpValue& entries = value.add("entries", DumpValue::array());
    for (int i = 0; i < pose.GetCount(); ++i) {
        DumpValue entry = DumpValue::object();
        const FbxNode* node = pose.GetNode(i);
        entry.add("node", node ? DumpValue(node->GetName()) : DumpValue());
        entry.add("local", pose.IsLocalMatrix(i));
        entries.push(std::move(entry));
    }
    return value;
}

DumpValue dumpMaterial(const FbxSurfaceMaterial& material) {
    DumpValue value = DumpValue::object();
    value.add("shadingModel", material.ShadingModel().Get());
    DumpValue colors = DumpValue::object();
    DumpValue textures = DumpValue::object();
    for (FbxProperty p = material.GetFirstProperty(); p.IsValid(); p = p.GetSibling()) {
        if (p.GetPropertyDataType() == FbxColor3DT) {
            FbxDouble3 c = p.Get<FbxDouble3>();
            DumpValue& rgb = colors.add(p.GetName(), DumpValue::array());
            for (int i = 0; i < 3; ++i) rgb.push(c[i]);
        }
        for (int i = 0; i < p.GetSrcObjectCount(); ++i)
            if (const auto* texture = FbxCast<FbxFileTexture>(p.GetSrcObject(i)))
                textures.add(p.GetName(), texture->GetRelativeFileName());
    }
    value.add("colors", std::move(colors));
    value.add("textures", std::move(textures));
    return value;
}

}  // namespace

void addGeometryDetails(const FbxObject& object, DumpValue& value) {
    if (const auto* mesh = FbxCast<FbxMesh>(&object)) {
        value.add("mesh", dumpMesh(*mesh));
    } else if (const auto* skin = FbxCast<FbxSkin>(&object)) {
        value.add("clusters", dumpClusters(*skin));
    } else if (const auto* pose = FbxCast<FbxPose>(&object)) {
        value.add("pose", dumpPose(*pose));
    } else if (const auto* material = FbxCast<FbxSurfaceMaterial>(&object)) {
        value.add("material", dumpMaterial(*material));
    } else if (const auto* texture = FbxCast<FbxFileTexture>(&object)) {
        value.add("fileName", texture->GetFileName());
        value.add("relativeFileName", texture->GetRelativeFileName());
    } else if (const auto* video = FbxCast<FbxVideo>(&object)) {
        value.add("fileName", video->GetFileName());
        value.add("relativeFileName", video->GetRelativeFileName());
        value.add("embeddedSize", video->GetEmbeddedContentSize());
    }
}
