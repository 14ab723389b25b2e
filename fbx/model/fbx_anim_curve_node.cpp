#include "fbx/model/fbx_anim_curve_node.h"

#include <algorithm>
#include <string>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_eval_state.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_value.h"
#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_property_page.h"
#include "fbx/model/fbx_quaternion_interpolation.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurveNode)

int FbxAnimCurveNode::sChannels = -1;

FbxAnimCurveNode::FbxAnimCurveNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxAnimCurveNode::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sChannels = FbxProperty::Create(ClassId.GetRootClassProperty(), FbxCompoundDT, "d").GetId();
}

std::vector<FbxAnimCurveNode::Channel>& FbxAnimCurveNode::Channels() const {
    uint64_t generation = FbxAnimEvalState::CurveNodeGeneration();
    int pageSize = GetPropertyPage() ? GetPropertyPage()->EntryCount() : 0;
    if (generation == channelsGeneration_ && pageSize == channelsPageSize_) return channels_;
    const FbxCriteria curves = FbxCriteria::ObjectType(FbxAnimCurve::ClassId);
    std::vector<Channel> channels;
    for (FbxProperty c = GetChannels().GetChild(); c.IsValid(); c = c.GetSibling()) {
        // A channel keeps its search start when it stays.
        size_t i = channels.size();
        int32_t lastIndex = i < channels_.size() && channels_[i].property == c ? channels_[i].lastIndex : 0;
        channels.push_back({c, static_cast<FbxAnimCurve*>(c.GetSrcObject(curves, 0)), lastIndex});
    }
    channels_.swap(channels);
    channelsGeneration_ = generation;
    channelsPageSize_ = pageSize;
    return channels_;
}

unsigned FbxAnimCurveNode::GetChannelsCount() const { return static_cast<unsigned>(Channels().size()); }

FbxProperty FbxAnimCurveNode::GetChannel(unsigned channel) const {
    const std::vector<Channel>& channels = Channels();
    return channel < channels.size() ? channels[channel].property : FbxProperty();
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
    const std::vector<Channel>& channels = Channels();
    if (channel >= channels.size()) return nullptr;
    if (index == 0) return channels[channel].curve;
    FbxCriteria curves = FbxCriteria::ObjectType(FbxAnimCurve::ClassId);
    return static_cast<FbxAnimCurve*>(channels[channel].property.GetSrcObject(curves, int(index)));
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
    std::vector<Channel>& channels = Channels();
    unsigned count = static_cast<unsigned>(channels.size());
    for (unsigned i = 0; i < count; ++i) {
        Channel& c = channels[i];
        if (c.curve) {
            values[i] = c.curve->Evaluate(time, &c.lastIndex);
        } else {
            double value = 0.0;
            c.property.Get(value);
            values[i] = value;
        }
    }
    if (quaternionMode_ != 0 && count >= 3) {
        FbxRotationChannel rotation[3];
        for (int i = 0; i < 3; ++i) {
            rotation[i].curve = channels[i].curve ? &channels[i].curve->GetKFCurve() : nullptr;
            rotation[i].value = values[i];
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
