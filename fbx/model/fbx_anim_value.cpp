#include "fbx/model/fbx_anim_value.h"

int FbxAnimComponentCount(EFbxType type) {
    switch (type) {
    case eFbxChar:
    case eFbxUChar:
    case eFbxShort:
    case eFbxUShort:
    case eFbxUInt:
    case eFbxLongLong:
    case eFbxULongLong:
    case eFbxHalfFloat:
    case eFbxBool:
    case eFbxInt:
    case eFbxFloat:
    case eFbxDouble:
    case eFbxEnum:
        return 1;
    case eFbxDouble2:
        return 2;
    case eFbxDouble3:
        return 3;
    case eFbxDouble4:
        return 4;
    case eFbxDouble4x4:
        return 16;
    default:
        return 0;
    }
}

int FbxReadAnimValue(const FbxProperty& property, double* values) {
    if (!property.IsValid()) return 0;
    EFbxType type = property.GetPropertyDataType().GetType();
    int count = FbxAnimComponentCount(type);
    switch (count) {
    case 1:
        values[0] = property.Get<FbxDouble>();
        break;
    case 2:
    case 3:
    case 4:
    case 16: {
        FbxDoubleN<16> all;
        if (!property.Get(&all, type)) return 0;
        for (int i = 0; i < count; ++i) values[i] = all[i];
        break;
    }
    default:
        break;
    }
    return count;
}
