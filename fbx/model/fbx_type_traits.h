#pragma once

#include "fbx/model/fbx_time.h"
#include "fbx/model/fbx_types.h"

// Maps a value type to its base type code, so that the typed forms of Get
// and Set can name the storage they hand over. FbxInt and FbxEnum are one
// C++ type; both map to eFbxInt and convert to enum on the way in.
template <class T>
struct FbxTypeOf;

#define KIVA_FBX_TYPE_OF(T, code) \
    template <> \
    struct FbxTypeOf<T> { \
        static constexpr EFbxType value = code; \
    }
KIVA_FBX_TYPE_OF(FbxChar, eFbxChar);
KIVA_FBX_TYPE_OF(FbxUChar, eFbxUChar);
KIVA_FBX_TYPE_OF(FbxShort, eFbxShort);
KIVA_FBX_TYPE_OF(FbxUShort, eFbxUShort);
KIVA_FBX_TYPE_OF(FbxUInt, eFbxUInt);
KIVA_FBX_TYPE_OF(FbxLongLong, eFbxLongLong);
KIVA_FBX_TYPE_OF(FbxULongLong, eFbxULongLong);
KIVA_FBX_TYPE_OF(FbxHalfFloat, eFbxHalfFloat);
KIVA_FBX_TYPE_OF(FbxBool, eFbxBool);
KIVA_FBX_TYPE_OF(FbxInt, eFbxInt);
KIVA_FBX_TYPE_OF(FbxFloat, eFbxFloat);
KIVA_FBX_TYPE_OF(FbxDouble, eFbxDouble);
KIVA_FBX_TYPE_OF(FbxDouble2, eFbxDouble2);
KIVA_FBX_TYPE_OF(FbxDouble3, eFbxDouble3);
KIVA_FBX_TYPE_OF(FbxDouble4, eFbxDouble4);
KIVA_FBX_TYPE_OF(FbxDouble4x4, eFbxDouble4x4);
KIVA_FBX_TYPE_OF(FbxString, eFbxString);
KIVA_FBX_TYPE_OF(FbxTime, eFbxTime);
KIVA_FBX_TYPE_OF(FbxReference, eFbxReference);
KIVA_FBX_TYPE_OF(FbxBlob, eFbxBlob);
KIVA_FBX_TYPE_OF(FbxDistance, eFbxDistance);
KIVA_FBX_TYPE_OF(FbxDateTime, eFbxDateTime);
#undef KIVA_FBX_TYPE_OF

// Calls f with a null pointer of the storage type of a base type (FbxInt for
// enum), and gives its result; `fallback` for types without storage
// (compound, reference).
template <class R, class F>
R FbxVisitType(EFbxType type, R fallback, F&& f) {
    switch (type) {
    case eFbxChar:
        return f(static_cast<FbxChar*>(nullptr));
    case eFbxUChar:
        return f(static_cast<FbxUChar*>(nullptr));
    case eFbxShort:
        return f(static_cast<FbxShort*>(nullptr));
    case eFbxUShort:
        return f(static_cast<FbxUShort*>(nullptr));
    case eFbxUInt:
        return f(static_cast<FbxUInt*>(nullptr));
    case eFbxLongLong:
        return f(static_cast<FbxLongLong*>(nullptr));
    case eFbxULongLong:
        return f(static_cast<FbxULongLong*>(nullptr));
    case eFbxHalfFloat:
        return f(static_cast<FbxHalfFloat*>(nullptr));
    case eFbxBool:
        return f(static_cast<FbxBool*>(nullptr));
    case eFbxInt:
        return f(static_cast<FbxInt*>(nullptr));
    case eFbxFloat:
        return f(static_cast<FbxFloat*>(nullptr));
    case eFbxDouble:
        return f(static_cast<FbxDouble*>(nullptr));
    case eFbxDouble2:
        return f(static_cast<FbxDouble2*>(nullptr));
    case eFbxDouble3:
        return f(static_cast<FbxDouble3*>(nullptr));
    case eFbxDouble4:
        return f(static_cast<FbxDouble4*>(nullptr));
    case eFbxDouble4x4:
        return f(static_cast<FbxDouble4x4*>(nullptr));
    case eFbxEnum:
        return f(static_cast<FbxInt*>(nullptr));
    case eFbxString:
        return f(static_cast<FbxString*>(nullptr));
    case eFbxTime:
        return f(static_cast<FbxTime*>(nullptr));
    case eFbxBlob:
        return f(static_cast<FbxBlob*>(nullptr));
    case eFbxDistance:
        return f(static_cast<FbxDistance*>(nullptr));
    case eFbxDateTime:
        return f(static_cast<FbxDateTime*>(nullptr));
    default:
        return fallback;
    }
}

// True when the base type stores a value.
inline bool FbxTypeHasValue(EFbxType type) {
    return type != eFbxUndefined && type != eFbxReference && type > eFbxUndefined && type < eFbxTypeCount;
}
