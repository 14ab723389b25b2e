#include "fbx/model/fbx_texture.h"

#include <initializer_list>

KIVA_FBX_OBJECT_IMPLEMENT(FbxTexture)

int FbxTexture::sAlpha = -1;
int FbxTexture::sUVSet = -1;

FbxTexture::FbxTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

namespace {

FbxProperty declareEnum(const FbxProperty& root, const char* name, int value,
                        std::initializer_list<const char*> items) {
    FbxProperty p = FbxProperty::Declare(root, name, FbxEnumDT, FbxEnum(value));
    for (const char* item : items) p.AddEnumValue(item);
    return p;
}

}  // namespace

void FbxTexture::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    declareEnum(root, "TextureTypeUse", 0,
                {"Color", "Spherical Reflection Map", "Sphere Map", "Shadow Map", "Light Map", "Bump Map (NormalMap)"});
    sAlpha = FbxProperty::Declare(root, "Texture alpha", FbxDoubleDT, 1.0).GetId();
    declareEnum(root, "CurrentMappingType", 0,
                {"None", "UV", "Z", "X", "Y", "Spherical", "Cylindrical", "Environment", "Projection", "Box", "Face"});
    declareEnum(root, "WrapModeU", 0, {"Repeat", "Clamp"});
    declareEnum(root, "WrapModeV", 0, {"Repeat", "Clamp"});
    FbxProperty::Declare(root, "UVSwap", FbxBoolDT, false);
    FbxProperty::Declare(root, "PremultiplyAlpha", FbxBoolDT, true);
    FbxProperty::Declare(root, "Translation", FbxDouble3DT, FbxDouble3(0, 0, 0));
    FbxProperty::Declare(root, "Rotation", FbxDouble3DT, FbxDouble3(0, 0, 0));
    FbxProperty::Declare(root, "Scaling", FbxDouble3DT, FbxDouble3(1, 1, 1));
    FbxProperty::Declare(root, "TextureRotationPivot", FbxDouble3DT, FbxDouble3(0, 0, 0));
    FbxProperty::Declare(root, "TextureScalingPivot", FbxDouble3DT, FbxDouble3(0, 0, 0));
    declareEnum(root, "CurrentTextureBlendMode", 1, {"Translucent", "Additive", "Modulate", "Modulate2"});
    sUVSet = FbxProperty::Declare(root, "UVSet", FbxStringDT, FbxString("default")).GetId();
}

void FbxTexture::SetCropping(int top, int left, int right, int bottom) {
    cropping_[0] = top;
    cropping_[1] = left;
    cropping_[2] = right;
    cropping_[3] = bottom;
}

void FbxTexture::CopyTextureValues(const FbxTexture& other) {
    translation_[0] = other.translation_[0];
    translation_[1] = other.translation_[1];
    scale_[0] = other.scale_[0];
    scale_[1] = other.scale_[1];
    alphaSource_ = other.alphaSource_;
    for (int i = 0; i < 4; ++i) cropping_[i] = other.cropping_[i];
}

void FbxTexture::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    if (from && from->GetClassId() == GetClassId()) CopyTextureValues(*static_cast<const FbxTexture*>(from));
}

bool FbxTexture::CopyFrom(const FbxObject& other) {
    if (!ParentClass::CopyFrom(other)) return false;
    if (&other != this) CopyTextureValues(static_cast<const FbxTexture&>(other));
    return true;
}
