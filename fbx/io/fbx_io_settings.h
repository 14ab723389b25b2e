#pragma once

#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_string.h"

// Paths of the options that the file reading path consults.
namespace FbxIOPath {
inline constexpr const char kCacheSize[] = "Import|AdvOptGrp|Cache|CacheSize";
inline constexpr const char kFbxGroup[] = "Import|AdvOptGrp|FileFormat|Fbx";
inline constexpr const char kModel[] = "Import|AdvOptGrp|FileFormat|Fbx|Model";
inline constexpr const char kTexture[] = "Import|AdvOptGrp|FileFormat|Fbx|Texture";
inline constexpr const char kMaterial[] = "Import|AdvOptGrp|FileFormat|Fbx|Material";
inline constexpr const char kLink[] = "Import|AdvOptGrp|FileFormat|Fbx|Link";
inline constexpr const char kShape[] = "Import|AdvOptGrp|FileFormat|Fbx|Shape";
inline constexpr const char kGobo[] = "Import|AdvOptGrp|FileFormat|Fbx|Gobo";
inline constexpr const char kAnimation[] = "Import|AdvOptGrp|FileFormat|Fbx|Animation";
inline constexpr const char kCharacter[] = "Import|AdvOptGrp|FileFormat|Fbx|Character";
inline constexpr const char kGlobalSettings[] = "Import|AdvOptGrp|FileFormat|Fbx|Global_Settings";
inline constexpr const char kPivot[] = "Import|AdvOptGrp|FileFormat|Fbx|Pivot";
inline constexpr const char kMergeLayerAndTimewarp[] = "Import|AdvOptGrp|FileFormat|Fbx|Merge_Layer_and_Timewarp";
inline constexpr const char kTemplate[] = "Import|AdvOptGrp|FileFormat|Fbx|Template";
inline constexpr const char kConstraint[] = "Import|AdvOptGrp|FileFormat|Fbx|Constraint";
inline constexpr const char kExtractEmbeddedData[] = "Import|AdvOptGrp|FileFormat|Fbx|ExtractEmbeddedData";
inline constexpr const char kPasswordEnable[] = "Import|AdvOptGrp|FileFormat|Fbx|Password_Enable";
inline constexpr const char kPassword[] = "Import|AdvOptGrp|FileFormat|Fbx|Password";
inline constexpr const char kCurrentTakeName[] = "Import|AdvOptGrp|FileFormat|Fbx|Current_Take_Name";
inline constexpr const char kModelCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Model_Count";
inline constexpr const char kDeviceCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Device_Count";
inline constexpr const char kCharacterCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Character_Count";
inline constexpr const char kActorCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Actor_Count";
inline constexpr const char kConstraintCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Constraint_Count";
inline constexpr const char kMediaCount[] = "Import|AdvOptGrp|FileFormat|Fbx|Media_Count";
inline constexpr const char kEmbeddedMediaFolder[] = "Import|IncludeGrp|EmbedTexture|EmbededMediaFolder";
}  // namespace FbxIOPath

// The options of importers and exporters: a tree of named, typed
// properties under the object's root. A group is a string property with
// flag eGroup; an option carries a value. An option is named by its path of
// property names joined by "|", such as "Import|AdvOptGrp|Cache|CacheSize";
// a leading "IOSRoot|" is dropped and "IOSRoot" alone names the root.
// Lookups are case sensitive.
//
// The built-in tree lives on the class's property page, so that a settings
// object stores only the options that a caller changed.
class FbxIOSettings : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxIOSettings, FbxObject)

public:
    // Option flags: each is set when the matching boolean of AddOption is
    // false.
    enum EOptionFlag : uint32_t {
        eNotStored = 64,
        eNotSavedInPreset = 32768,
        eGroup = 0x10000,
        eNotShown = 0x400000,
    };

    // The option or group at `path`; invalid when there is none.
    FbxProperty GetProperty(const char* path) const;

    // Adds a group under `parent` (or finds the existing one of that name).
    FbxProperty AddGroup(const FbxProperty& parent, const char* name, const char* label = "");
    // Adds an option with its default under `parent` (or finds the existing
    // one of that name, leaving it as it is).
    template <class T>
    FbxProperty AddOption(const FbxProperty& parent, const char* name, const FbxDataType& type, const char* label,
                          const T& defaultValue, bool visible = true, bool stored = true, bool savedInPreset = true) {
        bool found = false;
        FbxProperty p = FbxProperty::Create(parent, type, name, label, true, &found);
        if (!p.IsValid() || found) return p;
        p.Set(defaultValue, false);
        SetOptionFlags(p, visible, stored, savedInPreset);
        return p;
    }

    // Typed access by path. A Get on a path that does not exist (or whose
    // value does not convert) gives the default; a Set on such a path does
    // nothing and gives false.
    bool GetBoolProp(const char* path, bool defaultValue) const;
    int GetIntProp(const char* path, int defaultValue) const;
    double GetDoubleProp(const char* path, double defaultValue) const;
    FbxString GetStringProp(const char* path, const char* defaultValue) const;
    int GetEnumProp(const char* path, int defaultValue) const;
    bool SetBoolProp(const char* path, bool value);
    bool SetIntProp(const char* path, int value);
    bool SetDoubleProp(const char* path, double value);
    bool SetStringProp(const char* path, const char* value);
    bool SetEnumProp(const char* path, int value);

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static void SetOptionFlags(FbxProperty& option, bool visible, bool stored, bool savedInPreset);
    static void DeclareTree(const FbxProperty& root);
};
