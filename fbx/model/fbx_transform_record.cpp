#include "fbx/model/fbx_transform_record.h"

#include "fbx/model/fbx_rotation.h"

namespace {

bool isZero3(const FbxVector4& v) { return v[0] == 0.0 && v[1] == 0.0 && v[2] == 0.0; }

bool same3(const FbxVector4& a, const FbxVector4& b) { return a[0] == b[0] && a[1] == b[1] && a[2] == b[2]; }

void setRotationMatrix(FbxAMatrix& matrix, uint32_t& flags, uint32_t flag, const FbxVector4& angles) {
    if (isZero3(angles)) {
        flags &= ~flag;
        matrix = FbxAMatrix();
    } else {
        flags |= flag;
        matrix = RotationXYZ(FbxVector4(angles[0], angles[1], angles[2]));
    }
}

}  // namespace

bool LimitRecord::SameAs(const LimitRecord& other) const {
    return mask == other.mask && same3(min, other.min) && same3(max, other.max);
}

void RotationSpaceRecord::SetPreRotation(const FbxVector4& angles) {
    setRotationMatrix(preMatrix, flags, ePreMatrix, angles);
}

void RotationSpaceRecord::SetPostRotation(const FbxVector4& angles) {
    setRotationMatrix(postMatrix, flags, ePostMatrix, angles);
}

void TransformRecord::SetVector(FbxVector4& target, uint32_t flag, const FbxVector4& v) {
    target.Set(v[0], v[1], v[2]);
    if (isZero3(v))
        flags &= ~flag;
    else
        flags |= flag;
}
