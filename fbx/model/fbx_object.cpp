#include "fbx/model/fbx_object.h"

#include <atomic>
#include <cstring>

#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_deformer.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_property_page.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skin.h"

namespace {

std::atomic<FbxUInt64> gNextUniqueId{1};

// Makes the class pages of a class and of its ancestors that have none yet,
// each an instance of its parent class's page, and marks them for the
// declaration of their properties.
FbxPropertyPage* ensureClassPage(FbxClassRecord* record) {
    if (record->rootPage) return record->rootPage.get();
    FbxPropertyPage* parentPage =
        record->parent ? ensureClassPage(const_cast<FbxClassRecord*>(record->parent)) : nullptr;
    auto* page = new FbxPropertyPage(parentPage, nullptr);
    page->AddRoot(record->name.c_str());
    record->rootPage = qe::Ref<FbxPropertyPage>(page);
    record->declaring = true;
    return page;
}

}  // namespace

FbxClassId FbxObject::ClassId;

FbxObject* FbxObject::Create(FbxManager* manager, const char* name) { return CreateOfClass(manager, ClassId, name); }

FbxObject* FbxObject::Create(FbxObject* container, const char* name) {
    return CreateInContainer(container, ClassId, name);
}

FbxObject* FbxObject::Allocate(FbxManager& manager, const char* name, const FbxObject*) {
    return new FbxObject(manager, name);
}

FbxObject* FbxObject::CreateOfClass(FbxManager* manager, FbxClassId classId, const char* name) {
    return manager ? manager->CreateObject(classId, name) : nullptr;
}

FbxObject* FbxObject::CreateInContainer(FbxObject* container, FbxClassId classId, const char* name) {
    if (!container || !container->manager_) return nullptr;
    return container->manager_->CreateObject(classId, name, container);
}

FbxObject::FbxObject(FbxManager& manager, const char* name)
    : initialName_(name ? name : ""),
      name_(name ? name : ""),
      manager_(&manager),
      uniqueId_(gNextUniqueId.fetch_add(1)) {}

FbxObject::~FbxObject() = default;

void FbxObject::Construct(const FbxObject* from) {
    FbxClassRecord* record = GetClassId().Record();
    if (!record) return;
    ++record->instanceCount;
    FbxPropertyPage* classPage = ensureClassPage(record);
    bool first = record->declaring;
    if (from && from->GetClassId() == GetClassId() && from->page_) {
        page_ = qe::Ref<FbxPropertyPage>(from->page_->Clone(this));
        flags_ = from->flags_;
    } else {
        page_ = qe::Ref<FbxPropertyPage>(new FbxPropertyPage(classPage, this));
    }
    ConstructProperties(first);
    for (FbxClassRecord* r = record; r; r = const_cast<FbxClassRecord*>(r->parent)) r->declaring = false;
}

void FbxObject::ConstructProperties(bool) {}

bool FbxObject::OwnsSource(const FbxObject* source, bool recursive) const {
    auto is = [](const FbxObject* o, FbxClassId c) { return c.IsValid() && o->GetClassId().Is(c); };
    if (is(this, FbxScene::ClassId)) return true;
    if (is(this, FbxNode::ClassId)) {
        if (is(source, FbxNodeAttribute::ClassId))
            return source->GetDstObjectCount(FbxCriteria::ObjectType(FbxNode::ClassId)) < 2;
        if (is(source, FbxConstraint::ClassId) || is(source, FbxDeformer::ClassId)) return true;
    }
    if (is(this, FbxGeometry::ClassId) &&
        (is(source, FbxDeformer::ClassId) || is(source, FbxGeometryWeightedMap::ClassId)))
        return true;
    if (is(this, FbxSkin::ClassId) && is(source, FbxCluster::ClassId)) return true;
    return recursive;
}

void FbxObject::Destroy(bool recursive) {
    if (destroying_) return;
    // Owned sources go first, each with what it owns in turn, depth first
    // and from the last source to the first. The walk keeps its own stack:
    // connections read from a file can chain owners (scenes inside scenes)
    // to any depth.
    struct Step {
        FbxObject* object;
        int next;  // the source to look at next, counting down
    };
    std::vector<Step> stack;
    auto begin = [&stack](FbxObject* object) {
        if (object->manager_) object->manager_->UnregisterObject(object);
        object->destroying_ = true;
        const FbxConnectionPoint* point = object->page_ ? object->page_->GetPoint(0) : nullptr;
        // The manager's teardown deletes every object itself.
        bool walk = point && !(object->manager_ && object->manager_->IsDestroyingAll());
        stack.push_back({object, walk ? static_cast<int>(point->Sources().size()) - 1 : -1});
    };
    begin(this);
    while (!stack.empty()) {
        Step& step = stack.back();
        if (FbxObject* owned = step.object->NextOwnedSource(step.next, recursive)) {
            begin(owned);
            continue;
        }
        FbxObject* done = step.object;
        stack.pop_back();
        done->Destruct(recursive);
        delete done;
    }
}

FbxObject* FbxObject::NextOwnedSource(int& index, bool recursive) const {
    const FbxConnectionPoint* point = page_ ? page_->GetPoint(0) : nullptr;
    if (!point) return nullptr;
    // A destroyed source can take others with it: the index is clamped to
    // what is left.
    while (index >= 0) {
        int count = static_cast<int>(point->Sources().size());
        if (index >= count) {
            index = count - 1;
            continue;
        }
        const FbxConnectionPoint* src = point->Sources()[static_cast<size_t>(index)].point;
        --index;
        FbxObject* object = src->IsObjectPoint() ? src->GetOwnerObject() : nullptr;
        if (object && object != this && !object->destroying_ && OwnsSource(object, recursive)) return object;
    }
    return nullptr;
}

void FbxObject::Destruct(bool) {
    destroying_ = true;
    if (page_) {
        for (const FbxPropertyPage::Entry& e : page_->Entries())
            if (e.point) e.point->DisconnectAll();
    }
    userData_.clear();
    FbxClassRecord* record = GetClassId().Record();
    page_.reset();
    if (record && --record->instanceCount <= 0) {
        record->instanceCount = 0;
        // The class page goes with its last instance, unless pages of
        // subclasses still stand on it.
        if (record->rootPage && record->rootPage->refCount() == 1) record->rootPage.reset();
    }
}

void FbxObject::SetInitialName(const char* name) {
    initialName_ = name ? name : "";
    name_ = initialName_;
}

FbxString FbxObject::GetNameWithPrefix() const {
    FbxString result = GetClassId().GetObjectTypePrefix(true);
    result += name_;
    return result;
}

std::vector<FbxString> FbxObject::GetNameSpaceArray(char separator) const {
    std::vector<FbxString> parts;
    if (nameSpace_.empty()) return parts;
    size_t begin = 0;
    while (true) {
        size_t pos = nameSpace_.find(separator, begin);
        parts.push_back(nameSpace_.substr(begin, pos == FbxString::npos ? FbxString::npos : pos - begin));
        if (pos == FbxString::npos) break;
        begin = pos + 1;
    }
    return {parts.rbegin(), parts.rend()};
}

FbxString FbxObject::StripPrefix(const char* name) {
    if (!name) return FbxString();
    const char* p = std::strstr(name, "::");
    return p ? FbxString(p + 2) : FbxString(name);
}

void FbxObject::SetUserDataPtr(FbxUInt64 id, void* data) {
    for (auto& pair : userData_) {
        if (pair.first == id) {
            pair.second = data;
            return;
        }
    }
    userData_.emplace_back(id, data);
}

void* FbxObject::GetUserDataPtr(FbxUInt64 id) const {
    for (const auto& pair : userData_)
        if (pair.first == id) return pair.second;
    return nullptr;
}

bool FbxObject::SetReferenceTo(FbxObject* object) {
    if (object && !IsConnectedSrcObject(object) && !IsConnectedDstObject(object)) return false;
    referenceTo_ = object;
    return true;
}

FbxDocument* FbxObject::GetOwnerDocument() const {
    return static_cast<FbxDocument*>(GetDstObject(FbxCriteria::ObjectType(FbxDocument::ClassId), 0));
}

FbxDocument* FbxObject::GetDocument() const {
    FbxDocument* document = GetOwnerDocument();
    if (!document) return Is(FbxDocument::ClassId) ? static_cast<FbxDocument*>(const_cast<FbxObject*>(this)) : nullptr;
    // Walk up; a cycle of documents ends the walk after as many steps as
    // there are objects.
    int limit = manager_ ? manager_->GetObjectCount() + manager_->GetDocumentCount() + 1 : 1 << 20;
    while (limit-- > 0) {
        FbxDocument* parent = document->GetOwnerDocument();
        if (!parent || parent == document) break;
        document = parent;
    }
    return document;
}

FbxScene* FbxObject::GetScene() const {
    return static_cast<FbxScene*>(GetDstObject(FbxCriteria::ObjectType(FbxScene::ClassId), 0));
}

FbxProperty FbxObject::GetPropertyById(int id) const {
    FbxProperty p(page_.get(), id);
    return p.IsValid() ? p : FbxProperty();
}

FbxProperty FbxObject::GetNextProperty(const FbxProperty& property) const {
    if (property.GetPage() != page_.get()) return FbxProperty();
    return property.GetSibling();
}

FbxProperty FbxObject::FindProperty(const char* name, bool caseSensitive) const {
    return GetRootProperty().Find(name, caseSensitive);
}

FbxProperty FbxObject::FindProperty(const char* name, const FbxDataType& dataType, bool caseSensitive) const {
    FbxProperty p = FindProperty(name, caseSensitive);
    return p.IsValid() && p.GetPropertyDataType() == dataType ? p : FbxProperty();
}

bool FbxObject::CopyFrom(const FbxObject& other) {
    if (&other == this) return true;
    if (other.GetClassId() != GetClassId() || !page_ || !other.page_) return false;
    flags_ = other.flags_;
    initialName_ = other.initialName_;
    name_ = other.name_;
    nameSpace_ = other.nameSpace_;
    page_->CopyEntriesFrom(*other.page_);
    return true;
}

FbxObject* FbxObject::Clone(FbxObject* container) const {
    if (!manager_) return nullptr;
    return manager_->CreateObject(GetClassId(), GetName(), container, this);
}

bool FbxObject::ConnectNotify(const FbxConnectEvent&) { return true; }

bool FbxObject::PropertyNotify(EPropertyNotifyType, const FbxProperty&) { return true; }
