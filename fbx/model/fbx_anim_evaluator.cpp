#include "fbx/model/fbx_anim_evaluator.h"

#include <algorithm>
#include <cmath>

#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_anim_value.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_rotation.h"

KIVA_FBX_OBJECT_IMPLEMENT_ABSTRACT(FbxAnimEvaluator)
KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimEvalClassic)

FbxAnimEvaluator::FbxAnimEvaluator(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
FbxAnimEvalClassic::FbxAnimEvalClassic(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

FbxAnimEvaluator* FbxManager::GetAnimationEvaluator() {
    if (!animationEvaluator_) animationEvaluator_ = FbxAnimEvalClassic::Create(this, "DefaultEvaluator");
    return animationEvaluator_;
}

FbxAnimCurveNode* FbxProperty::GetCurveNode(FbxAnimLayer* layer, bool create) const {
    FbxObject* owner = GetFbxObject();
    if (!IsValid() || !owner || !layer) return nullptr;
    FbxAnimEvaluator* evaluator = owner->GetFbxManager()->GetAnimationEvaluator();
    return evaluator ? evaluator->GetCurveNode(*this, layer, create) : nullptr;
}

// State and caches ------------------------------------------------------------

namespace {

FbxAnimEvalState::PropertyKey keyOf(const FbxProperty& property) {
    FbxObject* owner = property.GetFbxObject();
    return {owner ? owner->GetUniqueID() : 0, property.GetId()};
}

}  // namespace

void FbxAnimEvaluator::Destruct(bool recursive) {
    FbxManager* manager = GetFbxManager();
    if (manager && manager->animationEvaluator_ == this) manager->animationEvaluator_ = nullptr;
    context_ = nullptr;
    defaultState_.reset();
    ParentClass::Destruct(recursive);
}

void FbxAnimEvaluator::SetContext(FbxAnimStack* stack) {
    if (stack == context_) return;
    if (defaultState_) {
        if (stack)
            defaultState_.reset();
        else
            defaultState_->Reset();
    }
    context_ = stack;
    if (stack) {
        FbxAnimEvalState& state = stack->GetEvalState();
        state.SetTime(FbxTime::Infinite());
        state.InvalidateAll();
    }
}

FbxAnimEvalState& FbxAnimEvaluator::GetState() {
    if (context_) return context_->GetEvalState();
    if (!defaultState_) defaultState_ = std::make_unique<FbxAnimEvalState>();
    return *defaultState_;
}

void FbxAnimEvaluator::InvalidateNode(const FbxNode* node) {
    if (!node) return;
    if (NodeEvalRecord* record = GetState().FindNodeRecord(node->GetUniqueID())) record->valid = false;
}

void FbxAnimEvaluator::InvalidateProperty(const FbxProperty& property) {
    if (!property.IsValid()) return;
    FbxAnimEvalState& state = GetState();
    FbxAnimEvalState::PropertyKey key = keyOf(property);
    if (PropertyEvalRecord* record = state.FindPropertyRecord(key)) record->valid = false;
    state.ForgetCurveNodes(key);
}

FbxAnimCurveNode* FbxAnimEvaluator::GetCurveNode(const FbxProperty& property, FbxAnimLayer* layer, bool create) {
    if (!property.IsValid() || !layer || !property.GetFbxObject()) return nullptr;
    FbxAnimEvalState& state = GetState();
    FbxAnimEvalState::PropertyKey key = keyOf(property);
    if (FbxAnimCurveNode* cached = state.FindCurveNode(key, layer->GetUniqueID())) return cached;
    const FbxCriteria curveNodes = FbxCriteria::ObjectType(FbxAnimCurveNode::ClassId);
    int count = property.GetSrcObjectCount(curveNodes);
    for (int i = 0; i < count; ++i) {
        auto* curveNode = static_cast<FbxAnimCurveNode*>(property.GetSrcObject(curveNodes, i));
        // The curve node's destinations are few; the layer's sources many.
        if (curveNode && curveNode->IsConnectedDstObject(layer)) {
            state.StoreCurveNode(key, layer->GetUniqueID(), curveNode);
            return curveNode;
        }
    }
    // A miss is not stored, so that a curve node connected later is found.
    return create ? FbxAnimCurveNode::CreateTypedCurveNode(property, layer) : nullptr;
}

// Node records ------------------------------------------------------------------

NodeEvalRecord& FbxAnimEvaluator::GetNodeRecord(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                bool applyTarget, bool forceEval) {
    if (!node) {
        empty_ = NodeEvalRecord();
        return empty_;
    }
    FbxAnimEvalState& state = GetState();
    state.SetTime(time);
    NodeEvalRecord& record = state.NodeRecord(node->GetUniqueID());
    if (record.valid && !forceEval) return record;

    // The nodes from this one up to the first whose record is valid, then
    // computed from the top down: a walk, not a recursion, since a file can
    // chain nodes very deep. A node met twice closes a cycle of parents; the
    // walk ends there and the topmost node counts as having no parent.
    std::vector<std::pair<FbxNode*, NodeEvalRecord*>> chain;
    chain.swap(chain_);
    chain.clear();
    record.pending = true;
    chain.emplace_back(node, &record);
    for (FbxNode* parent = node->GetParent(); parent; parent = parent->GetParent()) {
        NodeEvalRecord& above = state.NodeRecord(parent->GetUniqueID());
        if (above.valid || above.pending) break;
        above.pending = true;
        chain.emplace_back(parent, &above);
    }
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        EvaluateNodeTransform(*it->second, *it->first, time, context_, pivotSet, applyTarget);
        it->second->pending = false;
    }
    chain.clear();
    chain_.swap(chain);
    return record;
}

NodeEvalRecord* FbxAnimEvaluator::ParentRecord(const FbxNode& node) {
    FbxNode* parent = node.GetParent();
    if (!parent) return nullptr;
    NodeEvalRecord* record = GetState().FindNodeRecord(parent->GetUniqueID());
    return record && record->valid ? record : nullptr;
}

FbxAMatrix& FbxAnimEvaluator::GetNodeGlobalTransform(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                     bool applyTarget, bool forceEval) {
    return GetNodeRecord(node, time, pivotSet, applyTarget, forceEval).globalMatrix;
}

FbxAMatrix& FbxAnimEvaluator::GetNodeLocalTransform(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                    bool applyTarget, bool forceEval) {
    return GetNodeRecord(node, time, pivotSet, applyTarget, forceEval).localMatrix;
}

FbxVector4& FbxAnimEvaluator::GetNodeLocalTranslation(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                      bool applyTarget, bool forceEval) {
    return GetNodeRecord(node, time, pivotSet, applyTarget, forceEval).translation;
}

FbxVector4& FbxAnimEvaluator::GetNodeLocalRotation(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                   bool applyTarget, bool forceEval) {
    return GetNodeRecord(node, time, pivotSet, applyTarget, forceEval).rotation;
}

FbxVector4& FbxAnimEvaluator::GetNodeLocalScaling(FbxNode* node, FbxTime time, FbxNode::EPivotSet pivotSet,
                                                  bool applyTarget, bool forceEval) {
    return GetNodeRecord(node, time, pivotSet, applyTarget, forceEval).scaling;
}

PropertyEvalRecord& FbxAnimEvaluator::GetPropertyValue(const FbxProperty& property, FbxTime time, bool forceEval) {
    static thread_local PropertyEvalRecord invalid;
    if (!property.IsValid() || !property.GetFbxObject()) {
        invalid = PropertyEvalRecord();
        return invalid;
    }
    FbxAnimEvalState& state = GetState();
    state.SetTime(time);
    PropertyEvalRecord& record = state.PropertyRecord(keyOf(property));
    if (!record.valid || forceEval) EvaluatePropertyValue(record, property, time, context_);
    return record;
}

// The classic evaluation ----------------------------------------------------------

namespace {

// Raises each axis to its minimum and lowers it to its maximum, where the
// limit has them; a maximum below its minimum wins.
FbxVector4 applyLimits(const LimitRecord& limit, FbxVector4 v) {
    if ((limit.mask & LimitRecord::eAxisBits) == 0) return v;
    for (int axis = 0; axis < 3; ++axis) {
        if (limit.GetMinActive(axis) && v[axis] < limit.min[axis]) v[axis] = limit.min[axis];
        if (limit.GetMaxActive(axis) && v[axis] > limit.max[axis]) v[axis] = limit.max[axis];
    }
    return v;
}

// The rotation order and the pre- and post-rotation count only when
// "RotationActive" is set (and, with a rotation space for limits only, only
// for the limits).
bool rotationSpaceApplies(const TransformRecord& t, bool forLimit) {
    return t.rotationLimits.GetActive() && (!t.rotationSpaceForLimitOnly || forLimit);
}

FbxAMatrix computeRotationMatrix(const TransformRecord& t, const FbxVector4& e, bool forLimit) {
    if (!rotationSpaceApplies(t, forLimit)) return RotationXYZ(e);
    const RotationSpaceRecord& space = t.rotationSpace;
    FbxAMatrix m = RotationFromAngles(e, space.rotationOrder);
    if (space.HasPreMatrix()) m = space.preMatrix * m;
    if (space.HasPostMatrix()) m = m * space.postMatrix.Inverse();
    return m;
}

FbxVector4 computeRotationAngles(const TransformRecord& t, const FbxAMatrix& m, bool forLimit) {
    if (!rotationSpaceApplies(t, forLimit)) return AnglesXYZ(m);
    const RotationSpaceRecord& space = t.rotationSpace;
    FbxAMatrix r = m;
    if (space.HasPreMatrix()) r = space.preMatrix.Inverse() * r;
    if (space.HasPostMatrix()) r = r * space.postMatrix;
    return AnglesFromRotation(r, space.rotationOrder);
}

// What pivots and offsets add to the local translation.
FbxVector4 computeTranslationOffset(const TransformRecord& t, const FbxAMatrix& rotation, const FbxAMatrix& scale) {
    FbxVector4 o;
    if (t.HasScalingPivot())
        for (int i = 0; i < 3; ++i) o[i] = (1.0 - scale[i][i]) * t.scalingPivot[i];
    if (t.HasScalingOffset()) o = o + t.scalingOffset;
    if (t.HasRotationPivot()) {
        o = rotation.MultT(o - t.rotationPivot) + t.rotationPivot;
    } else if (t.HasScalingOffset() || t.HasScalingPivot()) {
        o = rotation.MultT(o);
    }
    if (t.HasRotationOffset()) o = o + t.rotationOffset;
    return o;
}

void blendPlain(double* dest, const double* src, int count, int mode, double w) {
    for (int i = 0; i < count; ++i) {
        switch (mode) {
        case FbxAnimLayer::eBlendAdditive:
            dest[i] += w * src[i];
            break;
        case FbxAnimLayer::eBlendOverride:
            dest[i] = w * src[i];
            break;
        case FbxAnimLayer::eBlendOverridePassthrough:
            dest[i] = w * src[i] + (1.0 - w) * dest[i];
            break;
        default:
            break;
        }
    }
}

// Rotations of a layer blend as quaternions. The three values go to the
// order's axes in their stored sequence, both ways.
void blendRotation(double* dest, const double* src, int mode, double w, int order) {
    FbxQuaternion qd = QuaternionFromMatrix(OrderedRotation(dest[0], dest[1], dest[2], order));
    FbxQuaternion qs = QuaternionFromMatrix(OrderedRotation(src[0], src[1], src[2], order));
    switch (mode) {
    case FbxAnimLayer::eBlendAdditive:
        qd = qd * QuaternionPower(qs, w);
        break;
    case FbxAnimLayer::eBlendOverride:
        qd = QuaternionPower(qs, w);
        break;
    case FbxAnimLayer::eBlendOverridePassthrough:
        qd = QuaternionSlerp(qd, qs, w);
        break;
    default:
        return;
    }
    FbxVector4 angles = OrderedAngles(MatrixFromQuaternion(qd), order);
    for (int i = 0; i < 3; ++i) dest[i] = angles[i];
}

void blendScalingMultiply(double* dest, const double* src, int count, int mode, double w) {
    for (int i = 0; i < count; ++i) {
        double s = std::pow(std::fabs(src[i]), w);
        switch (mode) {
        case FbxAnimLayer::eBlendAdditive:
            dest[i] = s * std::fabs(dest[i]);
            break;
        case FbxAnimLayer::eBlendOverride:
            dest[i] = s;
            break;
        case FbxAnimLayer::eBlendOverridePassthrough:
            dest[i] = s * std::pow(std::fabs(dest[i]), 1.0 - w);
            break;
        default:
            break;
        }
    }
}

}  // namespace

void FbxAnimEvalClassic::EvaluateNodeTransform(NodeEvalRecord& record, FbxNode& node, FbxTime time, FbxAnimStack* stack,
                                               FbxNode::EPivotSet pivotSet, bool) {
    if (pivotSet == FbxNode::eDestinationPivot) node.LoadPivotSet(FbxNode::eDestinationPivot);
    ComputeTRSLocal(record, node, time, stack);
    node.GetTransform().inheritType = static_cast<uint32_t>(node.InheritType().Get());
    ComputeGlobalTransform(record, node);
    // The local matrix comes from the two globals, so that it holds pivots,
    // offsets and inherited scale.
    NodeEvalRecord* parent = ParentRecord(node);
    record.localMatrix = parent ? parent->globalMatrix.Inverse() * record.globalMatrix : record.globalMatrix;
    if (pivotSet == FbxNode::eDestinationPivot) node.LoadPivotSet(FbxNode::eSourcePivot);
    record.valid = true;
}

void FbxAnimEvalClassic::ComputeTRSLocal(NodeEvalRecord& record, FbxNode& node, FbxTime time, FbxAnimStack* stack) {
    const FbxProperty properties[3] = {node.LclTranslation(), node.LclRotation(), node.LclScaling()};
    double trs[3][3];
    for (int k = 0; k < 3; ++k) {
        FbxDouble3 v = properties[k].Get<FbxDouble3>();
        for (int i = 0; i < 3; ++i) trs[k][i] = v[i];
    }

    if (stack && !time.IsInfinite()) {
        int layerCount = stack->GetSrcObjectCount<FbxAnimLayer>();
        // A property driven in any unmuted layer starts from zero rather
        // than from its static value.
        bool found[3] = {false, false, false};
        for (int l = 0; l < layerCount && !(found[0] && found[1] && found[2]); ++l) {
            FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
            if (!layer || layer->Mute().Get()) continue;
            for (int k = 0; k < 3; ++k)
                if (!found[k] && GetCurveNode(properties[k], layer, false)) found[k] = true;
        }
        for (int k = 0; k < 3; ++k)
            if (found[k]) std::fill(trs[k], trs[k] + 3, 0.0);
        // Layer 0 gives its values directly, the layers above blend in. The
        // test is on the index: a muted layer 0 leaves the others blending
        // into zero.
        for (int l = 0; l < layerCount; ++l) {
            FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
            if (!layer || layer->Mute().Get()) continue;
            for (int k = 0; k < 3; ++k) {
                if (l > 0) {
                    BlendCurveNode(trs[k], 3, properties[k], &node, time, layer, k);
                    continue;
                }
                FbxAnimCurveNode* curveNode = GetCurveNode(properties[k], layer, false);
                if (!curveNode) continue;
                unsigned count = curveNode->GetChannelsCount();
                if (curveValues_.size() < count) curveValues_.resize(count);
                count = curveNode->Evaluate(curveValues_.data(), time);
                std::copy(curveValues_.begin(), curveValues_.begin() + std::min(count, 3u), trs[k]);
            }
        }
    }

    FbxVector4 t(trs[0][0], trs[0][1], trs[0][2]), r(trs[1][0], trs[1][1], trs[1][2]),
        s(trs[2][0], trs[2][1], trs[2][2]);
    const TransformRecord& transform = node.GetTransform();
    if (node.TranslationActive().Get()) t = applyLimits(transform.translationLimits, t);
    if (node.RotationActive().Get()) {
        if (node.GetPivotSet(FbxNode::eSourcePivot).rotationSpaceForLimitOnly) {
            FbxAMatrix m = computeRotationMatrix(transform, r, false);
            r = computeRotationAngles(transform, m, true);
            r = applyLimits(transform.rotationLimits, r);
            m = computeRotationMatrix(transform, r, true);
            r = computeRotationAngles(transform, m, false);
        } else {
            r = applyLimits(transform.rotationLimits, r);
        }
    }
    if (node.ScalingActive().Get()) s = applyLimits(transform.scalingLimits, s);
    record.translation = FbxVector4(t[0], t[1], t[2], 1.0);
    record.rotation = FbxVector4(r[0], r[1], r[2], 1.0);
    record.scaling = FbxVector4(s[0], s[1], s[2], 1.0);
}

void FbxAnimEvalClassic::BlendCurveNode(double* dest, int count, const FbxProperty& property, const FbxNode* node,
                                        FbxTime time, FbxAnimLayer* layer, int kind) {
    FbxAnimCurveNode* curveNode = GetCurveNode(property, layer, false);
    if (!curveNode) return;
    unsigned channels = curveNode->GetChannelsCount();
    if (channels == 0) return;

    double w = layer->Weight().Get();
    if (FbxAnimCurveNode* weightNode = GetCurveNode(layer->Weight(), layer, false)) {
        unsigned weightChannels = weightNode->GetChannelsCount();
        if (weightChannels > 0) {
            if (curveValues_.size() < weightChannels) curveValues_.resize(weightChannels);
            weightNode->Evaluate(curveValues_.data(), time);
            w = curveValues_[0];
        }
    }
    w /= 100.0;

    if (curveValues_.size() < std::max(channels, 3u)) curveValues_.resize(std::max(channels, 3u));
    std::fill(curveValues_.begin(), curveValues_.end(), 0.0);
    channels = curveNode->Evaluate(curveValues_.data(), time);
    const double* src = curveValues_.data();
    int n = std::min(count, static_cast<int>(channels));

    int mode = layer->BlendMode().Get();
    if (layer->GetBlendModeBypass(property.GetPropertyDataType().GetType())) mode = FbxAnimLayer::eBlendOverride;
    if (kind == 1 && layer->RotationAccumulationMode().Get() == FbxAnimLayer::eRotationByLayer) {
        if (count >= 3) blendRotation(dest, src, mode, w, node ? node->GetTransform().rotationSpace.rotationOrder : 0);
    } else if (kind == 2 && layer->ScaleAccumulationMode().Get() == FbxAnimLayer::eScaleMultiply) {
        blendScalingMultiply(dest, src, n, mode, w);
    } else {
        blendPlain(dest, src, n, mode, w);
    }
}

void FbxAnimEvalClassic::ComputeGlobalTransform(NodeEvalRecord& record, FbxNode& node) {
    const TransformRecord& transform = node.GetTransform();
    FbxAMatrix lr = computeRotationMatrix(transform, record.rotation, false);
    FbxAMatrix ls;
    ls.SetS(record.scaling);
    FbxVector4 t = record.translation + computeTranslationOffset(transform, lr, ls);
    t[3] = 1.0;

    FbxAMatrix gr, gs;
    FbxVector4 gt;
    if (NodeEvalRecord* parent = ParentRecord(node)) {
        const FbxAMatrix& pg = parent->globalMatrix;
        FbxAMatrix pr;
        pr.SetR(pg.GetR());
        gr = pr * lr;
        FbxAMatrix ps = pr.Inverse() * pg;
        ps.SetT(FbxVector4(0.0, 0.0, 0.0));
        switch (transform.inheritType) {
        case FbxNode::eInheritRrSs:
            gs = ps * ls;
            break;
        case FbxNode::eInheritRSrs:
            gs = lr.Inverse() * ps * lr * ls;
            break;
        case FbxNode::eInheritRrs: {
            FbxAMatrix d;
            d.SetS(parent->scaling);
            gs = lr.Inverse() * (ps * d.Inverse()) * lr * ls;
            break;
        }
        default:
            return;  // no inheritance this evaluator knows: the matrix stays
        }
        gt = pg.MultT(t);
    } else {
        gr = lr;
        gs = ls;
        gt = t;
    }
    FbxAMatrix moved;
    moved.SetT(gt);
    record.globalMatrix = moved * gr * gs;
}

void FbxAnimEvalClassic::EvaluatePropertyValue(PropertyEvalRecord& record, const FbxProperty& property, FbxTime time,
                                               FbxAnimStack* stack) {
    int count = FbxAnimComponentCount(property.GetPropertyDataType().GetType());
    if (count == 0) return;
    if (propertyValues_.size() < static_cast<size_t>(FbxAnimValueMaxComponents))
        propertyValues_.resize(FbxAnimValueMaxComponents);
    FbxReadAnimValue(property, propertyValues_.data());
    if (stack && !time.IsInfinite()) {
        int layerCount = stack->GetSrcObjectCount<FbxAnimLayer>();
        bool animated = false;
        for (int l = 0; l < layerCount && !animated; ++l) {
            FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
            animated = layer && !layer->Mute().Get() && GetCurveNode(property, layer, false);
        }
        // Unlike the node path, layer 0 blends too.
        if (animated) {
            std::fill(propertyValues_.begin(), propertyValues_.begin() + count, 0.0);
            for (int l = 0; l < layerCount; ++l) {
                FbxAnimLayer* layer = stack->GetSrcObject<FbxAnimLayer>(l);
                if (layer && !layer->Mute().Get())
                    BlendCurveNode(propertyValues_.data(), count, property, nullptr, time, layer, 0);
            }
        }
    }
    record.count = count;
    std::copy(propertyValues_.begin(), propertyValues_.begin() + count, record.values);
    record.valid = true;
}
