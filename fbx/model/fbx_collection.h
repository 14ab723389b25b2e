#pragma once

#include "fbx/model/fbx_object.h"

// A set of objects, held as its source objects in connection order.
class FbxCollection : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxCollection, FbxObject)

public:
    int GetMemberCount(const FbxCriteria& criteria = FbxCriteria()) const { return GetSrcObjectCount(criteria); }
    FbxObject* GetMember(int index = 0) const { return GetSrcObject(index); }
    FbxObject* GetMember(const FbxCriteria& criteria, int index) const { return GetSrcObject(criteria, index); }
    template <class T>
    int GetMemberCount() const {
        return GetSrcObjectCount<T>();
    }
    template <class T>
    T* GetMember(int index = 0) const {
        return GetSrcObject<T>(index);
    }
    // False for null or a member already there.
    bool AddMember(FbxObject* member);
    bool RemoveMember(FbxObject* member) { return DisconnectSrcObject(member); }
    bool IsMember(const FbxObject* member) const { return IsConnectedSrcObject(member); }
    void Clear() { DisconnectAllSrcObject(); }
};
