#include "fbx/model/fbx_node_attribute.h"

#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_light.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_shape.h"
#include "fbx/model/fbx_skeleton.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxNodeAttribute)

int FbxNodeAttribute::sColor = -1;

FbxNodeAttribute::FbxNodeAttribute(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxNodeAttribute::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    sColor =
        FbxProperty::Declare(ClassId.GetRootClassProperty(), "Color", FbxColor3DT, FbxDouble3(0.0, 0.0, 0.0)).GetId();
}

FbxNodeAttribute::EType FbxNodeAttribute::GetAttributeType() const {
    // The kind of each attribute class. Class ids are read at call time:
    // the registry fills them when the first manager starts.
    struct Kind {
        const FbxClassId* classId;
        EType type;
    };
    static const Kind kinds[] = {
        {&FbxNull::ClassId, eNull},
        {&FbxMarker::ClassId, eMarker},
        {&FbxSkeleton::ClassId, eSkeleton},
        {&FbxMesh::ClassId, eMesh},
        {&FbxNurbs::ClassId, eNurbs},
        {&FbxPatch::ClassId, ePatch},
        {&FbxCamera::ClassId, eCamera},
        {&FbxCameraStereo::ClassId, eCameraStereo},
        {&FbxCameraSwitcher::ClassId, eCameraSwitcher},
        {&FbxLight::ClassId, eLight},
        {&FbxOpticalReference::ClassId, eOpticalReference},
        {&FbxNurbsCurve::ClassId, eNurbsCurve},
        {&FbxTrimNurbsSurface::ClassId, eTrimNurbsSurface},
        {&FbxBoundary::ClassId, eBoundary},
        {&FbxNurbsSurface::ClassId, eNurbsSurface},
        {&FbxShape::ClassId, eShape},
        {&FbxLODGroup::ClassId, eLODGroup},
        {&FbxSubDiv::ClassId, eSubDiv},
        {&FbxCachedEffect::ClassId, eCachedEffect},
        {&FbxLine::ClassId, eLine},
    };
    // Nearest class first: a camera stereo is a camera too.
    for (FbxClassId c = GetClassId(); c.IsValid() && c != ClassId; c = c.GetParent())
        for (const Kind& kind : kinds)
            if (*kind.classId == c) return kind.type;
    return eUnknown;
}

int FbxNodeAttribute::GetNodeCount() const { return GetDstObjectCount<FbxNode>(); }

FbxNode* FbxNodeAttribute::GetNode(int index) const { return GetDstObject<FbxNode>(index); }
