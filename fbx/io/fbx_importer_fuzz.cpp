// Imports arbitrary bytes as an FBX file into a scene, the whole way from
// the header to the connections, so that no input crashes, hangs or leaks
// the read. The bytes go through a file because the importer reads files.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

const std::string& inputPath() {
    static const std::string path = "/tmp/kiva_importer_fuzz_" + std::to_string(getpid()) + ".fbx";
    return path;
}

// Touches what a caller of the import would: the tree from the root.
int walk(const FbxNode* node, int depth) {
    if (!node || depth > 64) return 0;
    int count = 1 + node->GetNodeAttributeCount() + node->GetMaterialCount();
    for (int i = 0; i < node->GetChildCount(); ++i) count += walk(node->GetChild(i), depth + 1);
    return count;
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
    // Embedded media would leave folders behind each input.
    settings->SetBoolProp(FbxIOPath::kExtractEmbeddedData, false);
    FbxImporter* importer = FbxImporter::Create(manager, "");
    if (importer->Initialize(inputPath().c_str(), -1, settings)) {
        FbxScene* scene = FbxScene::Create(manager, "fuzz");
        importer->Import(scene);
        volatile int nodes = walk(scene->GetRootNode(), 0);
        (void)nodes;
    }
    manager->Destroy();
    std::remove(inputPath().c_str());
    return 0;
}
