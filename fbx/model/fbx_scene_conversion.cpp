#include "fbx/model/fbx_scene_conversion.h"

#include <vector>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"

void SetSourcePivot(FbxNode& node, FbxPivotSet::EVector which, const FbxVector4& value) {
    const FbxDouble3 v(value[0], value[1], value[2]);
    switch (which) {
    case FbxPivotSet::eRotationOffset:
        node.SetRotationOffset(FbxNode::eSourcePivot, value);
        node.RotationOffset().Set(v);
        break;
    case FbxPivotSet::eRotationPivot:
        node.SetRotationPivot(FbxNode::eSourcePivot, value);
        node.RotationPivot().Set(v);
        break;
    case FbxPivotSet::ePreRotation:
        node.SetPreRotation(FbxNode::eSourcePivot, value);
        node.PreRotation().Set(v);
        break;
    case FbxPivotSet::eScalingOffset:
        node.SetScalingOffset(FbxNode::eSourcePivot, value);
        node.ScalingOffset().Set(v);
        break;
    default:
        break;
    }
}

void MultiplyCurveKeys(FbxAnimCurve& curve, float factor) {
    const int keys = curve.KeyGetCount();
    if (keys == 0) return;
    curve.KeyModifyBegin();
    for (int i = 0; i < keys; ++i) {
        curve.KeyMultValue(i, factor);
        curve.KeyMultTangent(i, factor);
    }
    curve.KeyModifyEnd();
}

void PremultiplyClusterMatrices(FbxGeometry& geometry, const FbxAMatrix& m) {
    for (int d = 0; d < geometry.GetDeformerCount(FbxDeformer::eSkin); ++d) {
        auto* skin = static_cast<FbxSkin*>(geometry.GetDeformer(d, FbxDeformer::eSkin));
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            FbxCluster* cluster = skin->GetCluster(c);
            if (!cluster) continue;
            FbxAMatrix matrix;
            cluster->SetTransformMatrix(m * cluster->GetTransformMatrix(matrix));
            cluster->SetTransformLinkMatrix(m * cluster->GetTransformLinkMatrix(matrix));
            cluster->SetTransformAssociateModelMatrix(m * cluster->GetTransformAssociateModelMatrix(matrix));
        }
    }
}

void PremultiplyPoseEntries(FbxScene& scene, const FbxMatrix& m,
                            const std::function<bool(const FbxPose&, int)>& handled) {
    for (int p = 0; p < scene.GetPoseCount(); ++p) {
        FbxPose* pose = scene.GetPose(p);
        if (!pose) continue;
        const int count = pose->GetCount();
        std::vector<FbxPoseInfo> kept, moved;
        for (int i = 0; i < count; ++i) {
            FbxPoseInfo entry{pose->GetMatrix(i), pose->IsLocalMatrix(i), pose->GetNode(i)};
            if (!handled(*pose, i)) {
                kept.push_back(entry);
            } else if (entry.node) {
                entry.matrix = m * entry.matrix;
                entry.local = false;
                moved.push_back(entry);
            }
        }
        if (moved.empty() && static_cast<int>(kept.size()) == count) continue;
        kept.insert(kept.end(), moved.rbegin(), moved.rend());
        pose->ReplaceEntries(std::move(kept));
    }
}

void ForgetEvaluatedTransforms(FbxScene& scene) {
    for (int i = 0; i < scene.GetSrcObjectCount<FbxAnimStack>(); ++i)
        if (FbxAnimStack* stack = scene.GetSrcObject<FbxAnimStack>(i)) stack->GetEvalState().InvalidateAll();
    if (FbxManager* manager = scene.GetFbxManager())
        if (FbxAnimEvaluator* evaluator = manager->FindAnimationEvaluator()) evaluator->GetState().InvalidateAll();
}
