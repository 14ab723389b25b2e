#include "fbx/model/fbx_io_base.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxIOBase)

FbxIOBase::FbxIOBase(FbxManager& manager, const char* name) : ParentClass(manager, name) {
    SetFlag(eNotifyPropertyChanges, true);
}
