#pragma once

#include "fbx/model/fbx_string.h"
#include "qe/counted.h"

class FbxManager;
class FbxObject;
class FbxPropertyPage;
class FbxProperty;

// Makes a new object of a class: given a manager, an object name and an
// optional source object to copy, gives the object (not yet registered).
using FbxObjectConstructor = FbxObject* (*)(FbxManager& manager, const char* name, const FbxObject* from);

// A class record of the run-time class registry.
struct FbxClassRecord {
    FbxString name;
    const FbxClassRecord* parent = nullptr;
    FbxObjectConstructor constructor = nullptr;
    FbxString fileType;                 // record word in a file: "Geometry"
    FbxString fileSubType;              // second word: "Mesh"
    FbxString prefix;                   // name prefix: "Geometry::"
    qe::Ref<FbxPropertyPage> rootPage;  // the class's defaults
    int instanceCount = 0;
    // Set while the first instance declares the class's properties.
    bool declaring = false;
};

// A handle to a class record; the null handle is invalid. Compared by
// record.
class FbxClassId {
public:
    constexpr FbxClassId() = default;
    constexpr explicit FbxClassId(FbxClassRecord* record) : record_(record) {}

    bool IsValid() const { return record_ != nullptr; }
    explicit operator bool() const { return IsValid(); }
    FbxClassRecord* Record() const { return record_; }

    // "" for the null handle.
    const char* GetName() const { return record_ ? record_->name.c_str() : ""; }
    FbxClassId GetParent() const {
        return FbxClassId(record_ ? const_cast<FbxClassRecord*>(record_->parent) : nullptr);
    }
    // With inherit, an empty word is replaced by the nearest ancestor's.
    const char* GetFbxFileTypeName(bool inherit = false) const;
    const char* GetFbxFileSubTypeName() const { return record_ ? record_->fileSubType.c_str() : ""; }
    const char* GetObjectTypePrefix(bool inherit = true) const;
    int GetInstanceCount() const { return record_ ? record_->instanceCount : 0; }

    // True when this is `other` or a descendant of it.
    bool Is(FbxClassId other) const;

    // The class's root property page (null before the first instance).
    FbxPropertyPage* GetRootPage() const { return record_ ? record_->rootPage.get() : nullptr; }
    // The class root property, on which the class's defaults live.
    FbxProperty GetRootClassProperty() const;
    // True while the first instance of this class declares its properties
    // (inside ConstructProperties): declare them on GetRootClassProperty().
    bool NeedsPropertyDeclaration() const { return record_ && record_->declaring; }

    friend bool operator==(const FbxClassId&, const FbxClassId&) = default;

private:
    FbxClassRecord* record_ = nullptr;
};
