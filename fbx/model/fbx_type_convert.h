#pragma once

#include "fbx/model/fbx_type_traits.h"

// Copies a value of base type `srcType` into storage of base type
// `dstType`, converting on the way:
// - numbers (the integer types, bool, enum, time ticks, the float types and
//   a distance's value) convert to one another; floats to integers truncate
//   toward zero and clamp to the target's range, NaN gives 0;
// - a number fills every member of a double2, double3 or double4; those
//   three convert to one another member by member, missing members 0;
//   double4x4 converts only to itself;
// - every value with storage converts to a string ("true"/"false" for bool,
//   shortest round-trip text for floats, members joined by ","), and a
//   string converts back when it parses completely;
// - blobs and date-times convert only to themselves (and to strings, and
//   date-times from strings).
// Gives false and leaves the target as it was when there is no conversion.
bool FbxTypeConvert(const void* src, EFbxType srcType, void* dst, EFbxType dstType);

// The text of a value as FbxTypeConvert writes it; "" when there is none.
FbxString FbxValueToString(const void* src, EFbxType srcType);

// True when two values of one base type are equal.
bool FbxValueEqual(const void* a, const void* b, EFbxType type);
