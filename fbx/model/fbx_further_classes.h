#pragma once

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_camera.h"
#include "fbx/model/fbx_collection.h"
#include "fbx/model/fbx_deformer.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_io_base.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_texture.h"

// Classes that a file can hold and the reader can make, but that nothing in
// this system looks at. They have their place in the class tree and their
// file words, and no content of their own.

class FbxGeometryWeightedMap : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxGeometryWeightedMap, FbxObject)
};

class FbxControlSetPlug : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxControlSetPlug, FbxObject)
};

class FbxCharacterPose : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxCharacterPose, FbxObject)
};

class FbxCache : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxCache, FbxObject)
};

class FbxEnvironment : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxEnvironment, FbxObject)
};

class FbxObjectMetaData : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxObjectMetaData, FbxObject)
};

class FbxCollectionExclusive : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxCollectionExclusive, FbxCollection)
};

class FbxContainer : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxContainer, FbxObject)
};

class FbxContainerTemplate : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxContainerTemplate, FbxObject)
};

class FbxSceneReference : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxSceneReference, FbxObject)
};

class FbxSelectionSet : public FbxCollection {
    KIVA_FBX_OBJECT_DECLARE(FbxSelectionSet, FbxCollection)
};

class FbxSelectionNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxSelectionNode, FbxObject)
};

class FbxDisplayLayer : public FbxCollectionExclusive {
    KIVA_FBX_OBJECT_DECLARE(FbxDisplayLayer, FbxCollectionExclusive)
};

class FbxAnimCurveBase : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurveBase, FbxObject)
};

class FbxAnimCurveKFCurve : public FbxAnimCurve {
    KIVA_FBX_OBJECT_DECLARE(FbxAnimCurveKFCurve, FbxAnimCurve)
};

class FbxExporter : public FbxIOBase {
    KIVA_FBX_OBJECT_DECLARE(FbxExporter, FbxIOBase)
};

class FbxGenericNode : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxGenericNode, FbxObject)
};

class FbxConstraint : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraint, FbxObject)
};

class FbxVertexCacheDeformer : public FbxDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxVertexCacheDeformer, FbxDeformer)
};

class FbxConstraintAim : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintAim, FbxConstraint)
};

class FbxConstraintParent : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintParent, FbxConstraint)
};

class FbxConstraintPosition : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintPosition, FbxConstraint)
};

class FbxConstraintRotation : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintRotation, FbxConstraint)
};

class FbxConstraintScale : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintScale, FbxConstraint)
};

class FbxCharacter : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxCharacter, FbxConstraint)
};

class FbxConstraintSingleChainIK : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintSingleChainIK, FbxConstraint)
};

class FbxConstraintCustom : public FbxConstraint {
    KIVA_FBX_OBJECT_DECLARE(FbxConstraintCustom, FbxConstraint)
};

class FbxCachedEffect : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxCachedEffect, FbxNodeAttribute)
};

class FbxLODGroup : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxLODGroup, FbxNodeAttribute)
};

class FbxMarker : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxMarker, FbxNodeAttribute)
};

class FbxCameraStereo : public FbxCamera {
    KIVA_FBX_OBJECT_DECLARE(FbxCameraStereo, FbxCamera)
};

class FbxCameraSwitcher : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxCameraSwitcher, FbxNodeAttribute)
};

class FbxOpticalReference : public FbxNodeAttribute {
    KIVA_FBX_OBJECT_DECLARE(FbxOpticalReference, FbxNodeAttribute)
};

class FbxPatch : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxPatch, FbxGeometry)
};

class FbxNurbs : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxNurbs, FbxGeometry)
};

class FbxNurbsSurface : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxNurbsSurface, FbxGeometry)
};

class FbxNurbsCurve : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxNurbsCurve, FbxGeometry)
};

class FbxLine : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxLine, FbxGeometry)
};

class FbxTrimNurbsSurface : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxTrimNurbsSurface, FbxGeometry)
};

class FbxBoundary : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxBoundary, FbxGeometry)
};

class FbxProceduralGeometry : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxProceduralGeometry, FbxGeometry)
};

class FbxSubDiv : public FbxGeometry {
    KIVA_FBX_OBJECT_DECLARE(FbxSubDiv, FbxGeometry)
};

class FbxImplementation : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxImplementation, FbxObject)
};

class FbxBindingTableBase : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxBindingTableBase, FbxObject)
};

class FbxBindingTable : public FbxBindingTableBase {
    KIVA_FBX_OBJECT_DECLARE(FbxBindingTable, FbxBindingTableBase)
};

class FbxBindingOperator : public FbxBindingTableBase {
    KIVA_FBX_OBJECT_DECLARE(FbxBindingOperator, FbxBindingTableBase)
};

class FbxProceduralTexture : public FbxTexture {
    KIVA_FBX_OBJECT_DECLARE(FbxProceduralTexture, FbxTexture)
};

class FbxCameraManipulator : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxCameraManipulator, FbxObject)
};

class FbxProcessor : public FbxObject {
    KIVA_FBX_OBJECT_DECLARE(FbxProcessor, FbxObject)
};

class FbxProcessorXRefCopy : public FbxProcessor {
    KIVA_FBX_OBJECT_DECLARE(FbxProcessorXRefCopy, FbxProcessor)
};

class FbxProcessorXRefCopyUserLibrary : public FbxProcessorXRefCopy {
    KIVA_FBX_OBJECT_DECLARE(FbxProcessorXRefCopyUserLibrary, FbxProcessorXRefCopy)
};

class FbxProcessorShaderDependency : public FbxProcessor {
    KIVA_FBX_OBJECT_DECLARE(FbxProcessorShaderDependency, FbxProcessor)
};
