#pragma once

#include "fbx/model/fbx_node_attribute.h"

// A node attribute that stands for nothing but a place: a helper or group.
class FbxNull : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxNull, FbxNodeAttribute)

public:
    // Values of "Look".
    enum ELook { eNone = 0, eCross = 1 };

    EType GetAttributeType() const override { return eNull; }
    const char* GetTypeName() const override { return "Null"; }
    std::vector<FbxString> GetTypeFlags() const override { return {"Null"}; }

    // "Size" (double, 100.0) and "Look" (enum "None", "Cross", default 1).
    FbxPropertyT<FbxDouble> Size() const { return FbxProperty(GetPropertyPage(), sSize); }
    FbxPropertyT<FbxEnum> Look() const { return FbxProperty(GetPropertyPage(), sLook); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static int sSize;
    static int sLook;
};
