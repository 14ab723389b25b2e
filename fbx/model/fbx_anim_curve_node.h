#pragma once

#include <cstdint>
#include <vector>

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_time.h"

class FbxAnimCurve;

// Connects animation curves to the channels of an animated property. The
// channels are the children of the compound property "d", in order of
// creation ("d|X", "d|Y", "d|Z" for a vector); each holds the value used
// while no curve drives it, and its curves are its sources of class
// FbxAnimCurve (only the first counts). The curve node itself is a source
// of the property it animates and of its layer.
class FbxAnimCurveNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurveNode, FbxObject)

public:
    // What the curve node drives, by the data type of its one destination
    // property; set by the reader.
    enum ETransformKind { eOther = 0, eTranslation = 1, eRotation = 2, eScaling = 3, eQuaternion = 4 };

    // The compound "d".
    FbxProperty GetChannels() const { return FbxProperty(GetPropertyPage(), sChannels); }
    unsigned GetChannelsCount() const;
    // The channel's property, invalid out of range.
    FbxProperty GetChannel(unsigned channel) const;
    // Adds a double channel "d|<name>" holding `value`; false when a
    // channel of that name exists.
    bool AddChannel(const char* name, double value);
    // The channel's own value; `defaultValue` out of range.
    double GetChannelValue(unsigned channel, double defaultValue = 0.0) const;
    bool SetChannelValue(unsigned channel, double value);

    // The index-th curve of a channel, or null.
    FbxAnimCurve* GetCurve(unsigned channel, unsigned index = 0) const;
    int GetCurveCount(unsigned channel) const;
    // Connects a curve to a channel (as its last curve).
    bool ConnectToChannel(FbxAnimCurve* curve, unsigned channel);

    // Fills `values` with one double per channel at `time`: the first
    // curve's value, or the channel's own value when it has no curve. In
    // quaternion mode the three channels are interpolated together as a
    // rotation. Gives the channel count.
    unsigned Evaluate(double* values, FbxTime time);

    // Modes 0 (channels apart) to 4; false and no change for a mode of 5
    // and above.
    bool SetQuaternionMode(unsigned mode);
    unsigned GetQuaternionMode() const { return quaternionMode_; }

    // A composite has child curve nodes as sources and no channels nor
    // curves of its own.
    bool IsComposite() const;

    ETransformKind GetTransformKind() const { return transformKind_; }
    void SetTransformKind(ETransformKind kind) { transformKind_ = kind; }

    // Makes a curve node on `property` in `layer` with one channel per
    // component of the property's type, holding the property's value. Null
    // when the property is not valid, has no owner or no component.
    static FbxAnimCurveNode* CreateTypedCurveNode(const FbxProperty& property, FbxObject* layer);

    // Changes of its connections to properties reach the evaluator at once.
    bool ConnectNotify(const FbxConnectEvent& event) override;

protected:
    void ConstructProperties(bool forceSet) override;
    void Destruct(bool recursive) override;

private:
    // A channel and its first curve, with the last key index found on it.
    struct Channel {
        FbxProperty property;
        FbxAnimCurve* curve;
        int32_t lastIndex;
    };

    static int sChannels;

    // The channels as they stand, read again whenever a curve node or a
    // curve changed its connections or went (see
    // FbxAnimEvalState::CurveNodeGeneration) and whenever this object's
    // property page changed its size, as a new channel makes it.
    std::vector<Channel>& Channels() const;

    mutable std::vector<Channel> channels_;
    mutable uint64_t channelsGeneration_ = ~uint64_t(0);
    mutable int channelsPageSize_ = -1;
    uint16_t quaternionMode_ = 0;
    ETransformKind transformKind_ = eOther;
};
