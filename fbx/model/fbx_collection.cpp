#include "fbx/model/fbx_collection.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxCollection)

FbxCollection::FbxCollection(FbxManager& manager, const char* name) : ParentClass(manager, name) {
    SetFlag(eNotifyPropertyChanges, true);
}

bool FbxCollection::AddMember(FbxObject* member) {
    if (!member || IsConnectedSrcObject(member)) return false;
    return ConnectSrcObject(member);
}
