#pragma once

#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_object.h"

// Classes that exist only for the document model's tests and benchmarks.
// They are added to the registry at run time by RegisterTestClasses, after
// every manager start (the registry goes with the last manager).

// A class with a small, varied property set:
// "Number" double 1.5, "Color" colour (0.5, 0.5, 0.5) animatable,
// "Visible" bool true, "Count" integer 3, "Mode" enum 1 of "Off", "On",
// "Auto", "Text" string "hello", and "Group" (compound) with a child
// "Child" (double 2.0).
class FbxTestObject : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxTestObject, FbxObject)

public:
    FbxProperty Number() const { return GetPropertyById(sNumber); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static int sNumber;
};

// A subclass that adds "Extra" (integer 7) and changes nothing else.
class FbxTestDerived : public FbxTestObject {
    KIVA_FBX_OBJECT_DECLARE(FbxTestDerived, FbxTestObject)

protected:
    void ConstructProperties(bool forceSet) override;
};

// A class with 80 properties, named "P0" to "P79", of mixed base types
// (double, double3, bool, integer, in turn), like a node's property set.
class FbxWideObject : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxWideObject, FbxObject)

public:
    static constexpr int kPropertyCount = 80;
    // Property i of this object.
    FbxProperty Property(int i) const { return GetPropertyById(sIds[i]); }

protected:
    void ConstructProperties(bool forceSet) override;

private:
    static int sIds[kPropertyCount];
};

// Registers the classes above with the registry of the running managers.
void RegisterTestClasses(FbxManager* manager);
