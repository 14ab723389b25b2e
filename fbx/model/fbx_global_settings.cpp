#include "fbx/model/fbx_global_settings.h"

#include <initializer_list>

KIVA_FBX_OBJECT_IMPLEMENT(FbxGlobalSettings)

int FbxGlobalSettings::sIds[FbxGlobalSettings::ePropertyCount] = {};

FbxGlobalSettings::FbxGlobalSettings(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

FbxProperty FbxGlobalSettings::GetProperty(EProperty which) const {
    if (which < 0 || which >= ePropertyCount) return FbxProperty();
    return FbxProperty(GetPropertyPage(), sIds[which]);
}

namespace {

FbxProperty declareEnum(const FbxProperty& root, const char* name, int value,
                        std::initializer_list<const char*> items) {
    FbxProperty p = FbxProperty::Declare(root, name, FbxEnumDT, FbxEnum(value));
    for (const char* item : items) p.AddEnumValue(item);
    return p;
}

}  // namespace

void FbxGlobalSettings::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    int* id = sIds;
    *id++ = FbxProperty::Declare(root, "UpAxis", FbxIntDT, 1).GetId();
    *id++ = FbxProperty::Declare(root, "UpAxisSign", FbxIntDT, 1).GetId();
    *id++ = FbxProperty::Declare(root, "FrontAxis", FbxIntDT, 2).GetId();
    *id++ = FbxProperty::Declare(root, "FrontAxisSign", FbxIntDT, 1).GetId();
    *id++ = FbxProperty::Declare(root, "CoordAxis", FbxIntDT, 0).GetId();
    *id++ = FbxProperty::Declare(root, "CoordAxisSign", FbxIntDT, 1).GetId();
    *id++ = FbxProperty::Declare(root, "OriginalUpAxis", FbxIntDT, -1).GetId();
    *id++ = FbxProperty::Declare(root, "OriginalUpAxisSign", FbxIntDT, 1).GetId();
    *id++ = FbxProperty::Declare(root, "UnitScaleFactor", FbxDoubleDT, 1.0).GetId();
    *id++ = FbxProperty::Declare(root, "OriginalUnitScaleFactor", FbxDoubleDT, 1.0).GetId();
    *id++ = FbxProperty::Declare(root, "AmbientColor", FbxColor3DT, FbxDouble3(0.0, 0.0, 0.0)).GetId();
    *id++ = FbxProperty::Declare(root, "DefaultCamera", FbxStringDT, FbxString("Producer Perspective")).GetId();
    *id++ = declareEnum(root, "TimeMode", 0,
                        {"Default", "Frames120", "Frames100", "Frames60", "Frames50", "Frames48", "Frames30",
                         "Frames30_DROP", "NTSC_DropFrame", "NTSC_FullFrame", "PAL", "Frames24", "Frames1000",
                         "Film_FullFrame", "Custom", "Frames96", "Frames72", "Frames5994", "TimeModeCount"})
                .GetId();
    *id++ = declareEnum(root, "TimeProtocol", 2, {"SMPTE", "FrameCount", "DefaultProtocol"}).GetId();
    *id++ =
        declareEnum(root, "SnapOnFrameMode", 0, {"NoSnap", "SnapOnFrame", "PlayOnFrame", "SnapAndPlayOnFrame"}).GetId();
    *id++ = FbxProperty::Declare(root, "TimeSpanStart", FbxTimeDT, FbxTime(0)).GetId();
    *id++ = FbxProperty::Declare(root, "TimeSpanStop", FbxTimeDT, FbxTime(FbxTime::kTicksPerSecond)).GetId();
    *id++ = FbxProperty::Declare(root, "CustomFrameRate", FbxDoubleDT, -1.0).GetId();
    *id++ = FbxProperty::Create(root, FbxCompoundDT, "TimeMarker").GetId();
    *id++ = FbxProperty::Declare(root, "CurrentTimeMarker", FbxIntDT, -1).GetId();
}
