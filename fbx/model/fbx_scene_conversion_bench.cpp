#include <benchmark/benchmark.h>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_axis_system.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_system_unit.h"

namespace {

// A scene of `count` root children, each with a child, and with curves of
// 24 keys on each channel of its translation and rotation.
struct WideScene {
    explicit WideScene(int count) {
        manager = FbxManager::Create();
        scene = FbxScene::Create(manager, "Scene");
        FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take");
        FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Base");
        stack->AddMember(layer);
        manager->GetAnimationEvaluator()->SetContext(stack);
        for (int i = 0; i < count; ++i) {
            FbxNode* node = FbxNode::Create(scene, "");
            scene->GetRootNode()->AddChild(node);
            node->AddChild(FbxNode::Create(scene, ""));
            node->LclTranslation().Set(FbxDouble3(i, 2 * i, 3));
            for (FbxProperty property : {FbxProperty(node->LclTranslation()), FbxProperty(node->LclRotation())}) {
                FbxAnimCurveNode* curveNode = property.GetCurveNode(layer, true);
                for (unsigned c = 0; c < 3; ++c) {
                    FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "");
                    for (int k = 0; k < 24; ++k)
                        curve->KeyAdd(FbxTime::FromSeconds(k / 24.0), static_cast<float>(k + c));
                    curveNode->ConnectToChannel(curve, c);
                }
            }
        }
    }
    ~WideScene() { manager->Destroy(); }

    FbxManager* manager;
    FbxScene* scene;
};

// Each iteration converts the whole scene, between Y-up and Z-up in turn.
void BM_AxisConversion(benchmark::State& state) {
    WideScene wide(static_cast<int>(state.range(0)));
    const FbxAxisSystem systems[2] = {FbxAxisSystem(3, -2, 0), FbxAxisSystem(2, 2, 0)};
    int turn = 0;
    for (auto _ : state) systems[turn++ % 2].ConvertScene(wide.scene);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AxisConversion)->Arg(10000)->Unit(benchmark::kMillisecond);

// Each iteration converts the whole scene, between centimetres and metres
// in turn.
void BM_UnitConversion(benchmark::State& state) {
    WideScene wide(static_cast<int>(state.range(0)));
    int turn = 0;
    for (auto _ : state) (turn++ % 2 ? FbxSystemUnit::cm : FbxSystemUnit::m).ConvertScene(wide.scene);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_UnitConversion)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
