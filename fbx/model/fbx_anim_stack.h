#pragma once

#include <memory>

#include "fbx/model/fbx_collection.h"
#include "fbx/model/fbx_time.h"

class FbxAnimEvalState;
class FbxAnimLayer;
struct FbxTakeInfo;

// A take: a collection of animation layers (its sources of class
// FbxAnimLayer, in order) with its time spans. It owns the evaluation state
// of its animation. The first stack made while the manager's evaluator has
// no context becomes the context.
class FbxAnimStack : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimStack, FbxCollection)

public:
    // "Description" (string), "LocalStart", "LocalStop", "ReferenceStart"
    // and "ReferenceStop" (time, 0).
    FbxPropertyT<FbxString> Description() const { return FbxProperty(GetPropertyPage(), sIds[eDescription]); }
    FbxPropertyT<FbxTime> LocalStart() const { return FbxProperty(GetPropertyPage(), sIds[eLocalStart]); }
    FbxPropertyT<FbxTime> LocalStop() const { return FbxProperty(GetPropertyPage(), sIds[eLocalStop]); }
    FbxPropertyT<FbxTime> ReferenceStart() const { return FbxProperty(GetPropertyPage(), sIds[eReferenceStart]); }
    FbxPropertyT<FbxTime> ReferenceStop() const { return FbxProperty(GetPropertyPage(), sIds[eReferenceStop]); }

    FbxTimeSpan GetLocalTimeSpan() const { return {LocalStart().Get(), LocalStop().Get()}; }
    void SetLocalTimeSpan(const FbxTimeSpan& span);
    FbxTimeSpan GetReferenceTimeSpan() const { return {ReferenceStart().Get(), ReferenceStop().Get()}; }
    void SetReferenceTimeSpan(const FbxTimeSpan& span);
    // Takes the description and both spans of a take; without one, all go
    // back to their defaults.
    void Reset(const FbxTakeInfo* takeInfo = nullptr);

    // The layers: sources of class FbxAnimLayer, in order.
    int GetLayerCount() const;
    FbxAnimLayer* GetLayer(int index) const;

    FbxAnimEvalState& GetEvalState() { return *state_; }

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;
    void Destruct(bool recursive) override;

private:
    enum EId { eDescription, eLocalStart, eLocalStop, eReferenceStart, eReferenceStop, eIdCount };
    static int sIds[eIdCount];

    std::unique_ptr<FbxAnimEvalState> state_;
};
