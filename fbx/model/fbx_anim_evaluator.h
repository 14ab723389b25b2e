#pragma once

#include <memory>
#include <vector>

#include "fbx/model/fbx_anim_eval_state.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_time.h"

class FbxAnimCurveNode;
class FbxAnimLayer;
class FbxAnimStack;

// Turns nodes' transform properties, and the curves on them, into matrices
// at a time, and caches the results in the evaluation state of the current
// stack (the context), or in its own state when there is none. At infinite
// time, or with no context, curves are not read: the result is the static
// transform.
//
// The references handed out stay good until the node's record is computed
// again, which happens at the next change of time: callers copy the matrix.
// One evaluator serves one thread at a time.
class FbxAnimEvaluator : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimEvaluator, FbxObject)

public:
    // Makes `stack` (or none) the context. The same stack again keeps every
    // cached record; another one starts from a clean state.
    void SetContext(FbxAnimStack* stack);
    FbxAnimStack* GetContext() const { return context_; }

    // The node's global matrix (local matrix, local values) at a time. A
    // record that is valid at that time is reused unless `forceEval`, which
    // recomputes that node alone. `applyTarget` has no effect here.
    FbxAMatrix& GetNodeGlobalTransform(FbxNode* node, FbxTime time = FbxTime::Infinite(),
                                       FbxNode::EPivotSet pivotSet = FbxNode::eSourcePivot, bool applyTarget = false,
                                       bool forceEval = false);
    FbxAMatrix& GetNodeLocalTransform(FbxNode* node, FbxTime time = FbxTime::Infinite(),
                                      FbxNode::EPivotSet pivotSet = FbxNode::eSourcePivot, bool applyTarget = false,
                                      bool forceEval = false);
    FbxVector4& GetNodeLocalTranslation(FbxNode* node, FbxTime time = FbxTime::Infinite(),
                                        FbxNode::EPivotSet pivotSet = FbxNode::eSourcePivot, bool applyTarget = false,
                                        bool forceEval = false);
    FbxVector4& GetNodeLocalRotation(FbxNode* node, FbxTime time = FbxTime::Infinite(),
                                     FbxNode::EPivotSet pivotSet = FbxNode::eSourcePivot, bool applyTarget = false,
                                     bool forceEval = false);
    FbxVector4& GetNodeLocalScaling(FbxNode* node, FbxTime time = FbxTime::Infinite(),
                                    FbxNode::EPivotSet pivotSet = FbxNode::eSourcePivot, bool applyTarget = false,
                                    bool forceEval = false);
    // The value of any property at a time, one double per component (1, 2,
    // 3, 4 or 16 components; other properties give an invalid record).
    PropertyEvalRecord& GetPropertyValue(const FbxProperty& property, FbxTime time, bool forceEval = false);

    // Forget the cached result of a node or of a property (and which curve
    // nodes drive the property) in the current state.
    void InvalidateNode(const FbxNode* node);
    void InvalidateProperty(const FbxProperty& property);

    // The state in use: the context's, else the evaluator's own.
    FbxAnimEvalState& GetState();
    // The curve node that drives `property` in `layer`, through the state's
    // cache; with `create`, one is made when missing.
    FbxAnimCurveNode* GetCurveNode(const FbxProperty& property, FbxAnimLayer* layer, bool create);

protected:
    // Computes a node's record. The records of the nodes above it are valid
    // when this is called.
    virtual void EvaluateNodeTransform(NodeEvalRecord& record, FbxNode& node, FbxTime time, FbxAnimStack* stack,
                                       FbxNode::EPivotSet pivotSet, bool applyTarget) = 0;
    virtual void EvaluatePropertyValue(PropertyEvalRecord& record, const FbxProperty& property, FbxTime time,
                                       FbxAnimStack* stack) = 0;
    // The valid record of a node's parent in the current state, or null for
    // a node without parent (or one whose parents form a cycle).
    NodeEvalRecord* ParentRecord(const FbxNode& node);
    void Destruct(bool recursive) override;

private:
    NodeEvalRecord& GetNodeRecord(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet, bool applyTarget,
                                  bool forceEval);

    std::unique_ptr<FbxAnimEvalState> defaultState_;
    FbxAnimStack* context_ = nullptr;
    // Nodes waiting for their parents during one GetNodeRecord.
    std::vector<std::pair<FbxNode*, NodeEvalRecord*>> chain_;
    NodeEvalRecord empty_;
};

// The evaluator of this system: layers blend by their modes and weights,
// then limits, pivots, pre- and post-rotation, rotation order and inherit
// type make the matrices.
class FbxAnimEvalClassic : public FbxAnimEvaluator {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimEvalClassic, FbxAnimEvaluator)

protected:
    void EvaluateNodeTransform(NodeEvalRecord& record, FbxNode& node, FbxTime time, FbxAnimStack* stack,
                               FbxNode::EPivotSet pivotSet, bool applyTarget) override;
    void EvaluatePropertyValue(PropertyEvalRecord& record, const FbxProperty& property, FbxTime time,
                               FbxAnimStack* stack) override;

private:
    void ComputeTRSLocal(NodeEvalRecord& record, FbxNode& node, FbxTime time, FbxAnimStack* stack);
    void ComputeGlobalTransform(NodeEvalRecord& record, FbxNode& node);
    // Blends the curve node of `property` in `layer` into `dest` (3
    // elements for the node path, `count` in general). Kind 0 plain, 1
    // rotation, 2 scaling.
    void BlendCurveNode(double* dest, int count, const FbxProperty& property, const FbxNode* node, FbxTime time,
                        FbxAnimLayer* layer, int kind);

    std::vector<double> propertyValues_;
    std::vector<double> curveValues_;
};
