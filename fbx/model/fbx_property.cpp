#include "fbx/model/fbx_property.h"

#include <cstring>
#include <vector>

#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_property_page.h"
#include "fbx/model/fbx_type_convert.h"

FbxProperty FbxProperty::Create(const FbxProperty& parent, const FbxDataType& dataType, const char* name,
                                const char* label, bool checkExisting, bool* wasFound) {
    if (wasFound) *wasFound = false;
    if (!parent.IsValid() || !name || !dataType.Valid()) return FbxProperty();
    FbxPropertyPage* page = parent.page_;
    if (checkExisting) {
        int existing = page->FindChild(parent.id_, name, true);
        if (existing >= 0) {
            if (wasFound) *wasFound = true;
            return FbxProperty(page, existing);
        }
    }
    int id = page->Add(parent.id_, name, dataType, label && *label ? label : nullptr);
    return FbxProperty(page, id);
}

FbxProperty FbxProperty::Create(FbxObject* object, const FbxDataType& dataType, const char* name, const char* label,
                                bool checkExisting, bool* wasFound) {
    if (wasFound) *wasFound = false;
    if (!object) return FbxProperty();
    return Create(object->GetRootProperty(), dataType, name, label, checkExisting, wasFound);
}

bool FbxProperty::IsValid() const { return page_ && id_ >= 0 && page_->GetInfo(id_) != nullptr; }

FbxObject* FbxProperty::GetFbxObject() const { return page_ ? page_->Owner() : nullptr; }

const char* FbxProperty::GetName() const {
    const FbxPropertyInfo* info = page_ && id_ >= 0 ? page_->GetInfo(id_) : nullptr;
    return info ? info->name.c_str() : "";
}

FbxString FbxProperty::GetHierarchicalName() const {
    if (!IsValid() || id_ == 0) return FbxString();
    // Names from this property up to the root's child, joined from the top;
    // the depth of a tree cannot exceed the number of ids that exist.
    std::vector<const char*> names{GetName()};
    FbxProperty parent = GetParent();
    for (int guard = 0; parent.IsValid() && !parent.IsRoot() && guard < (1 << 20); ++guard) {
        names.push_back(parent.GetName());
        parent = parent.GetParent();
    }
    FbxString result = names.back();
    for (size_t i = names.size() - 1; i-- > 0;) {
        result += '|';
        result += names[i];
    }
    return result;
}

const char* FbxProperty::GetLabel() const {
    const FbxPropertyInfo* info = page_ && id_ >= 0 ? page_->GetInfo(id_) : nullptr;
    return info ? info->label.c_str() : "";
}

bool FbxProperty::SetLabel(const char* label) {
    if (!IsValid()) return false;
    FbxPropertyInfo* info = page_->GetOwnInfo(id_);
    info->label = label ? label : "";
    return true;
}

FbxDataType FbxProperty::GetPropertyDataType() const {
    const FbxPropertyInfo* info = page_ && id_ >= 0 ? page_->GetInfo(id_) : nullptr;
    return info ? info->dataType : FbxDataType();
}

uint32_t FbxProperty::GetFlags() const { return IsValid() ? page_->GetFlags(id_) : 0; }

bool FbxProperty::SetFlag(uint32_t mask, bool on) {
    if (!IsValid() || mask == 0) return false;
    page_->SetFlags(id_, mask, on);
    return true;
}

uint32_t FbxProperty::GetOwnFlagMask() const {
    const FbxPropertyPage::Entry* e = IsValid() ? page_->FindEntry(id_) : nullptr;
    return e ? e->flagMask : 0;
}

uint32_t FbxProperty::GetOwnFlagValue() const {
    const FbxPropertyPage::Entry* e = IsValid() ? page_->FindEntry(id_) : nullptr;
    return e ? (e->flagValue & e->flagMask) : 0;
}

bool FbxProperty::Get(void* value, EFbxType type) const {
    if (!value || !page_ || id_ < 0) return false;
    const FbxPropertyValue* v = page_->GetValue(id_);
    if (!v) return false;
    return FbxTypeConvert(v->Data(), v->GetType(), value, type);
}

bool FbxProperty::Set(const void* value, EFbxType type, bool check) {
    if (!value || !IsValid()) return false;
    EFbxType target = GetPropertyDataType().GetType();
    if (!FbxTypeHasValue(target)) return false;
    FbxObject* owner = page_->Owner();
    bool notifies = owner && owner->GetFlag(FbxObject::eNotifyPropertyChanges);
    if (notifies && !owner->PropertyNotify(FbxObject::ePropertySetRequest, *this)) return false;

    // Convert into a scratch value of the property's type first: a value
    // that does not convert changes nothing, and the check compares like
    // with like.
    qe::Ref<FbxPropertyValue> scratch(FbxPropertyValue::Create(target));
    if (!scratch) return false;
    if (const FbxPropertyValue* current = page_->GetValue(id_))
        FbxTypeConvert(current->Data(), current->GetType(), scratch->Data(), target);
    if (!FbxTypeConvert(value, type, scratch->Data(), target)) return false;

    if (check && page_->Parent()) {
        // A value equal to the inherited one is no change of this page: it
        // leaves no own value, or drops the one there was.
        const FbxPropertyValue* inherited = page_->Parent()->GetValue(id_);
        if (inherited && inherited->GetType() == target && FbxValueEqual(inherited->Data(), scratch->Data(), target)) {
            page_->DropOwnValue(id_);
            return true;
        }
    }
    FbxPropertyPage::Entry& entry = page_->GetOrAddEntry(id_);
    if (entry.value && entry.value->refCount() == 1 && entry.value->GetType() == target)
        FbxTypeConvert(scratch->Data(), target, entry.value->Data(), target);
    else
        entry.value = scratch;
    if (notifies) owner->PropertyNotify(FbxObject::ePropertySet, *this);
    return true;
}

FbxProperty::EValueOwner FbxProperty::ValueOwner(bool deep) const {
    if (!IsValid()) return eNoValue;
    const FbxPropertyPage* holder = nullptr;
    if (!page_->GetValue(id_, &holder)) return eNoValue;
    if (holder == page_) return eOwnValue;
    if (deep && holder->Owner() != nullptr) return eOwnValue;
    return eInheritedValue;
}

bool FbxProperty::CopyValue(const FbxProperty& from) {
    if (!IsValid() || !from.IsValid()) return false;
    if (*this == from) return true;
    FbxPropertyValue* source = from.page_->GetValue(from.id_);
    if (!source) return false;
    EFbxType target = GetPropertyDataType().GetType();
    FbxObject* owner = page_->Owner();
    if (source->GetType() == target && !(owner && owner->GetFlag(FbxObject::eNotifyPropertyChanges))) {
        // Same type: share the value; the first write on either side
        // copies it.
        page_->GetOrAddEntry(id_).value = qe::Ref<FbxPropertyValue>(source);
        return true;
    }
    return Set(source->Data(), source->GetType(), false);
}

FbxProperty FbxProperty::GetParent() const {
    if (!IsValid() || id_ == 0) return FbxProperty();
    int parent = page_->GetInfo(id_)->parentId;
    return parent >= 0 ? FbxProperty(page_, parent) : FbxProperty();
}

FbxProperty FbxProperty::GetChild() const {
    if (!IsValid()) return FbxProperty();
    int child = page_->FirstChild(id_);
    return child >= 0 ? FbxProperty(page_, child) : FbxProperty();
}

FbxProperty FbxProperty::GetSibling() const {
    if (!IsValid()) return FbxProperty();
    int sibling = page_->NextSibling(id_);
    return sibling >= 0 ? FbxProperty(page_, sibling) : FbxProperty();
}

FbxProperty FbxProperty::Find(const char* name, bool caseSensitive) const {
    if (!name || !IsValid()) return FbxProperty();
    int current = id_;
    std::string_view rest(name);
    while (true) {
        size_t bar = rest.find('|');
        std::string_view part = rest.substr(0, bar);
        int child = page_->FindChild(current, part, caseSensitive);
        if (child < 0) return FbxProperty();
        if (bar == std::string_view::npos) return FbxProperty(page_, child);
        current = child;
        rest.remove_prefix(bar + 1);
    }
}

bool FbxProperty::SetMinLimit(double value) {
    if (!IsValid()) return false;
    FbxPropertyInfo* info = page_->GetOwnInfo(id_);
    info->hasMin = true;
    info->minLimit = value;
    return true;
}

bool FbxProperty::SetMaxLimit(double value) {
    if (!IsValid()) return false;
    FbxPropertyInfo* info = page_->GetOwnInfo(id_);
    info->hasMax = true;
    info->maxLimit = value;
    return true;
}

bool FbxProperty::HasMinLimit() const { return IsValid() && page_->GetInfo(id_)->hasMin; }
bool FbxProperty::HasMaxLimit() const { return IsValid() && page_->GetInfo(id_)->hasMax; }
double FbxProperty::GetMinLimit() const { return IsValid() ? page_->GetInfo(id_)->minLimit : 0.0; }
double FbxProperty::GetMaxLimit() const { return IsValid() ? page_->GetInfo(id_)->maxLimit : 0.0; }

int FbxProperty::AddEnumValue(const char* name) {
    if (!IsValid() || !name) return -1;
    EFbxType type = GetPropertyDataType().GetType();
    if (type != eFbxEnum) return -1;
    FbxPropertyInfo* info = page_->GetOwnInfo(id_);
    info->enumItems.emplace_back(name);
    return static_cast<int>(info->enumItems.size()) - 1;
}

const char* FbxProperty::GetEnumValue(int index) const {
    if (!IsValid() || index < 0) return "";
    const FbxPropertyInfo* info = page_->GetInfo(id_);
    return static_cast<size_t>(index) < info->enumItems.size() ? info->enumItems[static_cast<size_t>(index)].c_str()
                                                               : "";
}

int FbxProperty::GetEnumCount() const {
    return IsValid() ? static_cast<int>(page_->GetInfo(id_)->enumItems.size()) : 0;
}

// --- connections ---------------------------------------------------------

FbxConnectionPoint* FbxProperty::GetConnectionPoint() const {
    return IsValid() ? page_->GetOrCreatePoint(id_) : nullptr;
}

FbxConnectionPoint* FbxProperty::ExistingPoint() const { return IsValid() ? page_->GetPoint(id_) : nullptr; }

bool FbxProperty::SetConnectionPointType(uint32_t typeBits) {
    FbxConnectionPoint* point = GetConnectionPoint();
    if (!point) return false;
    point->SetType(typeBits & ~static_cast<uint32_t>(FbxConnectionPoint::eFilter | FbxConnectionPoint::eOnDemand));
    return true;
}

static FbxConnectionPoint* objectPoint(const FbxObject* object) {
    return object ? object->GetRootProperty().GetConnectionPoint() : nullptr;
}

static FbxConnectionPoint* existingObjectPoint(const FbxObject* object) {
    FbxPropertyPage* page = object ? object->GetPropertyPage() : nullptr;
    return page ? page->GetPoint(0) : nullptr;
}

bool FbxProperty::ConnectSrcObject(FbxObject* object, uint32_t connectType) {
    if (!object || !IsValid()) return false;
    return FbxConnectionPoint::Connect(objectPoint(object), GetConnectionPoint(), connectType);
}

bool FbxProperty::IsConnectedSrcObject(const FbxObject* object) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point && point->IsConnectedSrc(existingObjectPoint(object));
}

bool FbxProperty::DisconnectSrcObject(FbxObject* object) {
    return FbxConnectionPoint::Disconnect(existingObjectPoint(object), ExistingPoint());
}

bool FbxProperty::DisconnectAllSrcObject(const FbxCriteria& criteria) {
    bool all = true;
    for (int i = GetSrcObjectCount(criteria) - 1; i >= 0; --i) {
        FbxObject* object = GetSrcObject(criteria, i);
        if (!DisconnectSrcObject(object)) all = false;
    }
    return all;
}

int FbxProperty::GetSrcObjectCount(const FbxCriteria& criteria) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point ? point->FilteredCount(true, criteria) : 0;
}

FbxObject* FbxProperty::GetSrcObject(const FbxCriteria& criteria, int index) const {
    FbxConnectionPoint* point = ExistingPoint();
    FbxConnectionPoint* found = point ? point->FilteredAt(true, criteria, index) : nullptr;
    return found ? found->GetOwnerObject() : nullptr;
}

FbxObject* FbxProperty::FindSrcObject(const FbxCriteria& criteria, const char* name, int startIndex) const {
    if (!name) return nullptr;
    int count = GetSrcObjectCount(criteria);
    for (int i = startIndex < 0 ? 0 : startIndex; i < count; ++i) {
        FbxObject* object = GetSrcObject(criteria, i);
        if (object && std::strcmp(object->GetName(), name) == 0) return object;
    }
    return nullptr;
}

bool FbxProperty::ConnectDstObject(FbxObject* object, uint32_t connectType) {
    if (!object || !IsValid()) return false;
    return FbxConnectionPoint::Connect(GetConnectionPoint(), objectPoint(object), connectType);
}

bool FbxProperty::IsConnectedDstObject(const FbxObject* object) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point && point->IsConnectedDst(existingObjectPoint(object));
}

bool FbxProperty::DisconnectDstObject(FbxObject* object) {
    return FbxConnectionPoint::Disconnect(ExistingPoint(), existingObjectPoint(object));
}

int FbxProperty::GetDstObjectCount(const FbxCriteria& criteria) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point ? point->FilteredCount(false, criteria) : 0;
}

FbxObject* FbxProperty::GetDstObject(const FbxCriteria& criteria, int index) const {
    FbxConnectionPoint* point = ExistingPoint();
    FbxConnectionPoint* found = point ? point->FilteredAt(false, criteria, index) : nullptr;
    return found ? found->GetOwnerObject() : nullptr;
}

bool FbxProperty::ConnectSrcProperty(const FbxProperty& property, uint32_t connectType) {
    if (!IsValid() || !property.IsValid()) return false;
    return FbxConnectionPoint::Connect(property.GetConnectionPoint(), GetConnectionPoint(), connectType);
}

bool FbxProperty::IsConnectedSrcProperty(const FbxProperty& property) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point && point->IsConnectedSrc(property.ExistingPoint());
}

bool FbxProperty::DisconnectSrcProperty(const FbxProperty& property) {
    return FbxConnectionPoint::Disconnect(property.ExistingPoint(), ExistingPoint());
}

int FbxProperty::GetSrcPropertyCount(const FbxCriteria& criteria) const {
    return GetSrcObjectCount(FbxCriteria::And(criteria, FbxCriteria::IsProperty()));
}

FbxProperty FbxProperty::GetSrcProperty(const FbxCriteria& criteria, int index) const {
    FbxConnectionPoint* point = ExistingPoint();
    const FbxConnectionPoint* found =
        point ? point->FilteredAt(true, FbxCriteria::And(criteria, FbxCriteria::IsProperty()), index) : nullptr;
    return found ? FbxProperty(found->GetPage(), found->GetId()) : FbxProperty();
}

bool FbxProperty::ConnectDstProperty(const FbxProperty& property, uint32_t connectType) {
    if (!IsValid() || !property.IsValid()) return false;
    return FbxConnectionPoint::Connect(GetConnectionPoint(), property.GetConnectionPoint(), connectType);
}

bool FbxProperty::IsConnectedDstProperty(const FbxProperty& property) const {
    FbxConnectionPoint* point = ExistingPoint();
    return point && point->IsConnectedDst(property.ExistingPoint());
}

bool FbxProperty::DisconnectDstProperty(const FbxProperty& property) {
    return FbxConnectionPoint::Disconnect(ExistingPoint(), property.ExistingPoint());
}

int FbxProperty::GetDstPropertyCount(const FbxCriteria& criteria) const {
    return GetDstObjectCount(FbxCriteria::And(criteria, FbxCriteria::IsProperty()));
}

FbxProperty FbxProperty::GetDstProperty(const FbxCriteria& criteria, int index) const {
    FbxConnectionPoint* point = ExistingPoint();
    const FbxConnectionPoint* found =
        point ? point->FilteredAt(false, FbxCriteria::And(criteria, FbxCriteria::IsProperty()), index) : nullptr;
    return found ? FbxProperty(found->GetPage(), found->GetId()) : FbxProperty();
}

bool FbxProperty::MoveSrcObject(int from, int to) {
    FbxConnectionPoint* point = ExistingPoint();
    if (!point) return false;
    // Indexes count source objects; translate them to the plain list.
    int count = point->FilteredCount(true, FbxCriteria());
    if (from < 0 || from >= count || to < 0 || to >= count) return false;
    auto plainIndex = [&](int objectIndex) {
        int seen = -1;
        const auto& links = point->Sources();
        for (size_t i = 0; i < links.size(); ++i)
            if (links[i].point->IsObjectPoint() && ++seen == objectIndex) return static_cast<int>(i);
        return -1;
    };
    return point->MoveSrc(plainIndex(from), plainIndex(to));
}

void FbxProperty::BeginCreateOrFind() const {
    if (page_) page_->BeginCreateOrFind();
}

void FbxProperty::EndCreateOrFind() const {
    if (page_) page_->EndCreateOrFind();
}
