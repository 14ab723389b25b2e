#pragma once

#include <vector>

#include "fbx/model/fbx_class_id.h"
#include "fbx/model/fbx_data_type.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_string.h"

class FbxAnimEvaluator;
class FbxDocument;
class FbxLibrary;
class FbxIOSettings;

// Owns the class registry (process-wide, built by the first manager and
// released by the last) and every object made through it. Destroying the
// manager destroys every object that is left.
class FbxManager {
public:
    static FbxManager* Create();
    // Destroys the library documents, then every document, then every other
    // object, in list order, and the manager.
    virtual void Destroy();

    // One settings object per manager (not made here).
    virtual FbxIOSettings* GetIOSettings() const { return ioSettings_; }
    virtual void SetIOSettings(FbxIOSettings* settings) { ioSettings_ = settings; }

    // Runs the class's constructor, stores the class id (the source's, with
    // cloneFrom), connects the object as a source of `container`, and
    // registers it. Null for an invalid class or one without constructor.
    FbxObject* CreateObject(FbxClassId classId, const char* name, FbxObject* container = nullptr,
                            const FbxObject* cloneFrom = nullptr);
    // By class name; the null handle when unknown.
    FbxClassId FindClass(const char* name) const;
    // By the words of a file record; a class with an empty subtype matches
    // only an empty subtype. The null handle when unknown.
    FbxClassId FindFileClass(const char* fileType, const char* fileSubType) const;
    // Adds a class to the registry at run time (it lives until the last
    // manager goes); the parent must be registered.
    FbxClassId RegisterRuntimeClass(const char* name, FbxClassId parent, FbxObjectConstructor constructor,
                                    const char* fileType = "", const char* fileSubType = "", const char* prefix = "");

    // Object lists: documents apart from all other objects.
    void RegisterObject(FbxObject* object);
    void UnregisterObject(FbxObject* object);
    int GetObjectCount() const { return objectCount_; }
    int GetDocumentCount() const { return static_cast<int>(documents_.size()); }
    // Null for an index out of range.
    FbxDocument* GetDocument(int index) const;
    int DocumentCount() const { return GetDocumentCount(); }
    FbxDocument* DocumentAt(int index) const { return GetDocument(index); }

    // The library documents: "Fbx Libraries" holding the system and user
    // libraries.
    FbxLibrary* GetRootLibrary() const { return rootLibrary_; }
    FbxLibrary* GetSystemLibraries() const { return systemLibraries_; }
    FbxLibrary* GetUserLibraries() const { return userLibraries_; }

    // Data types.
    FbxDataType DataTypeFromName(const char* name) const;
    FbxDataType CreateDataType(const char* name, const FbxDataType& baseType);
    FbxDataType CreateDataType(const char* name, EFbxType type);

    // The default evaluator of animation: made, as an FbxAnimEvalClassic
    // named "DefaultEvaluator", at the first call; the same object later.
    FbxAnimEvaluator* GetAnimationEvaluator();
    // The default evaluator when it exists, else null.
    FbxAnimEvaluator* FindAnimationEvaluator() const { return animationEvaluator_; }

    static int LiveManagerCount();
    // True while Destroy() takes every object down.
    bool IsDestroyingAll() const { return massDestruction_; }

protected:
    FbxManager();
    virtual ~FbxManager();

private:
    qe::DListItem<FbxObject, FbxManagerListTag> objects_;
    int objectCount_ = 0;
    std::vector<FbxDocument*> documents_;
    // Objects taken off the lists while a mass destruction runs.
    std::vector<FbxObject*> destroyedObjects_;
    std::vector<FbxObject*> destroyedDocuments_;
    bool massDestruction_ = false;
    FbxIOSettings* ioSettings_ = nullptr;
    FbxLibrary* rootLibrary_ = nullptr;
    FbxLibrary* systemLibraries_ = nullptr;
    FbxLibrary* userLibraries_ = nullptr;
    FbxAnimEvaluator* animationEvaluator_ = nullptr;
    friend class FbxAnimEvaluator;
};
