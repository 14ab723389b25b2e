#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fbx/model/fbx_data_type.h"
#include "fbx/model/fbx_property_value.h"
#include "qe/counted.h"

class FbxObject;
class FbxConnectionPoint;

// What a property is: name, data type, label, place in the tree, and for
// user properties limits and enum items. Shared by the pages that inherit
// it; a page that changes it takes its own copy first.
class FbxPropertyInfo : public qe::Counted {
public:
    FbxString name;
    FbxDataType dataType;
    FbxString label;
    int parentId = -1;
    bool hasMin = false;
    bool hasMax = false;
    double minLimit = 0.0;
    double maxLimit = 0.0;
    std::vector<FbxString> enumItems;

    FbxPropertyInfo* Clone() const;
};

// The store behind properties: one page per class holding its defaults,
// one per object holding only what the object changed. Each part of an
// entry (info, value, flags, connection point) is looked up by itself, on
// this page first and then up the chain of parent pages.
class FbxPropertyPage : public qe::Counted {
public:
    struct Entry {
        int id = -1;
        qe::Ref<FbxPropertyInfo> info;
        qe::Ref<FbxPropertyValue> value;
        uint32_t flagValue = 0;
        uint32_t flagMask = 0;
        qe::Ref<FbxConnectionPoint> point;

        bool Empty() const { return !info && !value && flagMask == 0 && !point; }
    };

    FbxPropertyPage(FbxPropertyPage* parent, FbxObject* owner);
    ~FbxPropertyPage() override;

    FbxPropertyPage* Parent() const { return parent_.get(); }
    FbxObject* Owner() const { return owner_; }
    void SetOwner(FbxObject* owner) { owner_ = owner; }

    // A new page with this one's entries (shared infos and values, flags)
    // but no connection points, as an instance of the same parent.
    FbxPropertyPage* Clone(FbxObject* owner) const;
    // Replaces this page's entries by those of another page, connection
    // points excepted; the page's own points stay.
    void CopyEntriesFrom(const FbxPropertyPage& other);

    // Entries of this page only.
    Entry* FindEntry(int id);
    const Entry* FindEntry(int id) const;
    Entry& GetOrAddEntry(int id);
    void RemoveEntryIfEmpty(int id);
    int EntryCount() const { return static_cast<int>(entries_.size()); }
    const std::vector<Entry>& Entries() const { return entries_; }

    // Parts looked up the chain.
    const FbxPropertyInfo* GetInfo(int id) const;
    // The value, with the page that holds it; null when none on the chain.
    FbxPropertyValue* GetValue(int id, const FbxPropertyPage** holder = nullptr) const;
    // Effective flags: (parent's effective flags & ~mask) | value.
    uint32_t GetFlags(int id) const;
    // This page's connection point for id (made on first need).
    FbxConnectionPoint* GetPoint(int id) const;
    FbxConnectionPoint* GetOrCreatePoint(int id);

    // The info of id on this page, copied from the chain first if it is
    // inherited, so that it can be changed. Null when id has no info.
    FbxPropertyInfo* GetOwnInfo(int id);
    // This page's own value of id, copied from the chain (or made) first,
    // never shared with another page. Null for types without storage.
    FbxPropertyValue* GetOwnValue(int id);
    void DropOwnValue(int id);
    void SetFlags(int id, uint32_t mask, bool on);

    // Adds a property under parentId with the next free id.
    int Add(int parentId, const char* name, FbxDataType type, const char* label);
    // Adds the root entry (id 0) that carries the page's name.
    void AddRoot(const char* name);

    // Children in id order, across the chain. -1 when there is none.
    int FirstChild(int parentId) const;
    int NextSibling(int id) const;
    int FindChild(int parentId, std::string_view name, bool caseSensitive) const;

    // Bracket bulk finds on an object's page (they nest): in between, the
    // page keeps a name index of its own properties, as class pages always
    // do, so that each find is a few binary searches along the chain.
    void BeginCreateOrFind();
    void EndCreateOrFind();

private:
    // One name of a page's index: the name views the text of an info held
    // by one of the page's own entries; the index is dropped whenever such
    // an info is replaced.
    struct IndexKey {
        int parentId;
        std::string_view name;
        bool operator==(const IndexKey&) const = default;
    };
    struct IndexHash {
        size_t operator()(const IndexKey& key) const;
    };
    // Each name maps to the smallest id it has. Hashed, so that a page that
    // gains many properties (a file can give one object any number) pays a
    // constant cost for each.
    using NameIndex = std::unordered_map<IndexKey, int, IndexHash>;

    // Class pages always keep an index; object pages only inside a bracket.
    bool IndexAllowed() const { return owner_ == nullptr || cacheDepth_ > 0; }
    const NameIndex& Index() const;
    // The smallest id of a child of that name on this page only, or -1.
    int FindOwnChild(int parentId, std::string_view name) const;
    int NextFreeId() const;
    // (parent id, id) of every property that has its info on this page,
    // sorted; made on first need and dropped when the page gains an info.
    using ChildIndex = std::vector<std::pair<int, int>>;
    const ChildIndex& Children() const;

    qe::Ref<FbxPropertyPage> parent_;
    FbxObject* owner_ = nullptr;
    std::vector<Entry> entries_;  // sorted by id
    int nextId_ = 0;
    int cacheDepth_ = 0;
    mutable std::unique_ptr<NameIndex> index_;
    mutable std::unique_ptr<ChildIndex> children_;
};
