#include "scene/model_extraction.h"

#include <map>
#include <memory>
#include <vector>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_geometry_converter.h"
#include "fbx/model/fbx_layer_element.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_skin.h"
#include "scene/material_translator.h"
#include "scene/matrix4.h"
#include "scene/mesh_builder.h"
#include "scene/skeleton_extraction.h"
#include "scene/vertex_formats.h"
#include "tarn/kiva_builder.h"
#include "tarn/vertex_format.h"

namespace {

// The children of `node` pushed so that the first child is taken first.
void pushChildren(const FbxNode& node, std::vector<FbxNode*>& pending) {
    for (int i = node.GetChildCount(); i-- > 0;)
        if (FbxNode* child = node.GetChild(i)) pending.push_back(child);
}

// The meshes of one FbxMesh: one builder per vertex format its materials
// need, each with one material group per slot; all meshes of format 7,
// then 8, then 10.
std::vector<qe::Ref<tarn::Mesh>> extractMeshes(FbxMesh& mesh, const FbxNode& node, tarn::ModelRecord& model,
                                               const ModelExtraction& context) {
    const FbxSkin* skin = mesh.GetSrcObject<FbxSkin>(0);
    const bool skinned = skin != nullptr;

    std::vector<qe::Ref<tarn::MaterialData>> materials;
    const int slotCount = node.GetMaterialCount();
    for (int i = 0; i < slotCount; ++i)
        materials.push_back(context.translator.materialFor(node.GetMaterial(i), skinned));
    if (materials.empty()) materials.push_back(context.translator.materialFor(nullptr, skinned));

    // Polygons are divided between slots only by a per-polygon material
    // element; without one every polygon is drawn with every slot.
    const FbxLayerElementMaterial* materialElement = mesh.GetElementMaterial(0);
    const FbxLayerElementArrayTemplate<int>* materialIndices = nullptr;
    if (materialElement && materialElement->GetMappingMode() == FbxLayerElement::eByPolygon)
        materialIndices = &materialElement->GetIndexArray();

    std::vector<FbxString> uvSetNames;
    mesh.GetUVSetNames(uvSetNames);
    PolygonSource source = polygonSourceOf(mesh);
    source.uvSetNames = uvSetNames;

    // Tangents are made only for a format that stores them, and only from
    // a UV set: without UVs the tangent fields stay zero.
    if (!uvSetNames.empty()) {
        for (const qe::Ref<tarn::MaterialData>& material : materials) {
            if (tarn::vertexFormatInfo(vertexFormatFor(material, skinned)).tangent < 0) continue;
            mesh.GenerateTangentsData(uvSetNames[0].c_str(), false);
            source.tangents = mesh.GetElementTangent(0);
            source.binormals = mesh.GetElementBinormal(0);
            break;
        }
    }

    std::vector<SkinInfluences> influences;
    if (skin) {
        influences.resize(static_cast<size_t>(source.controlPointCount > 0 ? source.controlPointCount : 0));
        fillSkinInfluences(model, *skin, context.skeletonNodes, influences,
                           SkinSource{context.input, &node, &context.errors});
        source.skinInfluences = influences;
    }

    std::map<tarn::VertexFormat, std::unique_ptr<GenericMeshBuilder>> builders;
    const int polygonCount = mesh.GetPolygonCount();
    for (size_t slot = 0; slot < materials.size(); ++slot) {
        const tarn::VertexFormat format = vertexFormatFor(materials[slot], skinned);
        std::unique_ptr<GenericMeshBuilder>& meshBuilder = builders[format];
        if (!meshBuilder) meshBuilder = createMeshBuilder(format, context.builder);
        meshBuilder->setMaterial(materials[slot]);
        for (int p = 0; p < polygonCount; ++p) {
            if (materialIndices && materialIndices->GetAt(p) != static_cast<int>(slot)) continue;
            meshBuilder->addPolygon(source, p);
        }
    }

    std::vector<qe::Ref<tarn::Mesh>> meshes;
    for (auto& [format, meshBuilder] : builders) meshBuilder->finish(meshes);
    return meshes;
}

// Adds the meshes of `top` and of every node below it to `model`, each
// placed relative to the model by `modelInverse`.
void extractModelNodes(tarn::ModelRecord& model, FbxNode& top, const Matrix4& modelInverse,
                       const ModelExtraction& context) {
    std::vector<FbxNode*> pending{&top};
    while (!pending.empty()) {
        FbxNode* node = pending.back();
        pending.pop_back();
        if (FbxMesh* mesh = node->GetMesh()) {
            const FbxAMatrix geometric(node->GetGeometricTranslation(FbxNode::eSourcePivot),
                                       node->GetGeometricRotation(FbxNode::eSourcePivot),
                                       node->GetGeometricScaling(FbxNode::eSourcePivot));
            const Matrix4 world = multiply(toMatrix4(node->EvaluateGlobalTransform()), toMatrix4(geometric));
            const Matrix4 placement = multiply(modelInverse, world);
            std::vector<qe::Ref<tarn::Mesh>> meshes = extractMeshes(*mesh, *node, model, context);
            // Bones are never renumbered per mesh: the map is the identity
            // over the model's skeleton, once it has one.
            std::vector<uint32_t> boneMap;
            if (model.skeleton && model.skeleton->skeleton)
                for (uint32_t b = 0; b < model.skeleton->skeleton->bones.size(); ++b) boneMap.push_back(b);
            for (const qe::Ref<tarn::Mesh>& part : meshes)
                model.meshBindings.push_back(
                    tarn::MeshBinding{node->GetName(), context.builder.meshRecordOf(part), placement, boneMap});
        }
        pushChildren(*node, pending);
    }
}

}  // namespace

void extractModels(FbxNode& rootNode, const ModelExtraction& context) {
    std::vector<FbxNode*> pending{&rootNode};
    while (!pending.empty()) {
        FbxNode* node = pending.back();
        pending.pop_back();
        if (!node->GetMesh()) {
            pushChildren(*node, pending);
            continue;
        }
        // The nodes below belong to this model and are not searched for
        // models of their own.
        context.converter.TriangulateInPlace(node);
        const Matrix4 modelMatrix = toMatrix4(node->EvaluateGlobalTransform());
        tarn::ModelRecord* model = context.builder.container()->addModel(node->GetName(), modelMatrix, nullptr);
        extractModelNodes(*model, *node, inverse(modelMatrix), context);
    }
}
