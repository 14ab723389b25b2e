// Axis and unit conversion against Blender: the same Blender scene exported
// Y-up in centimetres, Z-up in metres and Y-up with a global scale of 0.5
// (testdata/fbx/axes, see its README). Converted to up +Z, front -Y, coord
// +X in metres, each node's global matrix is Blender's world matrix, with
// rows for columns; the file exported at half scale gives half of it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_axis_system.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_system_unit.h"

namespace {

struct BlenderWorld {
    double frame;
    double seconds;
    std::string name;
    double m[4][4];
};

std::string dataPath(const std::string& name) { return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/axes/" + name; }

std::vector<BlenderWorld> readFacts(const std::string& name) {
    std::vector<BlenderWorld> facts;
    std::ifstream in(dataPath(name));
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        BlenderWorld w;
        fields >> w.frame >> w.seconds >> w.name;
        for (auto& row : w.m)
            for (double& element : row) fields >> element;
        if (fields) facts.push_back(w);
    }
    return facts;
}

struct Variant {
    const char* name;
    double scale;  // of the exported scene against Blender's
};

class AxisUnitBlender : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override { manager = FbxManager::Create(); }
    void TearDown() override { manager->Destroy(); }

    // The file imported and converted as the converter does.
    FbxScene* ConvertedScene(const std::string& file) {
        FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        FbxImporter* importer = FbxImporter::Create(manager, "");
        FbxScene* scene = FbxScene::Create(manager, file.c_str());
        EXPECT_TRUE(importer->Initialize(dataPath(file).c_str(), -1, settings)) << file;
        EXPECT_TRUE(importer->Import(scene)) << file;
        importer->Destroy();
        // The evaluator reads the animation of this file's stack.
        manager->GetAnimationEvaluator()->SetContext(scene->GetSrcObject<FbxAnimStack>(0));
        FbxAxisSystem(FbxAxisSystem::eZAxis, -FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded)
            .ConvertScene(scene);
        FbxSystemUnit::ConversionOptions options;
        FbxSystemUnit(100.0, 1.0).ConvertScene(scene, options);
        return scene;
    }

    FbxManager* manager = nullptr;
};

TEST_P(AxisUnitBlender, ConvertedGlobalMatricesAreBlendersWorldMatrices) {
    const std::string scene = GetParam();
    std::vector<BlenderWorld> facts = readFacts(scene + ".txt");
    ASSERT_GT(facts.size(), 15u);
    for (Variant variant : {Variant{"y_up_cm", 1.0}, Variant{"z_up_m", 1.0}, Variant{"y_up_half", 0.5}}) {
        const std::string file = scene + "_" + variant.name + ".fbx";
        FbxScene* converted = ConvertedScene(file);
        FbxGlobalSettings* settings = converted->GetGlobalSettings();
        EXPECT_EQ(FbxAxisSystem::FromSettings(*settings), FbxAxisSystem(3, -2, 0)) << file;
        EXPECT_EQ(settings->UnitScaleFactor().Get(), 100.0) << file;
        for (const BlenderWorld& w : facts) {
            auto* node = static_cast<FbxNode*>(
                converted->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), w.name.c_str()));
            ASSERT_NE(node, nullptr) << file << " " << w.name;
            const FbxAMatrix global = node->EvaluateGlobalTransform(FbxTime::FromSeconds(w.seconds));
            double size = 1.0;
            for (int r = 0; r < 4; ++r)
                for (int c = 0; c < 3; ++c) size = std::max(size, std::fabs(w.m[c][r]));
            for (int r = 0; r < 4; ++r)
                for (int c = 0; c < 3; ++c) {
                    const double blender = variant.scale * (r < 3 ? w.m[c][r] : w.m[c][3]);
                    EXPECT_NEAR(global[r][c], blender, 1e-5 * size)
                        << file << " " << w.name << " at frame " << w.frame << " [" << r << "][" << c << "]";
                }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, AxisUnitBlender, ::testing::Values("hierarchy", "armature"));

}  // namespace
