#include "fbx/io/fbx_io_settings.h"

#include <cstring>

#include "fbx/io/fbx_io_class_binding.h"
#include "fbx/model/fbx_manager.h"

FbxClassId FbxIOSettings::ClassId;

FbxIOSettings* FbxIOSettings::Create(FbxManager* manager, const char* name) {
    if (!manager) return nullptr;
    ClassId = FbxBindIOClass("FbxIOSettings", &Allocate);
    return static_cast<FbxIOSettings*>(CreateOfClass(manager, ClassId, name));
}

FbxIOSettings* FbxIOSettings::Create(FbxObject* container, const char* name) {
    if (!container || !container->GetFbxManager()) return nullptr;
    ClassId = FbxBindIOClass("FbxIOSettings", &Allocate);
    return static_cast<FbxIOSettings*>(CreateInContainer(container, ClassId, name));
}

FbxObject* FbxIOSettings::Allocate(FbxManager& manager, const char* name, const FbxObject*) {
    return new FbxIOSettings(manager, name);
}

FbxIOSettings::FbxIOSettings(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxIOSettings::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (ClassId.NeedsPropertyDeclaration()) DeclareTree(ClassId.GetRootClassProperty());
}

void FbxIOSettings::SetOptionFlags(FbxProperty& option, bool visible, bool stored, bool savedInPreset) {
    if (!visible) option.SetFlag(eNotShown, true);
    if (!stored) option.SetFlag(eNotStored, true);
    if (!savedInPreset) option.SetFlag(eNotSavedInPreset, true);
}

FbxProperty FbxIOSettings::AddGroup(const FbxProperty& parent, const char* name, const char* label) {
    bool found = false;
    FbxProperty group = FbxProperty::Create(parent, FbxStringDT, name, label, true, &found);
    if (group.IsValid() && !found) group.SetFlag(eGroup, true);
    return group;
}

namespace {

// Declares the built-in tree on a class page: groups and options with their
// defaults.
class TreeBuilder {
public:
    FbxProperty Group(const FbxProperty& parent, const char* name) {
        FbxProperty group = FbxProperty::Create(parent, FbxStringDT, name, name);
        group.SetFlag(FbxIOSettings::eGroup, true);
        return group;
    }
    template <class T>
    void Option(const FbxProperty& parent, const char* name, const FbxDataType& type, const T& value,
                bool visible = true) {
        FbxProperty p = FbxProperty::Create(parent, type, name, name);
        p.Set(value, false);
        if (!visible) p.SetFlag(FbxIOSettings::eNotShown, true);
    }
    void Bool(const FbxProperty& parent, const char* name, bool value, bool visible = true) {
        Option(parent, name, FbxBoolDT, value, visible);
    }
    void Int(const FbxProperty& parent, const char* name, int value, bool visible = true) {
        Option(parent, name, FbxIntDT, value, visible);
    }
    void Double(const FbxProperty& parent, const char* name, double value) { Option(parent, name, FbxDoubleDT, value); }
    void String(const FbxProperty& parent, const char* name, const char* value, bool visible = true) {
        Option(parent, name, FbxStringDT, FbxString(value), visible);
    }
};

void declareImport(TreeBuilder& t, const FbxProperty& root) {
    FbxProperty import = t.Group(root, "Import");

    FbxProperty plugIn = t.Group(import, "PlugInGrp");
    t.Int(plugIn, "PlugInUIWidth", 500, false);
    t.Int(plugIn, "PlugInUIHeight", 500, false);
    t.Int(plugIn, "PlugInUIXpos", 100, false);
    t.Int(plugIn, "PlugInUIYpos", 100, false);
    t.Int(plugIn, "PresetSelected", 0, false);
    t.Int(plugIn, "UILIndex", 0, false);

    FbxProperty include = t.Group(import, "IncludeGrp");
    FbxProperty geometry = t.Group(include, "Geometry");
    t.Bool(geometry, "NormalMap", false);
    t.Bool(geometry, "HardEdges", false);
    t.Bool(geometry, "Triangulate", false);
    FbxProperty animation = t.Group(include, "Animation");
    t.Bool(animation, "Animation", true);
    t.Bool(animation, "Deformation", true);
    t.Bool(animation, "Markers", true);
    t.Bool(include, "Camera", true);
    t.Bool(include, "Light", true);
    t.Bool(include, "Audio", true);
    FbxProperty embed = t.Group(include, "EmbedTexture");
    t.String(embed, "EmbededMediaFolder", "", false);

    FbxProperty advanced = t.Group(import, "AdvOptGrp");
    FbxProperty units = t.Group(advanced, "UnitsGrp");
    t.Bool(units, "DynamicScaleConversion", true);
    t.Double(units, "UnitsSelector", 0.0);
    FbxProperty axis = t.Group(advanced, "AxisConvGrp");
    t.Bool(axis, "AxisConversion", false);
    FbxProperty cache = t.Group(advanced, "Cache");
    t.Int(cache, "CacheSize", 8, false);

    FbxProperty formats = t.Group(advanced, "FileFormat");
    FbxProperty fbx = t.Group(formats, "Fbx");
    t.Bool(fbx, "Model", true);
    t.Bool(fbx, "Texture", true);
    t.Bool(fbx, "Material", true);
    t.Bool(fbx, "Link", true);
    t.Bool(fbx, "Shape", true);
    t.Bool(fbx, "Gobo", true);
    t.Bool(fbx, "Animation", true);
    t.Bool(fbx, "Character", true);
    t.Bool(fbx, "Global_Settings", true);
    t.Bool(fbx, "Pivot", true);
    t.Bool(fbx, "Merge_Layer_and_Timewarp", false);
    t.Bool(fbx, "Template", false, false);
    t.Bool(fbx, "Constraint", true);
    t.Bool(fbx, "ExtractEmbeddedData", true);
    t.Bool(fbx, "Password_Enable", false, false);
    t.String(fbx, "Password", "", false);
    t.String(fbx, "Current_Take_Name", "", false);
    t.Int(fbx, "Model_Count", 0, false);
    t.Int(fbx, "Device_Count", 0, false);
    t.Int(fbx, "Character_Count", 0, false);
    t.Int(fbx, "Actor_Count", 0, false);
    t.Int(fbx, "Constraint_Count", 0, false);
    t.Int(fbx, "Media_Count", 0, false);
    // Groups of the other formats, which only a caller sets.
    t.Group(formats, "Obj");
    t.Group(formats, "Dxf");
    t.Group(formats, "Max_3ds");
    t.Group(formats, "Collada");
    t.Group(formats, "Motion_Base");
}

void declareExport(TreeBuilder& t, const FbxProperty& root) {
    FbxProperty exportGroup = t.Group(root, "Export");
    FbxProperty plugIn = t.Group(exportGroup, "PlugInGrp");
    t.Int(plugIn, "PlugInUIWidth", 500, false);
    t.Int(plugIn, "PlugInUIHeight", 500, false);
    t.Int(plugIn, "PlugInUIXpos", 100, false);
    t.Int(plugIn, "PlugInUIYpos", 100, false);
    t.Int(plugIn, "PresetSelected", 0, false);
    t.Int(plugIn, "UILIndex", 0, false);
    FbxProperty include = t.Group(exportGroup, "IncludeGrp");
    t.Bool(include, "Animation", true);
    t.Bool(include, "Camera", true);
    t.Bool(include, "Light", true);
    FbxProperty advanced = t.Group(exportGroup, "AdvOptGrp");
    FbxProperty formats = t.Group(advanced, "FileFormat");
    FbxProperty fbx = t.Group(formats, "Fbx");
    t.Bool(fbx, "EmbedTexture", false);
    t.String(fbx, "Password", "", false);
    t.Bool(fbx, "Password_Enable", false, false);
}

}  // namespace

void FbxIOSettings::DeclareTree(const FbxProperty& root) {
    TreeBuilder t;
    declareImport(t, root);
    declareExport(t, root);
}

FbxProperty FbxIOSettings::GetProperty(const char* path) const {
    if (!path) return FbxProperty();
    static constexpr char kRoot[] = "IOSRoot";
    constexpr size_t kRootLength = sizeof(kRoot) - 1;
    if (std::strncmp(path, kRoot, kRootLength) == 0) {
        if (path[kRootLength] == '\0') return GetRootProperty();
        if (path[kRootLength] == '|') path += kRootLength + 1;
    }
    if (*path == '\0') return FbxProperty();
    return FindProperty(path, true);
}

namespace {

template <class T>
T getOr(const FbxProperty& p, T defaultValue) {
    T value = defaultValue;
    if (!p.IsValid() || !p.Get(value)) return defaultValue;
    return value;
}

}  // namespace

bool FbxIOSettings::GetBoolProp(const char* path, bool defaultValue) const {
    return getOr<FbxBool>(GetProperty(path), defaultValue);
}

int FbxIOSettings::GetIntProp(const char* path, int defaultValue) const {
    return getOr<FbxInt>(GetProperty(path), defaultValue);
}

double FbxIOSettings::GetDoubleProp(const char* path, double defaultValue) const {
    return getOr<FbxDouble>(GetProperty(path), defaultValue);
}

FbxString FbxIOSettings::GetStringProp(const char* path, const char* defaultValue) const {
    return getOr<FbxString>(GetProperty(path), FbxString(defaultValue ? defaultValue : ""));
}

int FbxIOSettings::GetEnumProp(const char* path, int defaultValue) const {
    FbxProperty p = GetProperty(path);
    FbxInt value = defaultValue;
    if (!p.IsValid() || !p.Get(&value, eFbxEnum)) return defaultValue;
    return value;
}

bool FbxIOSettings::SetBoolProp(const char* path, bool value) {
    FbxProperty p = GetProperty(path);
    return p.IsValid() && p.Set(FbxBool(value));
}

bool FbxIOSettings::SetIntProp(const char* path, int value) {
    FbxProperty p = GetProperty(path);
    return p.IsValid() && p.Set(FbxInt(value));
}

bool FbxIOSettings::SetDoubleProp(const char* path, double value) {
    FbxProperty p = GetProperty(path);
    return p.IsValid() && p.Set(FbxDouble(value));
}

bool FbxIOSettings::SetStringProp(const char* path, const char* value) {
    FbxProperty p = GetProperty(path);
    return p.IsValid() && p.Set(value);
}

bool FbxIOSettings::SetEnumProp(const char* path, int value) {
    FbxProperty p = GetProperty(path);
    FbxInt v = value;
    return p.IsValid() && p.Set(&v, eFbxEnum);
}
