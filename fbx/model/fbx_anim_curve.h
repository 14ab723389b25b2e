#pragma once

#include "fbx/model/fbx_kfcurve.h"
#include "fbx/model/fbx_object.h"

// A function of time given by keys: the document object around one
// KFCurve. It is a source of a channel property of a curve node. The
// operations forward to the curve; GetKFCurve reaches the rest.
class FbxAnimCurve : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurve, FbxObject)

public:
    KFCurve& GetKFCurve() { return curve_; }
    const KFCurve& GetKFCurve() const { return curve_; }

    int KeyGetCount() const { return curve_.KeyGetCount(); }
    FbxTime KeyGetTime(int index) const { return FbxTime(curve_.KeyGetTime(index)); }
    float KeyGetValue(int index) const { return curve_.KeyGetValue(index); }
    // The value at a time; `lastIndex` is an optional in-out search start.
    float Evaluate(FbxTime time, int* lastIndex = nullptr) const { return curve_.Evaluate(time.Get(), lastIndex); }
    // The value at a fractional key index.
    float EvaluateIndex(double index) const { return curve_.EvaluateIndex(index); }
    // The first and last key times; false, with `span` unchanged, for fewer
    // than 2 keys.
    bool GetTimeInterval(FbxTimeSpan& span) const { return curve_.GetTimeInterval(span); }
    // Slopes in value per second.
    double KeyGetLeftDerivative(int index) const { return curve_.KeyGetLeftDerivative(index); }
    double KeyGetRightDerivative(int index) const { return curve_.KeyGetRightDerivative(index); }

    float GetDefaultValue() const { return curve_.GetDefaultValue(); }
    void SetDefaultValue(float value) { curve_.SetDefaultValue(value); }
    int KeyAdd(FbxTime time, float value, uint32_t flags = KFCurve::eInterpolationCubic | KFCurve::eTangentAuto) {
        return curve_.KeyAdd(time.Get(), value, flags);
    }
    void KeyModifyBegin() { curve_.KeyModifyBegin(); }
    void KeyModifyEnd() { curve_.KeyModifyEnd(); }
    void KeyMultValue(int index, float factor) { curve_.KeyMultValue(index, factor); }
    void KeyMultTangent(int index, float factor) { curve_.KeyMultTangent(index, factor); }

    // Takes over the other curve's keys too.
    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;
    // Curve nodes that hold this curve let go of it.
    void Destruct(bool recursive) override;

private:
    KFCurve curve_;
};
