#include "fbx/model/fbx_class_registry.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_blend_shape.h"
#include "fbx/model/fbx_blend_shape_channel.h"
#include "fbx/model/fbx_camera.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_collection.h"
#include "fbx/model/fbx_deformer.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_document_info.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_geometry_base.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_io_base.h"
#include "fbx/model/fbx_layer_container.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_library.h"
#include "fbx/model/fbx_light.h"
#include "fbx/model/fbx_mesh.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_object.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_property_page.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_shape.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_skin.h"
#include "fbx/model/fbx_sub_deformer.h"
#include "fbx/model/fbx_surface_lambert.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_texture.h"
#include "fbx/model/fbx_thumbnail.h"
#include "fbx/model/fbx_video.h"

namespace {

struct Tables {
    // Records in registration order; the maps point into them.
    std::vector<std::unique_ptr<FbxClassRecord>> records;
    std::map<FbxString, FbxClassRecord*, std::less<>> byName;
    std::map<std::pair<FbxString, FbxString>, FbxClassRecord*, std::less<>> byFileWords;
    // The static ids to clear when the tables go.
    std::vector<FbxClassId*> ids;
};

Tables*& tables() {
    static Tables* t = nullptr;
    return t;
}

template <class C>
void registerClass(const char* name, const char* fileType, const char* fileSubType, const char* prefix) {
    FbxClassId parent;
    if constexpr (!std::is_void_v<typename C::ParentClass>) parent = C::ParentClass::ClassId;
    C::ClassId = FbxClassRegistry::Register(name, parent, &C::Allocate, fileType, fileSubType, prefix);
    tables()->ids.push_back(&C::ClassId);
}

void registerAll() {
    registerClass<FbxObject>("FbxObject", "Object", "", "");
    registerClass<FbxCollection>("FbxCollection", "Collection", "", "Collection::");
    registerClass<FbxDocument>("FbxDocument", "Document", "", "Document::");
    registerClass<FbxScene>("FbxScene", "Scene", "", "Scene::");
    registerClass<FbxDocumentInfo>("FbxDocumentInfo", "SceneInfo", "", "");
    registerClass<FbxGlobalSettings>("FbxGlobalSettings", "GlobalSettings", "", "");
    registerClass<FbxThumbnail>("FbxThumbnail", "Thumbnail", "", "Thumbnail::");
    registerClass<FbxNode>("FbxNode", "Model", "", "Model::");
    registerClass<FbxNodeAttribute>("FbxNodeAttribute", "NodeAttribute", "NodeAttribute", "NodeAttribute::");
    registerClass<FbxNull>("FbxNull", "NodeAttribute", "Null", "");
    registerClass<FbxSkeleton>("FbxSkeleton", "", "", "");
    registerClass<FbxCamera>("FbxCamera", "NodeAttribute", "Camera", "");
    registerClass<FbxLight>("FbxLight", "NodeAttribute", "Light", "");
    registerClass<FbxLayerContainer>("FbxLayerContainer", "", "", "");
    registerClass<FbxGeometryBase>("FbxGeometryBase", "Geometry", "", "Geometry::");
    registerClass<FbxGeometry>("FbxGeometry", "", "", "");
    registerClass<FbxMesh>("FbxMesh", "Geometry", "Mesh", "");
    registerClass<FbxShape>("FbxShape", "Geometry", "Shape", "");
    registerClass<FbxDeformer>("FbxDeformer", "Deformer", "", "Deformer::");
    registerClass<FbxSkin>("FbxSkin", "Deformer", "Skin", "");
    registerClass<FbxBlendShape>("FbxBlendShape", "Deformer", "BlendShape", "");
    registerClass<FbxSubDeformer>("FbxSubDeformer", "SubDeformer", "", "SubDeformer::");
    registerClass<FbxCluster>("FbxCluster", "Deformer", "Cluster", "");
    registerClass<FbxBlendShapeChannel>("FbxBlendShapeChannel", "Deformer", "BlendShapeChannel", "");
    registerClass<FbxPose>("FbxPose", "Pose", "", "Pose::");
    registerClass<FbxSurfaceMaterial>("FbxSurfaceMaterial", "Material", "", "Material::");
    registerClass<FbxSurfaceLambert>("FbxSurfaceLambert", "Material", "", "");
    registerClass<FbxSurfacePhong>("FbxSurfacePhong", "Material", "", "");
    registerClass<FbxTexture>("FbxTexture", "", "", "");
    registerClass<FbxFileTexture>("FbxFileTexture", "Texture", "", "Texture::");
    registerClass<FbxLayeredTexture>("FbxLayeredTexture", "LayeredTexture", "", "LayeredTexture::");
    registerClass<FbxVideo>("FbxVideo", "Video", "Clip", "Video::");
    registerClass<FbxAnimStack>("FbxAnimStack", "AnimationStack", "", "AnimStack::");
    registerClass<FbxAnimLayer>("FbxAnimLayer", "AnimationLayer", "", "AnimLayer::");
    registerClass<FbxAnimCurveNode>("FbxAnimCurveNode", "AnimationCurveNode", "", "AnimCurveNode::");
    registerClass<FbxAnimCurve>("FbxAnimCurve", "AnimationCurve", "", "AnimCurve::");
    registerClass<FbxIOBase>("FbxIOBase", "", "", "");
    // The importer and its settings are defined by the file reading library,
    // which binds their constructors when it first makes one.
    FbxClassRegistry::Register("FbxImporter", FbxIOBase::ClassId, nullptr, "", "", "");
    FbxClassRegistry::Register("FbxIOSettings", FbxObject::ClassId, nullptr, "", "", "");
    registerClass<FbxLibrary>("FbxLibrary", "Library", "", "Library::");
    registerClass<FbxGeometryWeightedMap>("FbxGeometryWeightedMap", "GeometryWeightedMap", "", "GeometryWeightedMap::");
    registerClass<FbxControlSetPlug>("FbxControlSetPlug", "ControlSetPlug", "", "ControlSetPlug::");
    registerClass<FbxCharacterPose>("FbxCharacterPose", "CharacterPose", "", "CharacterPose::");
    registerClass<FbxCache>("FbxCache", "Cache", "", "Cache::");
    registerClass<FbxEnvironment>("FbxEnvironment", "Environment", "", "Environment::");
    registerClass<FbxObjectMetaData>("FbxObjectMetaData", "ObjectMetaData", "", "ObjectMetaData::");
    registerClass<FbxCollectionExclusive>("FbxCollectionExclusive", "CollectionExclusive", "", "CollectionExclusive::");
    registerClass<FbxContainer>("FbxContainer", "Container", "", "Container::");
    registerClass<FbxContainerTemplate>("FbxContainerTemplate", "ContainerTemplate", "", "ContainerTemplate::");
    registerClass<FbxSceneReference>("FbxSceneReference", "SceneReference", "", "SceneReference::");
    registerClass<FbxSelectionSet>("FbxSelectionSet", "SelectionSet", "", "SelectionSet::");
    registerClass<FbxSelectionNode>("FbxSelectionNode", "SelectionNode", "", "SelectionNode::");
    registerClass<FbxDisplayLayer>("FbxDisplayLayer", "CollectionExclusive", "DisplayLayer", "DisplayLayer::");
    registerClass<FbxAnimCurveBase>("FbxAnimCurveBase", "", "", "");
    registerClass<FbxAnimCurveKFCurve>("FbxAnimCurveKFCurve", "", "", "");
    registerClass<FbxAnimEvaluator>("FbxAnimEvaluator", "", "", "");
    registerClass<FbxAnimEvalClassic>("FbxAnimEvalClassic", "", "", "");
    registerClass<FbxExporter>("FbxExporter", "", "", "");
    registerClass<FbxGenericNode>("FbxGenericNode", "GenericNode", "", "GenericNode::");
    registerClass<FbxConstraint>("FbxConstraint", "Constraint", "", "Constraint::");
    registerClass<FbxVertexCacheDeformer>("FbxVertexCacheDeformer", "Deformer", "VertexCacheDeformer", "");
    registerClass<FbxConstraintAim>("FbxConstraintAim", "Constraint", "Aim", "");
    registerClass<FbxConstraintParent>("FbxConstraintParent", "Constraint", "Parent-Child", "");
    registerClass<FbxConstraintPosition>("FbxConstraintPosition", "Constraint", "Position From Positions", "");
    registerClass<FbxConstraintRotation>("FbxConstraintRotation", "Constraint", "Rotation From Rotations", "");
    registerClass<FbxConstraintScale>("FbxConstraintScale", "Constraint", "Scale From Scales", "");
    registerClass<FbxCharacter>("FbxCharacter", "Constraint", "Character", "Character::");
    registerClass<FbxConstraintSingleChainIK>("FbxConstraintSingleChainIK", "Constraint", "Single Chain IK", "");
    registerClass<FbxConstraintCustom>("FbxConstraintCustom", "Constraint", "Custom", "");
    registerClass<FbxCachedEffect>("FbxCachedEffect", "NodeAttribute", "CachedEffect", "");
    registerClass<FbxLODGroup>("FbxLODGroup", "NodeAttribute", "LodGroup", "");
    registerClass<FbxMarker>("FbxMarker", "NodeAttribute", "Marker", "");
    registerClass<FbxCameraStereo>("FbxCameraStereo", "NodeAttribute", "CameraStereo", "");
    registerClass<FbxCameraSwitcher>("FbxCameraSwitcher", "NodeAttribute", "CameraSwitcher", "");
    registerClass<FbxOpticalReference>("FbxOpticalReference", "NodeAttribute", "OpticalReference", "");
    registerClass<FbxPatch>("FbxPatch", "Geometry", "Patch", "");
    registerClass<FbxNurbs>("FbxNurbs", "Geometry", "Nurb", "");
    registerClass<FbxNurbsSurface>("FbxNurbsSurface", "Geometry", "NurbsSurface", "");
    registerClass<FbxNurbsCurve>("FbxNurbsCurve", "Geometry", "NurbsCurve", "");
    registerClass<FbxLine>("FbxLine", "Geometry", "Line", "");
    registerClass<FbxTrimNurbsSurface>("FbxTrimNurbsSurface", "Geometry", "TrimNurbsSurface", "");
    registerClass<FbxBoundary>("FbxBoundary", "Geometry", "Boundary", "");
    registerClass<FbxProceduralGeometry>("FbxProceduralGeometry", "Geometry", "ProceduralGeometry", "");
    registerClass<FbxSubDiv>("FbxSubDiv", "Geometry", "SubDiv", "");
    registerClass<FbxImplementation>("FbxImplementation", "Implementation", "", "Implementation::");
    registerClass<FbxBindingTableBase>("FbxBindingTableBase", "", "", "");
    registerClass<FbxBindingTable>("FbxBindingTable", "BindingTable", "", "BindingTable::");
    registerClass<FbxBindingOperator>("FbxBindingOperator", "BindingOperator", "", "BindingOperator::");
    registerClass<FbxProceduralTexture>("FbxProceduralTexture", "ProceduralTexture", "", "ProceduralTexture::");
    registerClass<FbxCameraManipulator>("FbxCameraManipulator", "", "", "");
    registerClass<FbxProcessor>("FbxProcessor", "", "", "");
    registerClass<FbxProcessorXRefCopy>("FbxProcessorXRefCopy", "", "", "");
    registerClass<FbxProcessorXRefCopyUserLibrary>("FbxProcessorXRefCopyUserLibrary", "", "", "");
    registerClass<FbxProcessorShaderDependency>("FbxProcessorShaderDependency", "", "", "");
}

}  // namespace

void FbxClassRegistry::Build() {
    if (tables()) return;
    tables() = new Tables;
    registerAll();
}

void FbxClassRegistry::Release() {
    Tables* t = tables();
    if (!t) return;
    for (FbxClassId* id : t->ids) *id = FbxClassId();
    // Class pages may be instances of one another; drop them from the
    // most derived (last registered) up.
    for (auto it = t->records.rbegin(); it != t->records.rend(); ++it) (*it)->rootPage.reset();
    delete t;
    tables() = nullptr;
}

bool FbxClassRegistry::IsBuilt() { return tables() != nullptr; }

FbxClassId FbxClassRegistry::Register(const char* name, FbxClassId parent, FbxObjectConstructor constructor,
                                      const char* fileType, const char* fileSubType, const char* prefix) {
    Tables* t = tables();
    if (!t || !name || !*name) return FbxClassId();
    if (Find(name).IsValid()) return FbxClassId();
    auto record = std::make_unique<FbxClassRecord>();
    record->name = name;
    record->parent = parent.Record();
    record->constructor = constructor;
    record->fileType = fileType ? fileType : "";
    record->fileSubType = fileSubType ? fileSubType : "";
    record->prefix = prefix ? prefix : "";
    FbxClassRecord* raw = record.get();
    t->records.push_back(std::move(record));
    t->byName.emplace(raw->name, raw);
    if (!raw->fileType.empty()) t->byFileWords.emplace(std::make_pair(raw->fileType, raw->fileSubType), raw);
    return FbxClassId(raw);
}

FbxClassId FbxClassRegistry::Find(const char* name) {
    Tables* t = tables();
    if (!t || !name) return FbxClassId();
    auto it = t->byName.find(std::string_view(name));
    return it == t->byName.end() ? FbxClassId() : FbxClassId(it->second);
}

FbxClassId FbxClassRegistry::FindFile(const char* fileType, const char* fileSubType) {
    Tables* t = tables();
    if (!t || !fileType) return FbxClassId();
    auto it = t->byFileWords.find(std::make_pair(FbxString(fileType), FbxString(fileSubType ? fileSubType : "")));
    return it == t->byFileWords.end() ? FbxClassId() : FbxClassId(it->second);
}

int FbxClassRegistry::Count() {
    Tables* t = tables();
    return t ? static_cast<int>(t->records.size()) : 0;
}

const char* FbxClassId::GetFbxFileTypeName(bool inherit) const {
    const FbxClassRecord* r = record_;
    if (!r) return "";
    if (inherit)
        while (r->fileType.empty() && r->parent) r = r->parent;
    return r->fileType.c_str();
}

const char* FbxClassId::GetObjectTypePrefix(bool inherit) const {
    const FbxClassRecord* r = record_;
    if (!r) return "";
    if (inherit)
        while (r->prefix.empty() && r->parent) r = r->parent;
    return r->prefix.c_str();
}

bool FbxClassId::Is(FbxClassId other) const {
    if (!record_ || !other.record_) return false;
    for (const FbxClassRecord* r = record_; r; r = r->parent)
        if (r == other.record_) return true;
    return false;
}

FbxProperty FbxClassId::GetRootClassProperty() const {
    FbxPropertyPage* page = GetRootPage();
    return page ? FbxProperty(page, 0) : FbxProperty();
}
