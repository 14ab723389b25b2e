#include "fbx/model/fbx_manager.h"

#include <algorithm>

#include "fbx/model/fbx_class_registry.h"
#include "fbx/model/fbx_connection_point.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_library.h"

namespace {

int gLiveManagers = 0;

}  // namespace

FbxManager* FbxManager::Create() { return new FbxManager(); }

FbxManager::FbxManager() {
    if (gLiveManagers++ == 0) FbxClassRegistry::Build();
    rootLibrary_ = FbxLibrary::Create(this, "Fbx Libraries");
    systemLibraries_ = FbxLibrary::Create(rootLibrary_, "Fbx System Libraries");
    userLibraries_ = FbxLibrary::Create(rootLibrary_, "Fbx User   Libraries");
    for (FbxLibrary* library : {rootLibrary_, systemLibraries_, userLibraries_})
        library->SetFlag(FbxObject::eSystemFlag, true);
}

FbxManager::~FbxManager() {
    if (--gLiveManagers == 0) {
        FbxClassRegistry::Release();
        FbxDataTypeTable::ReleaseCreated();
    }
}

int FbxManager::LiveManagerCount() { return gLiveManagers; }

void FbxManager::Destroy() {
    // Each object is destroyed by itself: connections are undone, owned
    // sources are not chased, since everything goes anyway.
    massDestruction_ = true;
    // Everything goes: rather than undo each connection at both ends, which
    // costs a search in long lists, every point forgets its links first.
    auto forget = [](FbxObject* object) {
        if (FbxPropertyPage* page = object->GetPropertyPage())
            for (const FbxPropertyPage::Entry& e : page->Entries())
                if (e.point) e.point->ForgetAllLinks();
    };
    for (FbxDocument* document : documents_) forget(document);
    objects_.forEach([&](FbxObject& object) { forget(&object); });
    for (FbxLibrary* library : {userLibraries_, systemLibraries_, rootLibrary_})
        if (std::find(documents_.begin(), documents_.end(), library) != documents_.end()) library->Destroy();
    rootLibrary_ = systemLibraries_ = userLibraries_ = nullptr;
    while (!documents_.empty()) documents_.front()->Destroy();
    while (objects_.linked()) objects_.next()->object()->Destroy();
    destroyedObjects_.clear();
    destroyedDocuments_.clear();
    massDestruction_ = false;
    delete this;
}

FbxObject* FbxManager::CreateObject(FbxClassId classId, const char* name, FbxObject* container,
                                    const FbxObject* cloneFrom) {
    FbxClassRecord* record = classId.Record();
    if (!record || !record->constructor) return nullptr;
    FbxObject* object = record->constructor(*this, name ? name : "", cloneFrom);
    if (!object) return nullptr;
    object->classId_ = cloneFrom ? cloneFrom->GetClassId() : classId;
    object->Construct(cloneFrom);
    if (container) container->ConnectSrcObject(object);
    RegisterObject(object);
    return object;
}

FbxClassId FbxManager::FindClass(const char* name) const { return FbxClassRegistry::Find(name); }

FbxClassId FbxManager::FindFileClass(const char* fileType, const char* fileSubType) const {
    return FbxClassRegistry::FindFile(fileType, fileSubType);
}

FbxClassId FbxManager::RegisterRuntimeClass(const char* name, FbxClassId parent, FbxObjectConstructor constructor,
                                            const char* fileType, const char* fileSubType, const char* prefix) {
    if (!parent.IsValid()) return FbxClassId();
    return FbxClassRegistry::Register(name, parent, constructor, fileType, fileSubType, prefix);
}

void FbxManager::RegisterObject(FbxObject* object) {
    if (!object) return;
    if (object->Is(FbxDocument::ClassId)) {
        if (std::find(documents_.begin(), documents_.end(), object) == documents_.end())
            documents_.push_back(static_cast<FbxDocument*>(object));
    } else if (!object->linked()) {
        objects_.insertBack(*object);
        ++objectCount_;
    }
}

void FbxManager::UnregisterObject(FbxObject* object) {
    if (!object) return;
    if (object->Is(FbxDocument::ClassId)) {
        auto it = std::find(documents_.begin(), documents_.end(), object);
        if (it == documents_.end()) return;
        documents_.erase(it);
        if (massDestruction_) destroyedDocuments_.push_back(object);
    } else if (object->linked()) {
        object->unlink();
        --objectCount_;
        if (massDestruction_) destroyedObjects_.push_back(object);
    }
}

FbxDocument* FbxManager::GetDocument(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= documents_.size()) return nullptr;
    return documents_[static_cast<size_t>(index)];
}

FbxDataType FbxManager::DataTypeFromName(const char* name) const { return FbxDataTypeTable::FromName(name); }

FbxDataType FbxManager::CreateDataType(const char* name, const FbxDataType& baseType) {
    if (!baseType.Valid()) return FbxDataType();
    return FbxDataTypeTable::Create(name, baseType.GetType());
}

FbxDataType FbxManager::CreateDataType(const char* name, EFbxType type) { return FbxDataTypeTable::Create(name, type); }
