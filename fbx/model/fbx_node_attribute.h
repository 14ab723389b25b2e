#pragma once

#include "fbx/model/fbx_object.h"

class FbxNode;

// What a node stands for: mesh, skeleton, camera, light, ... An attribute
// belongs to a node by being one of its sources; several nodes can share
// one attribute.
class FbxNodeAttribute : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxNodeAttribute, FbxObject)

public:
    // The kind of an attribute, as GetAttributeType gives it.
    enum EType {
        eUnknown = 0,
        eNull = 1,
        eMarker = 2,
        eSkeleton = 3,
        eMesh = 4,
        eNurbs = 5,
        ePatch = 6,
        eCamera = 7,
        eCameraStereo = 8,
        eCameraSwitcher = 9,
        eLight = 10,
        eOpticalReference = 11,
        eNurbsCurve = 13,
        eTrimNurbsSurface = 14,
        eBoundary = 15,
        eNurbsSurface = 16,
        eShape = 17,
        eLODGroup = 18,
        eSubDiv = 19,
        eCachedEffect = 20,
        eLine = 21,
    };

    // The kind of this attribute. This class gives the kind of the nearest
    // class of the attribute's class chain that has one, eUnknown for a
    // plain attribute; subclasses may answer directly.
    virtual EType GetAttributeType() const;

    // The word for the attribute's node type in a file, and the list of
    // type names that a file records for it. Empty for a plain attribute.
    virtual const char* GetTypeName() const { return ""; }
    virtual std::vector<FbxString> GetTypeFlags() const { return {}; }

    // "Color" (colour, default black).
    FbxPropertyT<FbxDouble3> Color() const { return FbxProperty(GetPropertyPage(), sColor); }

    // The nodes that hold this attribute, in connection order.
    int GetNodeCount() const;
    FbxNode* GetNode(int index = 0) const;

protected:
    void ConstructProperties(bool forceSet) override;

    static int sColor;
};
