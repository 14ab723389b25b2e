#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "fbx/model/fbx_string.h"

// The value types that properties hold, one per base type of the data type
// table. They are plain values: properties copy them in and out.

using FbxChar = int8_t;
using FbxUChar = uint8_t;
using FbxShort = int16_t;
using FbxUShort = uint16_t;
using FbxUInt = uint32_t;
using FbxLongLong = int64_t;
using FbxULongLong = uint64_t;
using FbxBool = bool;
using FbxInt = int32_t;
using FbxFloat = float;
using FbxDouble = double;
using FbxEnum = int32_t;
using FbxUInt64 = uint64_t;

// Base type codes of the data type table, in the order of their codes.
enum EFbxType : int {
    eFbxUndefined = 0,  // compound, event: no value
    eFbxChar = 1,
    eFbxUChar = 2,
    eFbxShort = 3,
    eFbxUShort = 4,
    eFbxUInt = 5,
    eFbxLongLong = 6,
    eFbxULongLong = 7,
    eFbxHalfFloat = 8,
    eFbxBool = 9,
    eFbxInt = 10,
    eFbxFloat = 11,
    eFbxDouble = 12,
    eFbxDouble2 = 13,
    eFbxDouble3 = 14,
    eFbxDouble4 = 15,
    eFbxDouble4x4 = 16,
    eFbxEnum = 17,
    eFbxString = 18,
    eFbxTime = 19,
    eFbxReference = 20,  // no value: the connection is the content
    eFbxBlob = 21,
    eFbxDistance = 22,
    eFbxDateTime = 23,
    eFbxTypeCount = 24
};

// A 16-bit float, stored as its bits.
struct FbxHalfFloat {
    uint16_t bits = 0;

    FbxHalfFloat() = default;
    explicit FbxHalfFloat(float value) : bits(FromFloat(value)) {}
    float Value() const { return ToFloat(bits); }

    static uint16_t FromFloat(float value);
    static float ToFloat(uint16_t bits);
    friend bool operator==(const FbxHalfFloat&, const FbxHalfFloat&) = default;
};

// N doubles, the storage of the vector base types.
template <int N>
struct FbxDoubleN {
    double data[N] = {};

    double& operator[](int i) { return data[i]; }
    const double& operator[](int i) const { return data[i]; }
    friend bool operator==(const FbxDoubleN&, const FbxDoubleN&) = default;
};

struct FbxDouble2 : FbxDoubleN<2> {
    FbxDouble2() = default;
    FbxDouble2(double x, double y) : FbxDoubleN<2>{{x, y}} {}
};

struct FbxDouble3 : FbxDoubleN<3> {
    FbxDouble3() = default;
    FbxDouble3(double x, double y, double z) : FbxDoubleN<3>{{x, y, z}} {}
};

struct FbxDouble4 : FbxDoubleN<4> {
    FbxDouble4() = default;
    FbxDouble4(double x, double y, double z, double w) : FbxDoubleN<4>{{x, y, z, w}} {}
};

// Sixteen doubles, row after row.
struct FbxDouble4x4 : FbxDoubleN<16> {
    FbxDouble4x4() = default;
    double& At(int row, int column) { return data[row * 4 + column]; }
    double At(int row, int column) const { return data[row * 4 + column]; }
    static FbxDouble4x4 Identity() {
        FbxDouble4x4 m;
        for (int i = 0; i < 4; ++i) m.At(i, i) = 1.0;
        return m;
    }
};

using FbxColor3 = FbxDouble3;
using FbxColor4 = FbxDouble4;

// Raw bytes of a blob property.
struct FbxBlob {
    std::vector<uint8_t> bytes;

    FbxBlob() = default;
    FbxBlob(const void* data, size_t size)
        : bytes(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + size) {}
    size_t Size() const { return bytes.size(); }
    const uint8_t* Data() const { return bytes.data(); }
    friend bool operator==(const FbxBlob&, const FbxBlob&) = default;
};

// A length with its unit, such as 10 "cm".
struct FbxDistance {
    float value = 0.0f;
    FbxString unit;
    friend bool operator==(const FbxDistance&, const FbxDistance&) = default;
};

// A calendar date and time of day. The text form is
// "YYYY-MM-DD hh:mm:ss:mmm"; a field that is not set is 0.
struct FbxDateTime {
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0, millisecond = 0;

    FbxString ToString() const;
    // Reads the text form; false (and nothing changed) when it does not
    // parse. Trailing fields may be missing.
    bool FromString(const char* text);
    friend bool operator==(const FbxDateTime&, const FbxDateTime&) = default;
};

// The value type that stands for a reference property. It holds nothing:
// the property's connections are its content.
struct FbxReference {
    friend bool operator==(const FbxReference&, const FbxReference&) = default;
};
