#pragma once

#include "fbx/model/fbx_property.h"
#include "fbx/model/fbx_types.h"

// Property values as animation sees them: one double per component.
constexpr int FbxAnimValueMaxComponents = 16;

// The number of doubles that animate a value of a base type: 1 for numbers,
// bools and enums, 2, 3, 4 and 16 for the vectors and the matrix, 0 for
// anything else.
int FbxAnimComponentCount(EFbxType type);

// Reads the property's value into `values` (room for
// FbxAnimValueMaxComponents) and gives the component count; 0 when the
// property is invalid or its type has no components.
int FbxReadAnimValue(const FbxProperty& property, double* values);
