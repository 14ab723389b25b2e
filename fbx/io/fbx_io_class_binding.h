#pragma once

#include "fbx/model/fbx_class_id.h"
#include "fbx/model/fbx_class_registry.h"

// The document model registers the importer's classes by name only; this
// library supplies their constructors. Each Create binds the class first,
// so that its id is current for the registry of the running managers.
inline FbxClassId FbxBindIOClass(const char* name, FbxObjectConstructor constructor) {
    FbxClassId id = FbxClassRegistry::Find(name);
    if (id.IsValid() && !id.Record()->constructor) id.Record()->constructor = constructor;
    return id;
}
