#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "fbx/model/fbx_class_id.h"
#include "fbx/model/fbx_criteria.h"
#include "fbx/model/fbx_property.h"
#include "fbx/model/fbx_property_page.h"
#include "fbx/model/fbx_string.h"
#include "fbx/model/fbx_types.h"
#include "qe/dlist_item.h"

class FbxManager;
class FbxDocument;
class FbxScene;
struct FbxConnectEvent;

// Declares what every document class has: its class id, its Create forms
// and the allocation that the class registry calls. Classes write their
// constructor `Class(FbxManager&, const char*)` in their .cpp; members that
// follow the macro are protected until the class says otherwise.
#define KIVA_FBX_OBJECT_DECLARE(Class, Parent) \
public: \
    using ParentClass = Parent; \
    static FbxClassId ClassId; \
    static Class* Create(FbxManager* manager, const char* name); \
    static Class* Create(FbxObject* container, const char* name); \
    static FbxObject* Allocate(FbxManager& manager, const char* name, const FbxObject* from); \
    FbxClassId GetRuntimeClassId() const override { return ClassId; } \
\
protected: \
    Class(FbxManager& manager, const char* name);

// Defines the members that KIVA_FBX_OBJECT_DECLARE declares.
#define KIVA_FBX_OBJECT_IMPLEMENT(Class) \
    FbxClassId Class::ClassId; \
    Class* Class::Create(FbxManager* manager, const char* name) { \
        return static_cast<Class*>(FbxObject::CreateOfClass(manager, ClassId, name)); \
    } \
    Class* Class::Create(FbxObject* container, const char* name) { \
        return static_cast<Class*>(FbxObject::CreateInContainer(container, ClassId, name)); \
    } \
    FbxObject* Class::Allocate(FbxManager& manager, const char* name, const FbxObject*) { \
        return new Class(manager, name); \
    }

// The same for a class that cannot be instantiated: Create gives null.
#define KIVA_FBX_OBJECT_IMPLEMENT_ABSTRACT(Class) \
    FbxClassId Class::ClassId; \
    Class* Class::Create(FbxManager*, const char*) { return nullptr; } \
    Class* Class::Create(FbxObject*, const char*) { return nullptr; } \
    FbxObject* Class::Allocate(FbxManager&, const char*, const FbxObject*) { return nullptr; }

struct FbxManagerListTag;

// Base of every document object: names, class, flags, user data, a root
// property under which all properties live, and connections (those of the
// root property). Objects are made by their class's Create and end with
// Destroy(); the manager destroys whatever is left.
class FbxObject : private qe::DListItem<FbxObject, FbxManagerListTag> {
public:
    using ParentClass = void;
    static FbxClassId ClassId;
    static FbxObject* Create(FbxManager* manager, const char* name);
    static FbxObject* Create(FbxObject* container, const char* name);
    static FbxObject* Allocate(FbxManager& manager, const char* name, const FbxObject* from);

    // Object flag values.
    enum EObjectFlag : uint32_t {
        eNotifyPropertyChanges = 1,  // PropertyNotify hears of value changes
        eSystemFlag = 2,             // set on the library documents
        eSelected = 8,
        eContentLoaded = 32,
        eInitialFlags = 0x24,
    };
    enum EPropertyNotifyType { ePropertySetRequest = 0, ePropertySet = 1 };

    FbxObject(const FbxObject&) = delete;
    FbxObject& operator=(const FbxObject&) = delete;

    // Destroys the object and the sources that it owns: a scene owns all;
    // a node owns its deformers, constraints and the attributes that no
    // other node uses; a geometry its deformers and weighted maps; a skin
    // its clusters; any other owner its sources only with `recursive`.
    void Destroy(bool recursive = false);

    virtual FbxClassId GetRuntimeClassId() const { return ClassId; }
    // The class id stored at creation, or else the run-time one.
    FbxClassId GetClassId() const { return classId_.IsValid() ? classId_ : GetRuntimeClassId(); }
    bool Is(FbxClassId classId) const { return GetClassId().Is(classId); }
    template <class T>
    bool Is() const {
        return Is(T::ClassId);
    }

    FbxManager* GetFbxManager() const { return manager_; }
    FbxUInt64 GetUniqueID() const { return uniqueId_; }

    // Names.
    const char* GetName() const { return name_.c_str(); }
    const char* GetInitialName() const { return initialName_.c_str(); }
    void SetName(const char* name) { name_ = name ? name : ""; }
    void SetInitialName(const char* name);
    const char* GetNameSpace() const { return nameSpace_.c_str(); }
    void SetNameSpace(const char* space) { nameSpace_ = space ? space : ""; }
    // The class's prefix (or the nearest ancestor's) and the name.
    FbxString GetNameWithPrefix() const;
    // The name space split at `separator` from the right, innermost first.
    std::vector<FbxString> GetNameSpaceArray(char separator) const;
    // The part behind the first "::", or the name itself.
    static FbxString StripPrefix(const char* name);

    // Flags.
    bool GetFlag(uint32_t mask) const { return (flags_ & mask) != 0; }
    void SetFlag(uint32_t mask, bool on) { flags_ = on ? (flags_ | mask) : (flags_ & ~mask); }
    uint32_t GetFlags() const { return flags_; }
    virtual bool GetSelected() const { return GetFlag(eSelected); }
    virtual void SetSelected(bool selected) { SetFlag(eSelected, selected); }
    int GetContentLockCount() const { return contentLockCount_; }

    // User data: pairs of id and pointer, not owned.
    void SetUserDataPtr(FbxUInt64 id, void* data);
    void* GetUserDataPtr(FbxUInt64 id) const;

    // The object of which this one is a reference (connected to it).
    FbxObject* GetReferenceTo() const { return referenceTo_; }
    bool SetReferenceTo(FbxObject* object);

    // Documents.
    FbxDocument* GetOwnerDocument() const;
    FbxDocument* GetDocument() const;
    FbxScene* GetScene() const;

    // Properties.
    FbxProperty GetRootProperty() const { return FbxProperty(page_.get(), 0); }
    FbxProperty GetPropertyById(int id) const;
    FbxProperty GetFirstProperty() const { return GetRootProperty().GetChild(); }
    FbxProperty GetNextProperty(const FbxProperty& property) const;
    // Finds by name or by "Parent|Child" path.
    FbxProperty FindProperty(const char* name, bool caseSensitive = true) const;
    // The same, and only when the property has that data type.
    FbxProperty FindProperty(const char* name, const FbxDataType& dataType, bool caseSensitive = true) const;
    void BeginCreateOrFind() { GetRootProperty().BeginCreateOrFind(); }
    void EndCreateOrFind() { GetRootProperty().EndCreateOrFind(); }
    FbxPropertyPage* GetPropertyPage() const { return page_.get(); }

    // Connections of the object (its root property).
    bool ConnectSrcObject(FbxObject* object, uint32_t connectType = 0) {
        return GetRootProperty().ConnectSrcObject(object, connectType);
    }
    bool IsConnectedSrcObject(const FbxObject* object) const { return GetRootProperty().IsConnectedSrcObject(object); }
    bool DisconnectSrcObject(FbxObject* object) { return GetRootProperty().DisconnectSrcObject(object); }
    bool DisconnectAllSrcObject(const FbxCriteria& criteria = FbxCriteria()) {
        return GetRootProperty().DisconnectAllSrcObject(criteria);
    }
    int GetSrcObjectCount(const FbxCriteria& criteria = FbxCriteria()) const {
        return GetRootProperty().GetSrcObjectCount(criteria);
    }
    FbxObject* GetSrcObject(const FbxCriteria& criteria, int index) const {
        return GetRootProperty().GetSrcObject(criteria, index);
    }
    FbxObject* GetSrcObject(int index = 0) const { return GetRootProperty().GetSrcObject(FbxCriteria(), index); }
    FbxObject* FindSrcObject(const FbxCriteria& criteria, const char* name, int startIndex = 0) const {
        return GetRootProperty().FindSrcObject(criteria, name, startIndex);
    }
    bool ConnectDstObject(FbxObject* object, uint32_t connectType = 0) {
        return GetRootProperty().ConnectDstObject(object, connectType);
    }
    bool IsConnectedDstObject(const FbxObject* object) const { return GetRootProperty().IsConnectedDstObject(object); }
    bool DisconnectDstObject(FbxObject* object) { return GetRootProperty().DisconnectDstObject(object); }
    int GetDstObjectCount(const FbxCriteria& criteria = FbxCriteria()) const {
        return GetRootProperty().GetDstObjectCount(criteria);
    }
    FbxObject* GetDstObject(const FbxCriteria& criteria, int index) const {
        return GetRootProperty().GetDstObject(criteria, index);
    }
    FbxObject* GetDstObject(int index = 0) const { return GetRootProperty().GetDstObject(FbxCriteria(), index); }
    bool ConnectSrcProperty(const FbxProperty& property) { return GetRootProperty().ConnectSrcProperty(property); }
    bool IsConnectedSrcProperty(const FbxProperty& property) const {
        return GetRootProperty().IsConnectedSrcProperty(property);
    }
    bool DisconnectSrcProperty(const FbxProperty& property) {
        return GetRootProperty().DisconnectSrcProperty(property);
    }
    int GetSrcPropertyCount(const FbxCriteria& criteria = FbxCriteria()) const {
        return GetRootProperty().GetSrcPropertyCount(criteria);
    }
    FbxProperty GetSrcProperty(const FbxCriteria& criteria, int index) const {
        return GetRootProperty().GetSrcProperty(criteria, index);
    }
    bool ConnectDstProperty(const FbxProperty& property) { return GetRootProperty().ConnectDstProperty(property); }
    bool IsConnectedDstProperty(const FbxProperty& property) const {
        return GetRootProperty().IsConnectedDstProperty(property);
    }
    bool DisconnectDstProperty(const FbxProperty& property) {
        return GetRootProperty().DisconnectDstProperty(property);
    }
    int GetDstPropertyCount(const FbxCriteria& criteria = FbxCriteria()) const {
        return GetRootProperty().GetDstPropertyCount(criteria);
    }
    FbxProperty GetDstProperty(const FbxCriteria& criteria, int index) const {
        return GetRootProperty().GetDstProperty(criteria, index);
    }

    // Typed forms: sources and destinations of class T.
    template <class T>
    int GetSrcObjectCount() const {
        return GetSrcObjectCount(FbxCriteria::ObjectType(T::ClassId));
    }
    template <class T>
    T* GetSrcObject(int index = 0) const {
        return static_cast<T*>(GetSrcObject(FbxCriteria::ObjectType(T::ClassId), index));
    }
    template <class T>
    int GetDstObjectCount() const {
        return GetDstObjectCount(FbxCriteria::ObjectType(T::ClassId));
    }
    template <class T>
    T* GetDstObject(int index = 0) const {
        return static_cast<T*>(GetDstObject(FbxCriteria::ObjectType(T::ClassId), index));
    }

    // Takes over the other's flags, names and properties when both are of
    // one class; false otherwise.
    virtual bool CopyFrom(const FbxObject& other);
    // A new object of this class made from this one, a source of
    // `container` when one is given.
    virtual FbxObject* Clone(FbxObject* container = nullptr) const;

    // Hears of connections made and undone on this object or its
    // properties; false from a request event cancels it.
    virtual bool ConnectNotify(const FbxConnectEvent& event);
    // Hears of property value changes when flag eNotifyPropertyChanges is
    // set; false from ePropertySetRequest cancels the change.
    virtual bool PropertyNotify(EPropertyNotifyType type, const FbxProperty& property);

protected:
    FbxObject(FbxManager& manager, const char* name);
    virtual ~FbxObject();

    // Creation steps run by the manager: Construct counts the instance,
    // makes the object's page and calls ConstructProperties. A class
    // overrides Construct (calling its parent's first) to make what its
    // objects hold beside properties.
    virtual void Construct(const FbxObject* from);
    // Declares the class's properties, once per class page. Each class
    // declares its own level on its own class page and remembers the ids,
    // so that its objects pay nothing for untouched properties:
    //
    //   void FbxThing::ConstructProperties(bool forceSet) {
    //       ParentClass::ConstructProperties(forceSet);
    //       if (!ClassId.NeedsPropertyDeclaration()) return;
    //       FbxProperty root = ClassId.GetRootClassProperty();
    //       sSizeId = FbxProperty::Declare(root, "Size", FbxDoubleDT, 100.0).GetId();
    //   }
    //   FbxProperty FbxThing::Size() const { return GetPropertyById(sSizeId); }
    //
    // forceSet is true when the object's own class page was just made.
    virtual void ConstructProperties(bool forceSet);
    // Undoes all connections and frees the page. Destroy has taken the
    // owned sources down before.
    virtual void Destruct(bool recursive);

    // Helpers for the Create forms of KIVA_FBX_OBJECT_DECLARE.
    static FbxObject* CreateOfClass(FbxManager* manager, FbxClassId classId, const char* name);
    static FbxObject* CreateInContainer(FbxObject* container, FbxClassId classId, const char* name);

private:
    friend class FbxManager;
    // The manager's object list runs through this link.
    friend class qe::DListItem<FbxObject, FbxManagerListTag>;

    bool OwnsSource(const FbxObject* source, bool recursive) const;
    // The next source at or below `index` that this object owns, with the
    // index moved past it; null when none is left.
    FbxObject* NextOwnedSource(int& index, bool recursive) const;

    qe::Ref<FbxPropertyPage> page_;
    FbxString initialName_;
    FbxString name_;
    FbxString nameSpace_;
    FbxClassId classId_;
    std::vector<std::pair<FbxUInt64, void*>> userData_;
    FbxManager* manager_;
    FbxObject* referenceTo_ = nullptr;
    FbxUInt64 uniqueId_;
    uint32_t flags_ = eInitialFlags;
    int contentLockCount_ = 1;
    bool destroying_ = false;
};

// The object as T when it Is T, else null.
template <class T>
T* FbxCast(FbxObject* object) {
    return object && object->Is(T::ClassId) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* FbxCast(const FbxObject* object) {
    return object && object->Is(T::ClassId) ? static_cast<const T*>(object) : nullptr;
}
