#pragma once

#include <map>

#include "fbx/model/fbx_class_id.h"

class FbxObject;

// The property templates of one file, by exact class: objects that carry
// the file's defaults for a class. The map owns its template objects, which
// are kept out of the manager's object list and have no connections, and
// destroys them when it is cleared or destroyed.
class FbxTemplateMap {
public:
    FbxTemplateMap() = default;
    ~FbxTemplateMap() { Clear(); }
    FbxTemplateMap(const FbxTemplateMap&) = delete;
    FbxTemplateMap& operator=(const FbxTemplateMap&) = delete;

    // Takes the object (already out of the manager's list) as the template of
    // its class, destroying one that was there.
    void Add(FbxObject* templateObject);
    // The template of exactly this class, or null.
    FbxObject* Find(FbxClassId classId) const;
    int Count() const { return static_cast<int>(templates_.size()); }
    void Clear();

    // Brings the template of the object's exact class onto the object: each
    // value of the template that the object still takes from its class
    // becomes the object's, flag bits that the object does not set itself
    // come from the template, and properties that only the template has are
    // added. A subclass does not use its base class's template.
    void Apply(FbxObject& object) const;

private:
    struct ClassLess {
        bool operator()(const FbxClassId& a, const FbxClassId& b) const { return a.Record() < b.Record(); }
    };
    // Lookup only, never iterated for output: ordering by address is fine.
    std::map<FbxClassId, FbxObject*, ClassLess> templates_;
};
