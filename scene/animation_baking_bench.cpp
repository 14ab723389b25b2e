#include <benchmark/benchmark.h>

#include <sstream>

#include <cmath>
#include <string>

#include "convert/error_reporter.h"
#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "scene/animation_baking.h"
#include "scene/polar_decomposition.h"
#include "scene/skeleton_extraction.h"
#include "tarn/kiva_builder.h"

namespace {

// A skeleton of 100 bones (a root and eleven chains of nine below it) whose
// translation, rotation and scaling channels carry cubic curves of 601 keys
// over 10 seconds: 600 frames to bake.
struct RigScene {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "scene");
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "layer");
    tarn::KivaContainer skeletons;
    SkeletonNodeMap nodes;

    RigScene() {
        stack->AddMember(layer);
        FbxNode* root = Bone(scene->GetRootNode(), 0);
        int count = 1;
        for (int chain = 0; count < 100; ++chain) {
            FbxNode* parent = root;
            for (int i = 0; i < 9 && count < 100; ++i) parent = Bone(parent, count++);
        }
        extractSkeletons(*scene->GetRootNode(), skeletons, nodes);
    }
    ~RigScene() { manager->Destroy(); }

    FbxNode* Bone(FbxNode* parent, int index) {
        FbxNode* node = FbxNode::Create(scene, ("bone" + std::to_string(index)).c_str());
        node->SetNodeAttribute(FbxSkeleton::Create(scene, ""));
        parent->AddChild(node);
        for (FbxProperty p :
             {FbxProperty(node->LclTranslation()), FbxProperty(node->LclRotation()), FbxProperty(node->LclScaling())}) {
            FbxAnimCurveNode* curveNode = p.GetCurveNode(layer, true);
            for (unsigned c = 0; c < 3; ++c) {
                FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
                for (int k = 0; k <= 600; ++k)
                    curve->KeyAdd(FbxTime::FromSeconds(k / 60.0),
                                  static_cast<float>(1.5 + std::sin(k * 0.05 + index + c)));
                curveNode->ConnectToChannel(curve, c);
            }
        }
        return node;
    }
};

// The whole bake: 60,000 local matrices evaluated, split and stored.
void BM_Bake100Bones600Frames(benchmark::State& state) {
    RigScene rig;
    for (auto _ : state) {
        tarn::KivaContainer container;
        tarn::KivaBuilder builder(&container);
        std::ostringstream err;
        ErrorReporter errors(err);
        bakeAnimation(*rig.scene->GetRootNode(), builder, rig.nodes, "rig.fbx", errors);
        benchmark::DoNotOptimize(container.animations().front()->animation->transforms.data());
    }
    state.SetItemsProcessed(state.iterations() * 100 * 600);
}
BENCHMARK(BM_Bake100Bones600Frames)->Unit(benchmark::kMillisecond);

// The share of the bake that is this library's own: one polar
// decomposition and quaternion per sample.
void BM_PolarDecomposeAndQuaternion(benchmark::State& state) {
    Matrix4 m = toMatrix4(FbxAMatrix(FbxVector4(1, 2, 3), FbxVector4(20, -35, 70), FbxVector4(1.2, 0.9, 1.1)));
    for (auto _ : state) {
        Matrix4 q, s;
        benchmark::DoNotOptimize(m);
        polarDecompose(m, q, s);
        benchmark::DoNotOptimize(toQuaternion(q));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PolarDecomposeAndQuaternion);

}  // namespace
