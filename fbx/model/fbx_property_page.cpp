#include "fbx/model/fbx_property_page.h"

#include <algorithm>
#include <climits>

#include "fbx/model/fbx_connection_point.h"

namespace {

bool sameName(std::string_view a, std::string_view b, bool caseSensitive) {
    if (a.size() != b.size()) return false;
    if (caseSensitive) return a == b;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

}  // namespace

size_t FbxPropertyPage::IndexHash::operator()(const IndexKey& key) const {
    return std::hash<std::string_view>()(key.name) * 31 + static_cast<size_t>(key.parentId);
}

FbxPropertyInfo* FbxPropertyInfo::Clone() const {
    auto* info = new FbxPropertyInfo;
    info->name = name;
    info->dataType = dataType;
    info->label = label;
    info->parentId = parentId;
    info->hasMin = hasMin;
    info->hasMax = hasMax;
    info->minLimit = minLimit;
    info->maxLimit = maxLimit;
    info->enumItems = enumItems;
    return info;
}

FbxPropertyPage::FbxPropertyPage(FbxPropertyPage* parent, FbxObject* owner) : parent_(parent), owner_(owner) {}

FbxPropertyPage::~FbxPropertyPage() {
    // Points go with their entries; each undoes its connections first.
    for (Entry& e : entries_)
        if (e.point) e.point->DisconnectAll();
}

FbxPropertyPage* FbxPropertyPage::Clone(FbxObject* owner) const {
    auto* page = new FbxPropertyPage(parent_.get(), owner);
    page->CopyEntriesFrom(*this);
    return page;
}

void FbxPropertyPage::CopyEntriesFrom(const FbxPropertyPage& other) {
    if (&other == this) return;
    std::vector<Entry> kept;
    for (Entry& e : entries_) {
        if (!e.point) continue;
        Entry k;
        k.id = e.id;
        k.point = std::move(e.point);
        kept.push_back(std::move(k));
    }
    entries_.clear();
    for (const Entry& e : other.entries_) {
        if (!e.info && !e.value && e.flagMask == 0) continue;
        Entry copy;
        copy.id = e.id;
        copy.info = e.info;
        copy.value = e.value;
        copy.flagValue = e.flagValue;
        copy.flagMask = e.flagMask;
        entries_.push_back(std::move(copy));
    }
    for (Entry& k : kept) GetOrAddEntry(k.id).point = std::move(k.point);
    nextId_ = std::max(nextId_, other.nextId_);
    index_.reset();
    children_.reset();
}

FbxPropertyPage::Entry* FbxPropertyPage::FindEntry(int id) {
    // Class pages hold dense ids from 0: the entry of id is then at index id.
    if (id >= 0 && static_cast<size_t>(id) < entries_.size() && entries_[static_cast<size_t>(id)].id == id)
        return &entries_[static_cast<size_t>(id)];
    auto it = std::lower_bound(entries_.begin(), entries_.end(), id, [](const Entry& e, int v) { return e.id < v; });
    return it != entries_.end() && it->id == id ? &*it : nullptr;
}

const FbxPropertyPage::Entry* FbxPropertyPage::FindEntry(int id) const {
    return const_cast<FbxPropertyPage*>(this)->FindEntry(id);
}

FbxPropertyPage::Entry& FbxPropertyPage::GetOrAddEntry(int id) {
    auto it = std::lower_bound(entries_.begin(), entries_.end(), id, [](const Entry& e, int v) { return e.id < v; });
    if (it != entries_.end() && it->id == id) return *it;
    Entry e;
    e.id = id;
    return *entries_.insert(it, std::move(e));
}

void FbxPropertyPage::RemoveEntryIfEmpty(int id) {
    auto it = std::lower_bound(entries_.begin(), entries_.end(), id, [](const Entry& e, int v) { return e.id < v; });
    if (it != entries_.end() && it->id == id && it->Empty()) entries_.erase(it);
}

const FbxPropertyInfo* FbxPropertyPage::GetInfo(int id) const {
    for (const FbxPropertyPage* p = this; p; p = p->parent_.get())
        if (const Entry* e = p->FindEntry(id); e && e->info) return e->info.get();
    return nullptr;
}

FbxPropertyValue* FbxPropertyPage::GetValue(int id, const FbxPropertyPage** holder) const {
    for (const FbxPropertyPage* p = this; p; p = p->parent_.get()) {
        if (const Entry* e = p->FindEntry(id); e && e->value) {
            if (holder) *holder = p;
            return e->value.get();
        }
    }
    if (holder) *holder = nullptr;
    return nullptr;
}

uint32_t FbxPropertyPage::GetFlags(int id) const {
    uint32_t inherited = parent_ ? parent_->GetFlags(id) : 0;
    const Entry* e = FindEntry(id);
    if (!e) return inherited;
    return (inherited & ~e->flagMask) | (e->flagValue & e->flagMask);
}

FbxConnectionPoint* FbxPropertyPage::GetPoint(int id) const {
    const Entry* e = FindEntry(id);
    return e ? e->point.get() : nullptr;
}

FbxConnectionPoint* FbxPropertyPage::GetOrCreatePoint(int id) {
    Entry& e = GetOrAddEntry(id);
    if (!e.point) e.point = qe::Ref<FbxConnectionPoint>(new FbxConnectionPoint(this, id));
    return e.point.get();
}

FbxPropertyInfo* FbxPropertyPage::GetOwnInfo(int id) {
    if (Entry* e = FindEntry(id); e && e->info) {
        if (e->info->refCount() > 1) {
            e->info = qe::Ref<FbxPropertyInfo>(e->info->Clone());
            index_.reset();
        }
        return e->info.get();
    }
    const FbxPropertyInfo* inherited = GetInfo(id);
    if (!inherited) return nullptr;
    Entry& e = GetOrAddEntry(id);
    e.info = qe::Ref<FbxPropertyInfo>(inherited->Clone());
    index_.reset();
    children_.reset();
    return e.info.get();
}

FbxPropertyValue* FbxPropertyPage::GetOwnValue(int id) {
    if (Entry* e = FindEntry(id); e && e->value) {
        if (e->value->refCount() > 1) e->value = qe::Ref<FbxPropertyValue>(e->value->Clone());
        return e->value.get();
    }
    FbxPropertyValue* inherited = GetValue(id);
    FbxPropertyValue* own = nullptr;
    if (inherited) {
        own = inherited->Clone();
    } else {
        const FbxPropertyInfo* info = GetInfo(id);
        if (!info) return nullptr;
        own = FbxPropertyValue::Create(info->dataType.GetType());
        if (!own) return nullptr;
    }
    Entry& e = GetOrAddEntry(id);
    e.value = qe::Ref<FbxPropertyValue>(own);
    return own;
}

void FbxPropertyPage::DropOwnValue(int id) {
    if (Entry* e = FindEntry(id); e && e->value) {
        e->value.reset();
        RemoveEntryIfEmpty(id);
    }
}

void FbxPropertyPage::SetFlags(int id, uint32_t mask, bool on) {
    Entry& e = GetOrAddEntry(id);
    e.flagMask |= mask;
    e.flagValue = (e.flagValue & ~mask) | (on ? mask : 0u);
    // Bits that now equal the inherited ones need no entry.
    uint32_t inherited = parent_ ? parent_->GetFlags(id) : 0;
    uint32_t same = ~(e.flagValue ^ inherited) & mask;
    e.flagMask &= ~same;
    e.flagValue &= e.flagMask;
    if (e.flagMask == 0) RemoveEntryIfEmpty(id);
}

int FbxPropertyPage::NextFreeId() const {
    int next = nextId_;
    for (const FbxPropertyPage* p = parent_.get(); p; p = p->parent_.get()) next = std::max(next, p->nextId_);
    return std::max(next, 1);
}

int FbxPropertyPage::Add(int parentId, const char* name, FbxDataType type, const char* label) {
    int id = NextFreeId();
    nextId_ = id + 1;
    auto* info = new FbxPropertyInfo;
    info->name = name ? name : "";
    info->dataType = type;
    if (label) info->label = label;
    info->parentId = parentId;
    Entry& e = GetOrAddEntry(id);
    e.info = qe::Ref<FbxPropertyInfo>(info);
    if (FbxPropertyValue* value = FbxPropertyValue::Create(type.GetType())) e.value = qe::Ref<FbxPropertyValue>(value);
    // A name already there keeps its smaller id.
    if (index_) index_->emplace(IndexKey{parentId, info->name}, id);
    children_.reset();
    return id;
}

void FbxPropertyPage::AddRoot(const char* name) {
    auto* info = new FbxPropertyInfo;
    info->name = name ? name : "";
    info->dataType = FbxCompoundDT;
    GetOrAddEntry(0).info = qe::Ref<FbxPropertyInfo>(info);
    nextId_ = std::max(nextId_, 1);
    children_.reset();
}

const FbxPropertyPage::ChildIndex& FbxPropertyPage::Children() const {
    if (children_) return *children_;
    // Most object pages hold values and no infos of their own.
    static const ChildIndex kNone;
    size_t infos = 0;
    for (const Entry& e : entries_) infos += e.info ? 1 : 0;
    if (infos == 0) return kNone;
    children_ = std::make_unique<ChildIndex>();
    children_->reserve(infos);
    for (const Entry& e : entries_)
        if (e.info && e.id != e.info->parentId) children_->emplace_back(e.info->parentId, e.id);
    std::sort(children_->begin(), children_->end());
    return *children_;
}

int FbxPropertyPage::FirstChild(int parentId) const {
    // The smallest child id of any page on the chain; each page finds its
    // own by a binary search, so that a walk of a large tree stays linear.
    int best = INT_MAX;
    for (const FbxPropertyPage* p = this; p; p = p->parent_.get()) {
        const ChildIndex& children = p->Children();
        auto it = std::lower_bound(children.begin(), children.end(), std::make_pair(parentId, INT_MIN));
        if (it != children.end() && it->first == parentId) best = std::min(best, it->second);
    }
    return best == INT_MAX ? -1 : best;
}

int FbxPropertyPage::NextSibling(int id) const {
    const FbxPropertyInfo* info = GetInfo(id);
    if (!info || id == 0) return -1;
    int parentId = info->parentId;
    int best = INT_MAX;
    for (const FbxPropertyPage* p = this; p; p = p->parent_.get()) {
        const ChildIndex& children = p->Children();
        auto it = std::upper_bound(children.begin(), children.end(), std::make_pair(parentId, id));
        if (it != children.end() && it->first == parentId) best = std::min(best, it->second);
    }
    return best == INT_MAX ? -1 : best;
}

int FbxPropertyPage::FindChild(int parentId, std::string_view name, bool caseSensitive) const {
    int best = INT_MAX;
    for (const FbxPropertyPage* p = this; p; p = p->parent_.get()) {
        if (caseSensitive) {
            int id = p->FindOwnChild(parentId, name);
            if (id >= 0 && id < best) best = id;
            continue;
        }
        for (const Entry& e : p->entries_) {
            if (e.id >= best) break;
            if (e.info && e.info->parentId == parentId && e.id != parentId &&
                sameName(e.info->name, name, caseSensitive)) {
                best = e.id;
                break;
            }
        }
    }
    return best == INT_MAX ? -1 : best;
}

int FbxPropertyPage::FindOwnChild(int parentId, std::string_view name) const {
    if (IndexAllowed()) {
        const NameIndex& index = Index();
        auto it = index.find(IndexKey{parentId, name});
        return it != index.end() ? it->second : -1;
    }
    // An object page outside a bracket: its own properties are few.
    for (const Entry& e : entries_)
        if (e.info && e.id != 0 && e.info->parentId == parentId && e.info->name == name) return e.id;
    return -1;
}

const FbxPropertyPage::NameIndex& FbxPropertyPage::Index() const {
    if (index_) return *index_;
    index_ = std::make_unique<NameIndex>();
    index_->reserve(entries_.size());
    // Entries come in id order: the first of a name keeps it.
    for (const Entry& e : entries_)
        if (e.info && e.id != 0) index_->emplace(IndexKey{e.info->parentId, e.info->name}, e.id);
    return *index_;
}

void FbxPropertyPage::BeginCreateOrFind() { ++cacheDepth_; }

void FbxPropertyPage::EndCreateOrFind() {
    if (cacheDepth_ == 0) return;
    if (--cacheDepth_ == 0 && owner_) index_.reset();
}
