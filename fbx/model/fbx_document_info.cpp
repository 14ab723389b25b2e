#include "fbx/model/fbx_document_info.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxDocumentInfo)

FbxDocumentInfo::FbxDocumentInfo(FbxManager& manager, const char* name) : ParentClass(manager, name) {}
