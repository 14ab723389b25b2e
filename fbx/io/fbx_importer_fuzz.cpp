// Imports arbitrary bytes as an FBX file into a scene, the whole way from
// the header through the connections and every pass after them, so that no
// input crashes, hangs or leaks the read. The bytes go through a file
// because the importer reads files.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_set>
#include <vector>

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

// Touches what a caller of the import would: the tree from the root, each
// node once, with a stack of its own.
int walk(const FbxNode* root) {
    std::vector<const FbxNode*> pending{root};
    std::unordered_set<const FbxNode*> seen{root};
    int count = 0;
    while (!pending.empty()) {
        const FbxNode* node = pending.back();
        pending.pop_back();
        if (!node) continue;
        count += 1 + node->GetNodeAttributeCount() + node->GetMaterialCount() + (node->GetMesh() ? 1 : 0) +
                 (node->GetSkeleton() ? 1 : 0);
        for (int i = 0; i < node->GetChildCount(); ++i)
            if (seen.insert(node->GetChild(i)).second) pending.push_back(node->GetChild(i));
    }
    return count + root->GetChildCount(true);
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
        if (FbxNode* root = scene->GetRootNode()) {
            volatile int nodes = walk(root);
            (void)nodes;
        }
    }
    manager->Destroy();
    std::remove(inputPath().c_str());
    return 0;
}
