#include "fbx/model/fbx_further_classes.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxGeometryWeightedMap)
FbxGeometryWeightedMap::FbxGeometryWeightedMap(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxControlSetPlug)
FbxControlSetPlug::FbxControlSetPlug(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCharacterPose)
FbxCharacterPose::FbxCharacterPose(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCache)
FbxCache::FbxCache(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxEnvironment)
FbxEnvironment::FbxEnvironment(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxObjectMetaData)
FbxObjectMetaData::FbxObjectMetaData(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCollectionExclusive)
FbxCollectionExclusive::FbxCollectionExclusive(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxContainer)
FbxContainer::FbxContainer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxContainerTemplate)
FbxContainerTemplate::FbxContainerTemplate(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxSceneReference)
FbxSceneReference::FbxSceneReference(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxSelectionSet)
FbxSelectionSet::FbxSelectionSet(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxSelectionNode)
FbxSelectionNode::FbxSelectionNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxDisplayLayer)
FbxDisplayLayer::FbxDisplayLayer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT_ABSTRACT(FbxAnimCurveBase)
FbxAnimCurveBase::FbxAnimCurveBase(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimCurveKFCurve)
FbxAnimCurveKFCurve::FbxAnimCurveKFCurve(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxExporter)
FbxExporter::FbxExporter(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxGenericNode)
FbxGenericNode::FbxGenericNode(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraint)
FbxConstraint::FbxConstraint(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxVertexCacheDeformer)
FbxVertexCacheDeformer::FbxVertexCacheDeformer(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintAim)
FbxConstraintAim::FbxConstraintAim(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintParent)
FbxConstraintParent::FbxConstraintParent(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintPosition)
FbxConstraintPosition::FbxConstraintPosition(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintRotation)
FbxConstraintRotation::FbxConstraintRotation(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintScale)
FbxConstraintScale::FbxConstraintScale(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCharacter)
FbxCharacter::FbxCharacter(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintSingleChainIK)
FbxConstraintSingleChainIK::FbxConstraintSingleChainIK(FbxManager& manager, const char* name)
    : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxConstraintCustom)
FbxConstraintCustom::FbxConstraintCustom(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCachedEffect)
FbxCachedEffect::FbxCachedEffect(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxLODGroup)
FbxLODGroup::FbxLODGroup(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxMarker)
FbxMarker::FbxMarker(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCameraStereo)
FbxCameraStereo::FbxCameraStereo(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCameraSwitcher)
FbxCameraSwitcher::FbxCameraSwitcher(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxOpticalReference)
FbxOpticalReference::FbxOpticalReference(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxPatch)
FbxPatch::FbxPatch(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxNurbs)
FbxNurbs::FbxNurbs(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxNurbsSurface)
FbxNurbsSurface::FbxNurbsSurface(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxNurbsCurve)
FbxNurbsCurve::FbxNurbsCurve(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxLine)
FbxLine::FbxLine(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxTrimNurbsSurface)
FbxTrimNurbsSurface::FbxTrimNurbsSurface(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxBoundary)
FbxBoundary::FbxBoundary(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProceduralGeometry)
FbxProceduralGeometry::FbxProceduralGeometry(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxSubDiv)
FbxSubDiv::FbxSubDiv(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxImplementation)
FbxImplementation::FbxImplementation(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxBindingTableBase)
FbxBindingTableBase::FbxBindingTableBase(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxBindingTable)
FbxBindingTable::FbxBindingTable(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxBindingOperator)
FbxBindingOperator::FbxBindingOperator(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProceduralTexture)
FbxProceduralTexture::FbxProceduralTexture(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxCameraManipulator)
FbxCameraManipulator::FbxCameraManipulator(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProcessor)
FbxProcessor::FbxProcessor(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProcessorXRefCopy)
FbxProcessorXRefCopy::FbxProcessorXRefCopy(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProcessorXRefCopyUserLibrary)
FbxProcessorXRefCopyUserLibrary::FbxProcessorXRefCopyUserLibrary(FbxManager& manager, const char* name)
    : ParentClass(manager, name) {}

KIVA_FBX_OBJECT_IMPLEMENT(FbxProcessorShaderDependency)
FbxProcessorShaderDependency::FbxProcessorShaderDependency(FbxManager& manager, const char* name)
    : ParentClass(manager, name) {}
