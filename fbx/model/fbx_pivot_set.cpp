#include "fbx/model/fbx_pivot_set.h"

const FbxPivotSet& FbxPivotSet::Empty() {
    static const FbxPivotSet empty;
    return empty;
}

const FbxVector4& FbxPivotSet::Default(EVector which) {
    static const FbxVector4 zero;
    static const FbxVector4 one(1.0, 1.0, 1.0);
    return which == eGeometricScaling ? one : zero;
}

const FbxVector4& FbxPivotSet::Get(EVector which) const {
    if (which < 0 || which >= eVectorCount) return Default(eRotationOffset);
    return Has(which) ? values_[which] : Default(which);
}

void FbxPivotSet::Set(EVector which, const FbxVector4& v) {
    if (which < 0 || which >= eVectorCount) return;
    values_[which].Set(v[0], v[1], v[2]);
    present_ |= 1u << which;
}
