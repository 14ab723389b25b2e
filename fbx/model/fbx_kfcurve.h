#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "fbx/model/fbx_time.h"

// One animation curve: float values over time, given by keys in time order,
// with the rules that extend it before the first and after the last key.
//
// Keys live in blocks of kKeysPerBlock, so that a key never moves when the
// curve grows, and each key points at a KeyAttribute (interpolation, tangent
// mode and tangent data) that a run of like keys shares. Attributes belong to
// the curve; a key edit that would change a shared attribute gives the key a
// copy of its own.
//
// Evaluation keeps a key index between calls (the caller's, or the curve's
// own) so that times that move forward cost a step or two. Nothing here
// allocates while evaluating.
class KFCurve {
public:
    static constexpr int kKeysPerBlock = 42;

    // Bits of KeyAttribute::flags.
    enum EKeyFlag : uint32_t {
        eInterpolationConstant = 0x2,
        eInterpolationLinear = 0x4,
        eInterpolationCubic = 0x8,
        eInterpolationMask = 0xE,
        // On a constant key: the segment takes the next key's value.
        eConstantNext = 0x100,
        // Tangent modes of a cubic key; the mask selects the tangent word.
        eTangentAuto = 0x100,
        eTangentTCB = 0x200,
        eTangentUser = 0x400,
        eTangentGenericBreak = 0x800,
        eTangentBreak = eTangentUser | eTangentGenericBreak,
        eTangentAutoBreak = eTangentAuto | eTangentGenericBreak,
        eTangentMask = 0xF00,
        eTangentGenericClamp = 0x1000,
        eTangentGenericTimeIndependent = 0x2000,
        eTangentGenericClampProgressive = 0x6000,
        eSelectLeft = 1u << 17,
        eSelectRight = 1u << 18,
        eMarkedForManipulation = 1u << 19,
        eTangentShowLeft = 1u << 20,
        eTangentShowRight = 1u << 21,
        eWeightedRight = 1u << 24,
        eWeightedNextLeft = 1u << 25,
        eWeightedMask = eWeightedRight | eWeightedNextLeft,
        eVelocityRight = 1u << 28,
        eVelocityNextLeft = 1u << 29,
        eVelocityMask = eVelocityRight | eVelocityNextLeft,
    };

    // Extrapolation modes before the first and after the last key.
    enum EExtrapolation : uint32_t {
        eExtrapolationNone = 0,  // an unknown mode: reads the curve at the time itself
        eConstant = 1,
        eRepetition = 2,
        eMirrorRepetition = 3,
        eKeepSlope = 4,
    };
    // A repetition count without limit.
    static constexpr uint32_t kUnlimitedCount = 0xFFFFFFFFu;

    // Words of the tangent data. Words 0 and 1 are floats: auto biases in
    // percent, user slopes, or TCB tension and continuity. Word 2 is the TCB
    // bias, or two 16-bit weights, and word 3 two 16-bit velocities, each a
    // fraction times 9999: the right one in the low half, the next-left one
    // in the high half. "Next left" belongs to the far end of the segment
    // that starts at the key.
    struct KeyAttribute {
        uint32_t flags = 0;
        uint32_t data[4] = {0, 0, 0, 0};
        int refCount = 0;  // keys that point here

        float GetFloat(int word) const;
        void SetFloat(int word, float value);
    };

    struct Key {
        FbxLongLong time = 0;
        KeyAttribute* attribute = nullptr;
        float value = 0.0f;
    };

    KFCurve();
    ~KFCurve();
    KFCurve(const KFCurve&) = delete;
    KFCurve& operator=(const KFCurve&) = delete;
    // Takes over the other's keys, sharing of attributes included, and its
    // default and extrapolation.
    void CopyFrom(const KFCurve& other);

    // --- Keys --------------------------------------------------------------

    int KeyGetCount() const { return keyCount_; }
    // Index in range (0 <= index < KeyGetCount()).
    const Key& KeyGet(int index) const { return blocks_[index / kKeysPerBlock]->keys[index % kKeysPerBlock]; }
    // The getters give 0 (-1 for a time) for an index out of range.
    FbxLongLong KeyGetTime(int index) const;
    float KeyGetValue(int index) const;
    uint32_t KeyGetFlags(int index) const;
    uint32_t KeyGetInterpolation(int index) const { return KeyGetFlags(index) & eInterpolationMask; }
    uint32_t KeyGetTangentMode(int index) const { return KeyGetFlags(index) & eTangentMask; }
    // Data word of the key's attribute as bits, and word 0 to 2 as a float.
    uint32_t KeyGetDataWord(int index, int word) const;
    float KeyGetDataFloat(int index, int word) const;
    // The weights of the segment that starts at the key: 1/3 unless stored
    // and in force.
    double KeyGetRightWeight(int index) const;
    double KeyGetNextLeftWeight(int index) const;

    float GetDefaultValue() const { return defaultValue_; }
    void SetDefaultValue(float value) { defaultValue_ = value; }

    // --- Building and editing ----------------------------------------------
    // Editing calls with an index out of range do nothing.

    // Removes every key and attribute; the default value becomes 0.
    void Clear();
    // Sets the key count. New keys have time 0, value 0 and no attribute;
    // a smaller count drops the keys behind it.
    void Resize(int count);
    void KeySetTime(int index, FbxLongLong time) {
        if (InRange(index)) KeyAt(index).time = time;
    }
    void KeySetValue(int index, float value) {
        if (InRange(index)) KeyAt(index).value = value;
    }
    // A new attribute owned by the curve, on no key yet.
    KeyAttribute* NewAttribute(uint32_t flags, const uint32_t data[4] = nullptr);
    // Points the key at an attribute of this curve (or none).
    void KeySetAttribute(int index, KeyAttribute* attribute);
    // Adds a key at `time` in time order, or changes the value of the key
    // that has that time; gives its index. A new key takes `flags` and zero
    // data. Keys behind it move up by one.
    int KeyAdd(FbxLongLong time, float value, uint32_t flags = eInterpolationCubic | eTangentAuto);
    // Changes of one key's attribute; a shared attribute is copied first.
    void KeySetFlags(int index, uint32_t flags);
    void KeySetInterpolation(int index, uint32_t interpolation);
    void KeySetTangentMode(int index, uint32_t tangentMode);
    void KeySetDataWord(int index, int word, uint32_t bits);
    void KeySetDataFloat(int index, int word, float value);
    // User slopes (value per second) of the right side and of the next key's
    // left side, for a cubic key with eTangentUser.
    void KeySetSlopes(int index, float right, float nextLeft) {
        KeySetDataFloat(index, 0, right);
        KeySetDataFloat(index, 1, nextLeft);
    }
    // Tension, continuity and bias of a cubic key with eTangentTCB.
    void KeySetTCB(int index, float tension, float continuity, float bias);
    // Stores weights (0 to 1, kept as n / 9999) and sets their flags.
    void KeySetWeights(int index, double right, double nextLeft);
    // Stores velocities (kept, not evaluated) and sets their flags.
    void KeySetVelocities(int index, double right, double nextLeft);
    // Multiplies a key's value, or its user slopes (a cubic key with the
    // user tangent word); other tangents follow the values by themselves.
    void KeyMultValue(int index, float factor);
    void KeyMultTangent(int index, float factor);
    // A bracket around a batch of edits; they nest.
    void KeyModifyBegin() { ++modifyDepth_; }
    void KeyModifyEnd() {
        if (modifyDepth_ > 0) --modifyDepth_;
    }

    uint32_t GetPreExtrapolation() const { return preExtrapolation_; }
    uint32_t GetPreExtrapolationCount() const { return preCount_; }
    uint32_t GetPostExtrapolation() const { return postExtrapolation_; }
    uint32_t GetPostExtrapolationCount() const { return postCount_; }
    void SetPreExtrapolation(uint32_t mode, uint32_t count = 0) {
        preExtrapolation_ = mode;
        preCount_ = count;
    }
    void SetPostExtrapolation(uint32_t mode, uint32_t count = 0) {
        postExtrapolation_ = mode;
        postCount_ = count;
    }

    // --- Evaluation ----------------------------------------------------------

    // The value at `time`. `lastIndex` is an optional in-out start for the
    // key search; without it the curve uses its own.
    float Evaluate(FbxLongLong time, int* lastIndex = nullptr) const;
    // The value at a fractional key index (clamped to the keys).
    float EvaluateIndex(double index) const;
    // The fractional key index of a time, extrapolation applied (-1 without
    // keys); moves the search start like Evaluate.
    double TimeToIndex(FbxLongLong time, int* lastIndex = nullptr) const;
    // The fractional index of a time among the keys: -0.5 before the first,
    // count - 0.5 after the last.
    double KeyFind(FbxLongLong time, int* lastIndex = nullptr) const;
    // Slopes in value per second at a key; 0 out of range.
    double KeyGetLeftDerivative(int index) const;
    double KeyGetRightDerivative(int index) const;
    // The first and last key times; false with fewer than 2 keys.
    bool GetTimeInterval(FbxTimeSpan& span) const;

    // The control values and auto biases of the segments next to a key, for
    // evaluation that interpolates several curves together.
    double RightControl(int index) const;
    double LeftControl(int index) const;
    double RightBias(int index) const;
    double LeftBias(int index) const;
    // The slope that an auto bias gives from the chords left (L) and right
    // (R) of a key, on the left or right side.
    static double BiasedSlope(double bias, double left, double right, bool rightSide);

private:
    struct Block {
        Key keys[kKeysPerBlock];
    };

    bool InRange(int index) const { return index >= 0 && index < keyCount_; }
    Key& KeyAt(int index) { return blocks_[index / kKeysPerBlock]->keys[index % kKeysPerBlock]; }
    // The key's attribute, made private to it (copied when shared, made
    // when missing).
    KeyAttribute* OwnAttribute(int index);
    double Seconds(int from, int to) const;
    double ChordLeft(int index) const;
    double ChordRight(int index) const;
    double TCBSlope(int at, const KeyAttribute& tcb, bool rightSide) const;
    // The auto slope at key `at`, with the flags of key `flagKey`.
    double AutoSlope(int at, int flagKey, double bias, bool rightSide) const;
    bool FlatSide(int at, uint32_t flags, bool rightSide) const;
    double ProgressiveSlope(int at) const;
    double CubicSegment(int i, double u) const;
    float ExtrapolateSlope(FbxLongLong time) const;

    std::vector<std::unique_ptr<Block>> blocks_;
    std::deque<KeyAttribute> attributes_;
    int keyCount_ = 0;
    float defaultValue_ = 0.0f;
    uint32_t preExtrapolation_ = eConstant;
    uint32_t preCount_ = 0;
    uint32_t postExtrapolation_ = eConstant;
    uint32_t postCount_ = 0;
    int modifyDepth_ = 0;
    mutable int lastIndex_ = 0;
};
