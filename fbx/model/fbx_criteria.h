#pragma once

#include "fbx/model/fbx_class_id.h"

class FbxConnectionPoint;

// A query over connections. ObjectType(c) passes objects whose class Is c;
// IsProperty() passes properties (of any object); And(a, b) passes what both
// pass. Because classes form a tree, a conjunction of class terms is itself
// one class term (or passes nothing), so a criteria is a small value that
// compares cheaply; each distinct criteria is the filter of one view.
class FbxCriteria {
public:
    FbxCriteria() = default;

    static FbxCriteria ObjectType(FbxClassId classId) {
        FbxCriteria c;
        c.classId_ = classId;
        c.none_ = !classId.IsValid();
        return c;
    }
    static FbxCriteria IsProperty() {
        FbxCriteria c;
        c.properties_ = true;
        return c;
    }
    static FbxCriteria And(const FbxCriteria& a, const FbxCriteria& b) {
        FbxCriteria c;
        c.properties_ = a.properties_ || b.properties_;
        c.none_ = a.none_ || b.none_;
        if (!a.classId_.IsValid()) {
            c.classId_ = b.classId_;
        } else if (!b.classId_.IsValid() || a.classId_.Is(b.classId_)) {
            c.classId_ = a.classId_;
        } else if (b.classId_.Is(a.classId_)) {
            c.classId_ = b.classId_;
        } else {
            c.none_ = true;
        }
        return c;
    }

    FbxClassId GetClassId() const { return classId_; }
    bool PropertiesOnly() const { return properties_; }
    // True when a connection point passes: objects only (or properties
    // only), of the class when one is given.
    bool Passes(const FbxConnectionPoint* point) const;

    friend bool operator==(const FbxCriteria&, const FbxCriteria&) = default;

private:
    FbxClassId classId_;
    bool properties_ = false;
    bool none_ = false;
};
