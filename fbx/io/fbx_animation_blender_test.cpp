// The evaluator against Blender: files exported by Blender with actions, and
// the world matrices Blender itself gives at the same frames
// (testdata/fbx/blender_animation, see its README).
//
// The files keep Blender's axes and say metres in "UnitScaleFactor", so a
// node's global matrix equals Blender's world matrix with rows for columns:
// global[r][c] = world[c][r] for the axes (r, c < 3) and global[3][c] =
// world[c][3] for the translation. Frame f is at f / 24 seconds.

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
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

struct BlenderWorld {
    double frame;
    double seconds;
    std::string name;
    double m[4][4];
};

std::string dataPath(const std::string& name) {
    return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender_animation/" + name;
}

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

class BlenderAnimation : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        manager = FbxManager::Create();
        FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        FbxImporter* importer = FbxImporter::Create(manager, "");
        scene = FbxScene::Create(manager, "scene");
        std::string file = dataPath(std::string(GetParam()) + ".fbx");
        ASSERT_TRUE(importer->Initialize(file.c_str(), -1, settings)) << file;
        ASSERT_TRUE(importer->Import(scene)) << file;
    }
    void TearDown() override { manager->Destroy(); }

    FbxNode* Node(const std::string& name) const {
        return static_cast<FbxNode*>(scene->FindSrcObject(FbxCriteria::ObjectType(FbxNode::ClassId), name.c_str()));
    }

    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
};

TEST_P(BlenderAnimation, GlobalMatricesAreBlendersWorldMatrices) {
    std::vector<BlenderWorld> facts = readFacts(std::string(GetParam()) + ".txt");
    ASSERT_GT(facts.size(), 30u);
    // The file's one stack is the evaluator's context after the import.
    FbxAnimStack* stack = scene->GetSrcObject<FbxAnimStack>(0);
    ASSERT_NE(stack, nullptr);
    EXPECT_EQ(manager->GetAnimationEvaluator()->GetContext(), stack);

    bool between = false, sheared = false;
    for (const BlenderWorld& w : facts) {
        FbxNode* node = Node(w.name);
        ASSERT_NE(node, nullptr) << w.name;
        FbxAMatrix global = node->EvaluateGlobalTransform(FbxTime::FromSeconds(w.seconds));
        double scale = 1.0;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) scale = std::max(scale, std::fabs(w.m[r][c]));
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 3; ++c) {
                double blender = r < 3 ? w.m[c][r] : w.m[c][3];
                EXPECT_NEAR(global[r][c], blender, 1e-5 * scale) << w.name << " at frame " << w.frame;
            }
        between = between || w.frame != std::floor(w.frame);
        FbxVector4 x = global.GetRow(0), y = global.GetRow(1);
        sheared = sheared || std::fabs(x.DotProduct(y)) > 1e-3 * x.Length() * y.Length();
    }
    EXPECT_TRUE(between);
    if (std::string(GetParam()) == "object_actions") {
        EXPECT_TRUE(sheared);
    }

    // The keys run from frame 1 to 17.
    FbxTimeSpan interval;
    ASSERT_TRUE(scene->GetRootNode()->GetAnimationInterval(interval));
    EXPECT_EQ(interval.start, FbxTime::FromSeconds(1.0 / 24.0));
    EXPECT_EQ(interval.stop, FbxTime::FromSeconds(17.0 / 24.0));
}

INSTANTIATE_TEST_SUITE_P(Files, BlenderAnimation, ::testing::Values("object_actions", "armature_action"));

}  // namespace
