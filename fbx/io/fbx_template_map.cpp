#include "fbx/io/fbx_template_map.h"

#include "fbx/model/fbx_object.h"

void FbxTemplateMap::Add(FbxObject* templateObject) {
    if (!templateObject) return;
    FbxObject*& slot = templates_[templateObject->GetClassId()];
    if (slot && slot != templateObject) slot->Destroy();
    slot = templateObject;
}

FbxObject* FbxTemplateMap::Find(FbxClassId classId) const {
    auto it = templates_.find(classId);
    return it == templates_.end() ? nullptr : it->second;
}

void FbxTemplateMap::Clear() {
    for (auto& entry : templates_) entry.second->Destroy();
    templates_.clear();
}

namespace {

constexpr uint32_t kTemplateFlagBits = 0x7FFFFF;

// The flag bits that the property's own page sets itself, and their values.
void ownFlags(const FbxProperty& p, uint32_t& mask, uint32_t& value) {
    mask = p.GetOwnFlagMask() & kTemplateFlagBits;
    value = p.GetOwnFlagValue() & mask;
}

void applyOne(FbxObject& object, const FbxProperty& source) {
    bool ownValue = source.ValueOwner() == FbxProperty::eOwnValue;
    uint32_t sourceMask, sourceValue;
    ownFlags(source, sourceMask, sourceValue);
    if (!ownValue && sourceMask == 0) return;

    FbxString path = source.GetHierarchicalName();
    FbxProperty target = object.FindProperty(path.c_str(), true);
    if (target.IsValid()) {
        if (ownValue && target.ValueOwner(true) == FbxProperty::eInheritedValue) target.CopyValue(source);
        uint32_t targetMask, targetValue;
        ownFlags(target, targetMask, targetValue);
        uint32_t copy = sourceMask & ~targetMask;
        if (copy & sourceValue) target.SetFlag(copy & sourceValue, true);
        if (copy & ~sourceValue) target.SetFlag(copy & ~sourceValue, false);
        return;
    }
    FbxProperty parent;
    size_t bar = path.rfind('|');
    if (bar != FbxString::npos) parent = object.FindProperty(path.substr(0, bar).c_str(), true);
    if (!parent.IsValid()) parent = object.GetRootProperty();
    target = FbxProperty::Create(parent, source.GetPropertyDataType(), source.GetName(), source.GetLabel(), false);
    if (!target.IsValid()) return;
    uint32_t flags = source.GetFlags();
    if (flags) target.SetFlag(flags, true);
    target.CopyValue(source);
}

// Visits the properties below `top` in tree order: each before its
// children, children before the next sibling. The walk climbs back through
// the parents rather than recursing, so that a deep template costs no stack.
void applyBelow(FbxObject& object, const FbxProperty& top) {
    FbxProperty p = top.GetChild();
    while (p.IsValid()) {
        applyOne(object, p);
        FbxProperty next = p.GetChild();
        while (!next.IsValid() && p.IsValid() && p != top) {
            next = p.GetSibling();
            if (!next.IsValid()) p = p.GetParent();
        }
        p = next;
    }
}

}  // namespace

void FbxTemplateMap::Apply(FbxObject& object) const {
    FbxObject* source = Find(object.GetClassId());
    if (!source) return;
    object.BeginCreateOrFind();
    applyBelow(object, source->GetRootProperty());
    object.EndCreateOrFind();
}
