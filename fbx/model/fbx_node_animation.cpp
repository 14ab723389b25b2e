// The animation side of FbxNode: evaluation through the manager's
// evaluator, pivot sets for evaluation, the span of a node's keys and the
// quaternion mode of its rotation curves.

#include <unordered_set>
#include <vector>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_scene.h"

FbxAMatrix& FbxNode::EvaluateGlobalTransform(FbxTime time, EPivotSet pivotSet, bool applyTarget, bool forceEval) {
    return GetFbxManager()->GetAnimationEvaluator()->GetNodeGlobalTransform(this, time, pivotSet, applyTarget,
                                                                            forceEval);
}

FbxAMatrix& FbxNode::EvaluateLocalTransform(FbxTime time, EPivotSet pivotSet, bool applyTarget, bool forceEval) {
    return GetFbxManager()->GetAnimationEvaluator()->GetNodeLocalTransform(this, time, pivotSet, applyTarget,
                                                                           forceEval);
}

FbxVector4& FbxNode::EvaluateLocalTranslation(FbxTime time, EPivotSet pivotSet, bool applyTarget, bool forceEval) {
    return GetFbxManager()->GetAnimationEvaluator()->GetNodeLocalTranslation(this, time, pivotSet, applyTarget,
                                                                             forceEval);
}

FbxVector4& FbxNode::EvaluateLocalRotation(FbxTime time, EPivotSet pivotSet, bool applyTarget, bool forceEval) {
    return GetFbxManager()->GetAnimationEvaluator()->GetNodeLocalRotation(this, time, pivotSet, applyTarget, forceEval);
}

FbxVector4& FbxNode::EvaluateLocalScaling(FbxTime time, EPivotSet pivotSet, bool applyTarget, bool forceEval) {
    return GetFbxManager()->GetAnimationEvaluator()->GetNodeLocalScaling(this, time, pivotSet, applyTarget, forceEval);
}

bool FbxNode::PropertyNotify(EPropertyNotifyType type, const FbxProperty& property) {
    if (type == ePropertySet)
        if (FbxAnimEvaluator* evaluator = GetFbxManager()->FindAnimationEvaluator()) evaluator->InvalidateNode(this);
    return ParentClass::PropertyNotify(type, property);
}

void FbxNode::LoadPivotSet(EPivotSet set) {
    if (!IsValidSet(set)) return;
    const FbxPivotSet& pivots = GetPivotSet(set);
    transform_.rotationSpace.rotationOrder = RotationOrderFromProperty(pivots.rotationOrder);
    transform_.rotationSpaceForLimitOnly = pivots.rotationSpaceForLimitOnly;
    for (int i = FbxPivotSet::eRotationOffset; i <= FbxPivotSet::eScalingPivot; ++i) {
        auto which = static_cast<FbxPivotSet::EVector>(i);
        CopyToTransform(which, pivots.Get(which));
    }
}

void FbxNode::ApplyQuaternionInterpolationToAnimation(int mode) {
    FbxScene* scene = GetScene();
    if (!scene) return;
    FbxProperty rotation = LclRotation();
    int stacks = scene->GetSrcObjectCount<FbxAnimStack>();
    for (int s = 0; s < stacks; ++s) {
        FbxAnimStack* stack = scene->GetSrcObject<FbxAnimStack>(s);
        int layers = stack ? stack->GetSrcObjectCount<FbxAnimLayer>() : 0;
        for (int l = 0; l < layers; ++l)
            if (FbxAnimCurveNode* curveNode = rotation.GetCurveNode(stack->GetSrcObject<FbxAnimLayer>(l)))
                curveNode->SetQuaternionMode(static_cast<unsigned>(mode));
    }
}

namespace {

// Unites the spans of the first curve of every channel of a curve node and
// of the curve nodes below it; true when any curve gave a span.
bool collectCurveNode(FbxAnimCurveNode* top, FbxTimeSpan& interval) {
    bool any = false;
    std::vector<FbxAnimCurveNode*> pending{top};
    std::unordered_set<const FbxAnimCurveNode*> seen{top};  // lookup only
    while (!pending.empty()) {
        FbxAnimCurveNode* curveNode = pending.back();
        pending.pop_back();
        int children = curveNode->GetSrcObjectCount<FbxAnimCurveNode>();
        // Children first, in order: pushed in reverse.
        for (int i = children - 1; i >= 0; --i) {
            FbxAnimCurveNode* child = curveNode->GetSrcObject<FbxAnimCurveNode>(i);
            if (child && seen.insert(child).second) pending.push_back(child);
        }
        unsigned channels = curveNode->GetChannelsCount();
        for (unsigned c = 0; c < channels; ++c) {
            FbxTimeSpan span;
            FbxAnimCurve* curve = curveNode->GetCurve(c);
            if (curve && curve->GetTimeInterval(span)) {
                interval.UnionAssignment(span);
                any = true;
            }
        }
    }
    return any;
}

}  // namespace

bool FbxNode::GetAnimationInterval(FbxTimeSpan& interval, FbxAnimStack* stack, int layerIndex) const {
    interval = FbxTimeSpan{FbxTime::Infinite(), FbxTime::MinusInfinite()};
    if (!stack) {
        FbxScene* scene = GetScene();
        stack = scene ? scene->GetSrcObject<FbxAnimStack>(0) : nullptr;
    }
    if (!stack) return false;
    FbxAnimLayer* layer = layerIndex >= 0 ? stack->GetSrcObject<FbxAnimLayer>(layerIndex) : nullptr;
    if (!layer) return false;

    // The objects whose properties count: this node, every node below it
    // (each once, whatever the connections), and their default attributes.
    std::unordered_set<const FbxObject*> owners;  // lookup only
    std::vector<const FbxNode*> pending{this};
    std::unordered_set<const FbxNode*> seen{this};  // lookup only
    while (!pending.empty()) {
        const FbxNode* node = pending.back();
        pending.pop_back();
        owners.insert(node);
        if (const FbxNodeAttribute* attribute = node->GetNodeAttribute()) owners.insert(attribute);
        int children = node->GetChildCount();
        for (int i = 0; i < children; ++i) {
            const FbxNode* child = node->GetChild(i);
            if (child && seen.insert(child).second) pending.push_back(child);
        }
    }

    // The layer's curve nodes that animate a property of those objects. The
    // union of spans does not depend on the order they are met in.
    bool any = false;
    const FbxCriteria properties = FbxCriteria::IsProperty();
    int curveNodes = layer->GetSrcObjectCount<FbxAnimCurveNode>();
    for (int i = 0; i < curveNodes; ++i) {
        FbxAnimCurveNode* curveNode = layer->GetSrcObject<FbxAnimCurveNode>(i);
        if (!curveNode) continue;
        int destinations = curveNode->GetDstPropertyCount(properties);
        for (int d = 0; d < destinations; ++d) {
            FbxObject* owner = curveNode->GetDstProperty(properties, d).GetFbxObject();
            if (owner && owners.count(owner)) {
                any = collectCurveNode(curveNode, interval) || any;
                break;
            }
        }
    }
    return any;
}
