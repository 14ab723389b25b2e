#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_kfcurve.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

constexpr FbxLongLong kSecond = FbxTime::kTicksPerSecond;
constexpr uint32_t kCubicAuto = KFCurve::eInterpolationCubic | KFCurve::eTangentAuto;

// `keys` cubic keys, 1/30 s apart, on a wave.
void fillWave(KFCurve& curve, int keys, double phase) {
    for (int i = 0; i < keys; ++i)
        curve.KeyAdd(i * kSecond / 30, static_cast<float>(std::sin(i * 0.2 + phase) * 10.0), kCubicAuto);
}

// A curve of 1,000 keys sampled at 60 steps per second from start to end:
// the search starts at the segment of the last call.
void BM_CurveForward(benchmark::State& state) {
    KFCurve curve;
    fillWave(curve, 1000, 0.0);
    const FbxLongLong end = curve.KeyGetTime(999), step = kSecond / 60;
    int cache = 0;
    FbxLongLong t = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(curve.Evaluate(t, &cache));
        t = t + step > end ? 0 : t + step;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CurveForward);

// The same curve at random times: the search walks from wherever the last
// call left it.
void BM_CurveRandom(benchmark::State& state) {
    KFCurve curve;
    fillWave(curve, 1000, 0.0);
    std::mt19937_64 random(7);
    std::uniform_int_distribution<FbxLongLong> time(0, curve.KeyGetTime(999));
    std::vector<FbxLongLong> times(4096);
    for (FbxLongLong& t : times) t = time(random);
    int cache = 0;
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(curve.Evaluate(times[i], &cache));
        i = (i + 1) & 4095;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CurveRandom);

// A scene whose nodes all have translation, rotation and scaling curves of
// 60 keys (2 seconds) in one layer.
struct AnimatedScene {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "scene");
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "layer");

    AnimatedScene() { stack->AddMember(layer); }
    ~AnimatedScene() { manager->Destroy(); }

    FbxNode* Add(FbxNode* parent, int index) {
        FbxNode* node = FbxNode::Create(scene, "node");
        parent->AddChild(node);
        for (FbxProperty p :
             {FbxProperty(node->LclTranslation()), FbxProperty(node->LclRotation()), FbxProperty(node->LclScaling())}) {
            FbxAnimCurveNode* curveNode = p.GetCurveNode(layer, true);
            for (unsigned c = 0; c < 3; ++c) {
                FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
                fillWave(curve->GetKFCurve(), 60, index + c);
                curveNode->ConnectToChannel(curve, c);
            }
        }
        return node;
    }
};

// The global matrix of a node 10 levels below the root at a new time each
// call: the time change invalidates the records, and the walk computes the
// 10 nodes above it and itself.
void BM_GlobalTransformTenDeep(benchmark::State& state) {
    AnimatedScene s;
    FbxNode* node = s.scene->GetRootNode();
    for (int level = 0; level < 10; ++level) node = s.Add(node, level);
    FbxLongLong t = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(node->EvaluateGlobalTransform(FbxTime(t)));
        t = (t + kSecond / 60) % (2 * kSecond);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GlobalTransformTenDeep);

// What a bake of 600 frames asks of a skeleton of 100 bones (ten chains of
// ten under one root): each bone's local matrix at every frame, bones in the
// outer loop and frames in the inner one, so that every call changes the
// time.
void BM_Bake100Bones600Frames(benchmark::State& state) {
    AnimatedScene s;
    std::vector<FbxNode*> bones;
    FbxNode* root = s.Add(s.scene->GetRootNode(), 0);
    bones.push_back(root);
    for (int chain = 0; chain < 10 && bones.size() < 100; ++chain) {
        FbxNode* parent = root;
        for (int i = 0; i < 10 && bones.size() < 100; ++i) bones.push_back(parent = s.Add(parent, chain * 10 + i));
    }
    for (auto _ : state) {
        for (FbxNode* bone : bones)
            for (int frame = 0; frame < 600; ++frame)
                benchmark::DoNotOptimize(bone->EvaluateLocalTransform(FbxTime::FromSeconds(frame / 60.0)));
    }
    state.SetItemsProcessed(state.iterations() * 100 * 600);
    state.counters["bones"] = static_cast<double>(bones.size());
}
BENCHMARK(BM_Bake100Bones600Frames)->Unit(benchmark::kMillisecond);

}  // namespace
