#pragma once

#include "fbx/model/fbx_class_id.h"

// The process-wide class tables: every class by name, and the classes with
// file words by (file type, file subtype). The first manager builds them,
// the last releases them.
class FbxClassRegistry {
public:
    // Registers every document class, parent first, and stores each class's
    // id. Called by the first manager.
    static void Build();
    // Drops all records and clears the classes' ids.
    static void Release();
    static bool IsBuilt();

    // Adds a class. Its parent must be registered already (null for a
    // root). A class with a file type is also entered by its file words,
    // unless a class with the same words came first.
    static FbxClassId Register(const char* name, FbxClassId parent, FbxObjectConstructor constructor,
                               const char* fileType, const char* fileSubType, const char* prefix);

    // The null handle when there is no such class.
    static FbxClassId Find(const char* name);
    static FbxClassId FindFile(const char* fileType, const char* fileSubType);
    static int Count();
};
