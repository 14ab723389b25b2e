#include "fbx/model/fbx_importer.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxImporter)

FbxImporter::FbxImporter(FbxManager& manager, const char* name) : ParentClass(manager, name) {
    SetFlag(eNotifyPropertyChanges, true);
}
