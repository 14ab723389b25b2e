#include "fbx/model/fbx_anim_curve_node.h"

#include <algorithm>
#include <string>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_eval_state.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_value.h"
#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_quaternion_interpolation.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurveNode)

int FbxAnimCurveNode::sChannels = -1;

FbxAnimCurveNode::FbxAnimCurveNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxAnimCurveNode::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sChannels = FbxProperty::Create(ClassId.GetRootClassProperty(), FbxCompoundDT, "d").GetId();
}

unsigned FbxAnimCurveNode::GetChannelsCount() const {
    unsigned count = 0;
    for (FbxProperty c = GetChannels().GetChild(); c.IsValid(); c = c.GetSibling()) ++count;
    return count;
}

FbxProperty FbxAnimCurveNode::GetChannel(unsigned channel) const {
    FbxProperty c = GetChannels().GetChild();
    for (unsigned i = 0; i < channel && c.IsValid(); ++i) c = c.GetSibling();
    return c;
}

bool FbxAnimCurveNode::AddChannel(const char* name, double value) {
    if (!name || !*name) return false;
    FbxProperty channels = GetChannels();
    if (channels.Find(name).IsValid()) return false;
    FbxProperty channel = FbxProperty::Create(channels, FbxDoubleDT, name);
    if (!channel.IsValid()) return false;
    channel.SetFlag(FbxPropertyFlags::eAnimatable, true);
    channel.Set(value);
    return true;
}

double FbxAnimCurveNode::GetChannelValue(unsigned channel, double defaultValue) const {
    FbxProperty c = GetChannel(channel);
    double value = defaultValue;
    if (c.IsValid()) c.Get(value);
    return value;
}

bool FbxAnimCurveNode::SetChannelValue(unsigned channel, double value) {
    FbxProperty c = GetChannel(channel);
    return c.IsValid() && c.Set(value);
}

FbxAnimCurve* FbxAnimCurveNode::GetCurve(unsigned channel, unsigned index) const {
    FbxProperty c = GetChannel(channel);
    if (!c.IsValid()) return nullptr;
    return static_cast<FbxAnimCurve*>(c.GetSrcObject(FbxCriteria::ObjectType(FbxAnimCurve::ClassId), int(index)));
}

int FbxAnimCurveNode::GetCurveCount(unsigned channel) const {
    FbxProperty c = GetChannel(channel);
    return c.IsValid() ? c.GetSrcObjectCount(FbxCriteria::ObjectType(FbxAnimCurve::ClassId)) : 0;
}

bool FbxAnimCurveNode::ConnectToChannel(FbxAnimCurve* curve, unsigned channel) {
    FbxProperty c = GetChannel(channel);
    return curve && c.IsValid() && c.ConnectSrcObject(curve);
}

unsigned FbxAnimCurveNode::Evaluate(double* values, FbxTime time) {
    // Each channel keeps its last key index, so that times that move forward
    // find their segment in a step.
    unsigned count = 0;
    const FbxCriteria curves = FbxCriteria::ObjectType(FbxAnimCurve::ClassId);
    FbxProperty channel[3];
    for (FbxProperty c = GetChannels().GetChild(); c.IsValid(); c = c.GetSibling(), ++count) {
        if (count >= lastIndices_.size()) lastIndices_.resize(count + 1, 0);
        if (count < 3) channel[count] = c;
        auto* curve = static_cast<FbxAnimCurve*>(c.GetSrcObject(curves, 0));
        if (curve) {
            values[count] = curve->Evaluate(time, &lastIndices_[count]);
        } else {
            double value = 0.0;
            c.Get(value);
            values[count] = value;
        }
    }
    if (quaternionMode_ != 0 && count >= 3) {
        FbxRotationChannel rotation[3];
        for (int i = 0; i < 3; ++i) {
            auto* curve = static_cast<FbxAnimCurve*>(channel[i].GetSrcObject(curves, 0));
            rotation[i].curve = curve ? &curve->GetKFCurve() : nullptr;
            rotation[i].value = 0.0;
            if (!curve) channel[i].Get(rotation[i].value);
        }
        double angles[3];
        if (EvaluateQuaternionInterpolation(quaternionMode_, rotation, time, angles))
            std::copy(angles, angles + 3, values);
    }
    return count;
}

bool FbxAnimCurveNode::SetQuaternionMode(unsigned mode) {
    if (mode >= 5) return false;
    quaternionMode_ = static_cast<uint16_t>(mode);
    return true;
}

bool FbxAnimCurveNode::IsComposite() const {
    return GetSrcObjectCount<FbxAnimCurveNode>() > 0 && GetSrcObjectCount<FbxAnimCurve>() == 0 &&
           GetChannelsCount() == 0;
}

FbxAnimCurveNode* FbxAnimCurveNode::CreateTypedCurveNode(const FbxProperty& property, FbxObject* layer) {
    FbxObject* owner = property.GetFbxObject();
    if (!property.IsValid() || !owner) return nullptr;
    double values[FbxAnimValueMaxComponents];
    int count = FbxReadAnimValue(property, values);
    if (count == 0) return nullptr;
    FbxAnimCurveNode* node = Create(owner->GetFbxManager(), property.GetName());
    if (!node) return nullptr;
    static const char* const kAxes[] = {"X", "Y", "Z", "W"};
    for (int i = 0; i < count; ++i) {
        std::string name = count == 1 ? std::string(property.GetName()) : count <= 4 ? kAxes[i] : std::to_string(i);
        node->AddChannel(name.c_str(), values[i]);
    }
    if (layer) layer->ConnectSrcObject(node);
    const_cast<FbxProperty&>(property).ConnectSrcObject(node);
    return node;
}

bool FbxAnimCurveNode::ConnectNotify(const FbxConnectEvent& event) {
    if (event.type == FbxConnectEvent::eConnected || event.type == FbxConnectEvent::eDisconnected) {
        FbxAnimEvalState::BumpCurveNodeGeneration();
        // The other end, when it is a property of an object: its cached
        // curve nodes are stale now.
        FbxConnectionPoint* other = event.direction == FbxConnectEvent::eDstSide ? event.dst : event.src;
        if (other && !other->IsObjectPoint() && other->GetOwnerObject()) {
            if (FbxAnimEvaluator* evaluator = GetFbxManager()->FindAnimationEvaluator())
                evaluator->InvalidateProperty(FbxProperty(other->GetPage(), other->GetId()));
        }
    }
    return ParentClass::ConnectNotify(event);
}

void FbxAnimCurveNode::Destruct(bool recursive) {
    // Evaluation states may hold this curve node: they drop what they hold
    // at their next lookup.
    FbxAnimEvalState::BumpCurveNodeGeneration();
    ParentClass::Destruct(recursive);
}
