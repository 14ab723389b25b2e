#include "fbx/model/fbx_document.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxDocument)

FbxDocument::FbxDocument(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
