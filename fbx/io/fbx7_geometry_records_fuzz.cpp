// Imports arbitrary bytes as an FBX file and then uses every mesh, skin,
// pose, material and texture the geometry records made of them the way
// scene extraction does: every corner's normal and UVs, tangents, cluster
// weights, pose entries and material textures. No input may crash, hang or
// leak, however its counts, indices and modes disagree. Seeded with the
// Blender exports of testdata/fbx/geometry.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_surface_material.h"

namespace {

const std::string& inputPath() {
    static const std::string path = "/tmp/kiva_geometry_fuzz_" + std::to_string(getpid()) + ".fbx";
    return path;
}

double useMesh(FbxMesh& mesh) {
    double sum = 0.0;
    std::vector<FbxString> uvSets;
    mesh.GetUVSetNames(uvSets);
    for (int p = 0; p < mesh.GetPolygonCount(); ++p) {
        for (int k = 0; k < mesh.GetPolygonSize(p); ++k) {
            sum += mesh.GetControlPointAt(mesh.GetPolygonVertex(p, k))[0];
            FbxVector4 normal;
            if (mesh.GetPolygonVertexNormal(p, k, normal)) sum += normal[1];
            for (const FbxString& name : uvSets) {
                FbxVector2 uv;
                bool unmapped = false;
                if (mesh.GetPolygonVertexUV(p, k, name.c_str(), uv, unmapped)) sum += uv[0];
            }
            for (int l = 0; l < mesh.GetLayerCount(); ++l)
                for (int type = 1; type < FbxLayerElement::eTypeCount; ++type) {
                    const FbxLayerElement* e =
                        mesh.GetLayer(l)->GetLayerElementOfType(static_cast<FbxLayerElement::EType>(type), true);
                    int index = 0;
                    if (e && mesh.ResolveElementIndex(*e, p, k, index)) sum += index;
                }
        }
    }
    if (!uvSets.empty() && mesh.GenerateTangentsData(uvSets[0].c_str())) {
        const FbxLayerElementTangent* tangents = mesh.GetElementTangent(0);
        if (tangents && tangents->GetDirectArray().GetCount() > 0) sum += tangents->GetDirectArray().GetAt(0)[0];
    }
    for (int d = 0; d < mesh.GetDeformerCount(FbxDeformer::eSkin); ++d) {
        auto* skin = static_cast<FbxSkin*>(mesh.GetDeformer(d, FbxDeformer::eSkin));
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            FbxCluster* cluster = skin->GetCluster(c);
            for (int i = 0; i < cluster->GetControlPointIndicesCount(); ++i)
                sum += cluster->GetControlPointIndices()[i] * cluster->GetControlPointWeights()[i];
            FbxAMatrix m;
            sum += cluster->GetTransformLinkMatrix(m).GetT()[0];
        }
    }
    return sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* file = std::fopen(inputPath().c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    FbxManager* manager = FbxManager::Create();
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    manager->SetIOSettings(settings);
    settings->SetBoolProp(FbxIOPath::kExtractEmbeddedData, false);
    FbxImporter* importer = FbxImporter::Create(manager, "");
    if (importer->Initialize(inputPath().c_str(), -1, settings)) {
        FbxScene* scene = FbxScene::Create(manager, "fuzz");
        importer->Import(scene);
        double sum = 0.0;
        for (int i = 0; i < scene->GetSrcObjectCount<FbxMesh>(); ++i) sum += useMesh(*scene->GetSrcObject<FbxMesh>(i));
        for (int i = 0; i < scene->GetPoseCount(); ++i) {
            FbxPose* pose = scene->GetPose(i);
            for (int e = 0; e < pose->GetCount(); ++e)
                sum += (pose->GetNode(e) != nullptr) + pose->GetMatrix(e).Get(3, 0);
        }
        for (int i = 0; i < scene->GetSrcObjectCount<FbxSurfaceMaterial>(); ++i) {
            FbxSurfaceMaterial* material = scene->GetSrcObject<FbxSurfaceMaterial>(i);
            FbxProperty diffuse = material->FindProperty(FbxSurfaceMaterial::sDiffuse);
            for (int t = 0; t < diffuse.GetSrcObjectCount(); ++t)
                if (auto* texture = FbxCast<FbxFileTexture>(diffuse.GetSrcObject(t)))
                    sum += static_cast<double>(FbxString(texture->GetRelativeFileName()).size());
        }
        volatile double used = sum;
        (void)used;
    }
    manager->Destroy();
    std::remove(inputPath().c_str());
    return 0;
}
