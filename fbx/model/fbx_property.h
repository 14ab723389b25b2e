#pragma once

#include <cstdint>

#include "fbx/model/fbx_criteria.h"
#include "fbx/model/fbx_data_type.h"
#include "fbx/model/fbx_type_traits.h"

class FbxAnimCurveNode;
class FbxAnimLayer;
class FbxObject;
class FbxPropertyPage;
class FbxConnectionPoint;

// Property flag values; the letters are those of a file's flag strings.
struct FbxPropertyFlags {
    enum EFlags : uint32_t {
        eNone = 0,
        eAnimatable = 2,    // "A"
        eAnimated = 4,      // "+": a curve node is connected
        eImported = 8,      // made by the reader
        eUserDefined = 16,  // "U"
        eHidden = 32,       // "H"
        eLockedMember0 = 0x80,
        eLockedMember1 = 0x100,
        eLockedMember2 = 0x200,
        eLockedMember3 = 0x400,
        eLockedAll = 0x780,  // "L" and a digit
        eMutedMember0 = 0x800,
        eMutedMember1 = 0x1000,
        eMutedMember2 = 0x2000,
        eMutedMember3 = 0x4000,
        eMutedAll = 0x7800,    // "M" and a digit
        eAllFlags = 0x7FFFFF,  // the low 23 bits
    };
};

// A handle to a property: a page and an id. A handle without a page, with
// id -1, or with an id that has no info on the page's chain is invalid;
// every operation on an invalid handle gives false, 0, "" or an invalid
// handle and does nothing.
class FbxProperty {
public:
    // Where a value lives, as ValueOwner tells.
    enum EValueOwner { eNoValue, eOwnValue, eInheritedValue };

    FbxProperty() = default;
    FbxProperty(FbxPropertyPage* page, int id) : page_(page), id_(id) {}

    // Makes a property: under `parent`, or at the root of `object`. With
    // checkExisting, an existing child of that name is returned (whatever
    // its type) and *wasFound set.
    static FbxProperty Create(const FbxProperty& parent, const FbxDataType& dataType, const char* name,
                              const char* label = "", bool checkExisting = true, bool* wasFound = nullptr);
    static FbxProperty Create(FbxObject* object, const FbxDataType& dataType, const char* name, const char* label = "",
                              bool checkExisting = true, bool* wasFound = nullptr);
    // Declares a property with its default value and flags; used by classes
    // on their class root property the first time they are instantiated.
    template <class T>
    static FbxProperty Declare(const FbxProperty& parent, const char* name, const FbxDataType& dataType,
                               const T& defaultValue, uint32_t flags = 0) {
        FbxProperty p = Create(parent, dataType, name);
        p.Set(defaultValue, false);
        if (flags) p.SetFlag(flags, true);
        return p;
    }

    bool IsValid() const;
    explicit operator bool() const { return IsValid(); }
    FbxPropertyPage* GetPage() const { return page_; }
    int GetId() const { return id_; }
    bool IsRoot() const { return id_ == 0; }
    // The object whose page this is; null for a class page.
    FbxObject* GetFbxObject() const;

    const char* GetName() const;
    // The path from below the root: "Parent|Child".
    FbxString GetHierarchicalName() const;
    const char* GetLabel() const;
    bool SetLabel(const char* label);
    FbxDataType GetPropertyDataType() const;

    // Effective flags, inherited and overridden along the pages.
    uint32_t GetFlags() const;
    bool GetFlag(uint32_t mask) const { return (GetFlags() & mask) != 0; }
    bool SetFlag(uint32_t mask, bool on);
    // The flag bits that this page sets itself (rather than inherits), and
    // their values.
    uint32_t GetOwnFlagMask() const;
    uint32_t GetOwnFlagValue() const;

    // Copies the value out, converted to `type`; false (target unchanged)
    // when there is no value or no conversion.
    bool Get(void* value, EFbxType type) const;
    template <class T>
    requires requires { FbxTypeOf<T>::value; }
    bool Get(T& value) const { return Get(&value, FbxTypeOf<T>::value); }
    // The value as T, or T{} when it cannot be read.
    template <class T>
    T Get() const {
        T value{};
        Get(&value, FbxTypeOf<T>::value);
        return value;
    }

    // Writes a value given as `type`. With `check`, a value equal to the
    // one inherited from the parent page leaves (or puts) the property back
    // to inherited. An owner with flag 1 hears of it through PropertyNotify,
    // and can cancel it.
    bool Set(const void* value, EFbxType type, bool check = true);
    template <class T>
    requires requires { FbxTypeOf<T>::value; }
    bool Set(const T& value, bool check = true) { return Set(&value, FbxTypeOf<T>::value, check); }
    bool Set(const char* value, bool check = true) {
        FbxString s(value ? value : "");
        return Set(&s, eFbxString, check);
    }

    // Where the value lives: on this page, or inherited. With `deep`, a
    // value on any object page of the chain counts as own, and only a class
    // default counts as inherited.
    EValueOwner ValueOwner(bool deep = false) const;
    // Copies another property's value (sharing it when the types match).
    bool CopyValue(const FbxProperty& from);

    // Tree.
    FbxProperty GetParent() const;
    FbxProperty GetChild() const;
    FbxProperty GetSibling() const;
    FbxProperty Find(const char* name, bool caseSensitive = true) const;

    // Limits and enum items, for user properties.
    bool SetMinLimit(double value);
    bool SetMaxLimit(double value);
    bool HasMinLimit() const;
    bool HasMaxLimit() const;
    double GetMinLimit() const;
    double GetMaxLimit() const;
    // Appends an item; its index, or -1.
    int AddEnumValue(const char* name);
    // "" for an index out of range.
    const char* GetEnumValue(int index) const;
    int GetEnumCount() const;

    // Connections. A null criteria lists all objects (or all properties).
    bool ConnectSrcObject(FbxObject* object, uint32_t connectType = 0);
    bool IsConnectedSrcObject(const FbxObject* object) const;
    bool DisconnectSrcObject(FbxObject* object);
    bool DisconnectAllSrcObject(const FbxCriteria& criteria = FbxCriteria());
    int GetSrcObjectCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxObject* GetSrcObject(const FbxCriteria& criteria, int index) const;
    FbxObject* GetSrcObject(int index = 0) const { return GetSrcObject(FbxCriteria(), index); }
    FbxObject* FindSrcObject(const FbxCriteria& criteria, const char* name, int startIndex = 0) const;

    bool ConnectDstObject(FbxObject* object, uint32_t connectType = 0);
    bool IsConnectedDstObject(const FbxObject* object) const;
    bool DisconnectDstObject(FbxObject* object);
    int GetDstObjectCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxObject* GetDstObject(const FbxCriteria& criteria, int index) const;
    FbxObject* GetDstObject(int index = 0) const { return GetDstObject(FbxCriteria(), index); }

    bool ConnectSrcProperty(const FbxProperty& property, uint32_t connectType = 0);
    bool IsConnectedSrcProperty(const FbxProperty& property) const;
    bool DisconnectSrcProperty(const FbxProperty& property);
    int GetSrcPropertyCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxProperty GetSrcProperty(const FbxCriteria& criteria, int index) const;
    FbxProperty GetSrcProperty(int index = 0) const { return GetSrcProperty(FbxCriteria(), index); }

    bool ConnectDstProperty(const FbxProperty& property, uint32_t connectType = 0);
    bool IsConnectedDstProperty(const FbxProperty& property) const;
    bool DisconnectDstProperty(const FbxProperty& property);
    int GetDstPropertyCount(const FbxCriteria& criteria = FbxCriteria()) const;
    FbxProperty GetDstProperty(const FbxCriteria& criteria, int index) const;
    FbxProperty GetDstProperty(int index = 0) const { return GetDstProperty(FbxCriteria(), index); }

    // The curve node that animates this property in `layer`, found through
    // the cache of the manager's evaluator; with `create`, a missing one is
    // made with a channel per component, connected to the layer and to this
    // property. Null for an invalid property, one without owner, or no layer.
    FbxAnimCurveNode* GetCurveNode(FbxAnimLayer* layer, bool create = false) const;

    // Moves the source object at `from` to position `to` of the sources.
    bool MoveSrcObject(int from, int to);

    // The connection point, made on demand (null for an invalid handle).
    FbxConnectionPoint* GetConnectionPoint() const;
    // Type bits of the point (see FbxConnectionPoint::EType).
    bool SetConnectionPointType(uint32_t typeBits);

    // Name cache for bulk finds and creations on this page.
    void BeginCreateOrFind() const;
    void EndCreateOrFind() const;

    friend bool operator==(const FbxProperty&, const FbxProperty&) = default;

private:
    FbxConnectionPoint* ExistingPoint() const;

    FbxPropertyPage* page_ = nullptr;
    int id_ = -1;
};

// A property handle that knows the value type its users read and write, for
// classes that hand out their properties: `FbxPropertyT<FbxDouble3>`.
template <class T>
class FbxPropertyT : public FbxProperty {
public:
    FbxPropertyT() = default;
    FbxPropertyT(const FbxProperty& property) : FbxProperty(property) {}

    // The value, or T{} when it cannot be read.
    T Get() const { return FbxProperty::Get<T>(); }
    bool Set(const T& value, bool check = true) { return FbxProperty::Set(value, check); }
};
