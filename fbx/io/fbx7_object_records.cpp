// The object records of the FBX 7 document reader: the order of the type
// words, the dispatch of a record to the class it makes, and the records of
// nodes, node attributes and objects that only carry properties.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <initializer_list>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_deformer.h"
#include "fbx/model/fbx_file_texture.h"
#include "fbx/model/fbx_further_classes.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_light.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_null.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_skeleton.h"
#include "fbx/model/fbx_surface_lambert.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_surface_phong.h"
#include "fbx/model/fbx_thumbnail.h"
#include "fbx/model/fbx_video.h"

namespace {

bool equalsNoCase(const FbxString& a, const char* b) {
    size_t n = std::strlen(b);
    if (a.size() != n) return false;
    for (size_t i = 0; i < n; ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool isOneOf(const FbxString& word, std::initializer_list<const char*> words) {
    for (const char* w : words)
        if (word == w) return true;
    return false;
}

// Type words whose class is named by the word alone, whatever the subclass.
bool namesItsClass(const FbxString& word) {
    return isOneOf(word, {"ControlSetPlug", "Cache", "Implementation", "BindingTable", "BindingOperator",
                          "SelectionNode", "Collection", "Document", "LayeredTexture", "ProceduralTexture",
                          "ObjectMetaData", "GenericNode", "Container"});
}

// Reads a double field of the current block into a double property when
// the field is there.
void readDoubleInto(FbxFieldStream& s, const char* field, FbxProperty property, double scale = 1.0) {
    if (!s.BeginField(field)) return;
    property.Set(FbxDouble(s.NextDouble() * scale));
    s.EndField();
}

}  // namespace

void Fbx7DocumentReader::ReorderObjectTypes(std::vector<FbxString>& types) const {
    // Attributes, nodes and materials come first so that what refers to
    // them by name (such as poses) finds them; constraints and timelines
    // come last.
    for (const char* word : {"Video", "Texture", "ProceduralTexture", "Material", "Model", "NodeAttribute"}) {
        auto it = std::find(types.begin(), types.end(), word);
        if (it != types.end()) std::rotate(types.begin(), it, it + 1);
    }
    for (const char* word : {"Constraint", "TimelineX", "TimelineXTrack", "Clip", "Folder"}) {
        auto it = std::find(types.begin(), types.end(), word);
        if (it != types.end()) std::rotate(it, it + 1, types.end());
    }
}

bool Fbx7DocumentReader::Option(const char* path, bool defaultValue) const {
    return settings_ ? settings_->GetBoolProp(path, defaultValue) : defaultValue;
}

FbxObject* Fbx7DocumentReader::MakeObject(FbxClassId classId, const char* name, FbxObject* referenced) {
    FbxObject* object = nullptr;
    if (referenced && referenced->Is(classId)) {
        object = referenced->Clone();
        if (object) object->SetInitialName(name);
    } else if (classId.IsValid()) {
        // The definition names of textures, lights and materials name no
        // class of this registry, so the class itself is made.
        object = manager_.CreateObject(classId, name);
        if (object && !object->Is(classId)) {
            object->Destroy();
            object = nullptr;
        }
    }
    if (object) reader_.ApplyTemplate(object);
    return object;
}

FbxClassId Fbx7DocumentReader::GenericClass(const char* word, const char* subclass) {
    FbxClassId classId = manager_.FindFileClass(word, subclass);
    if (!classId.IsValid() && namesItsClass(word)) classId = manager_.FindFileClass(word, "");
    if (classId.IsValid()) return classId;
    // A class that only the file knows: registered with the file's words so
    // that the object keeps its type, and found by them from now on.
    // Attributes, geometries and deformers keep their kind, so that nodes
    // and geometries treat them as such.
    FbxString name = FbxString("FbxFileClass:") + word + ":" + subclass;
    classId = manager_.FindClass(name.c_str());
    if (classId.IsValid()) return classId;
    FbxString kind = word;
    if (kind == "NodeAttribute")
        return manager_.RegisterRuntimeClass(name.c_str(), FbxNodeAttribute::ClassId, &FbxNodeAttribute::Allocate, word,
                                             subclass);
    if (kind == "Geometry")
        return manager_.RegisterRuntimeClass(name.c_str(), FbxGeometry::ClassId, &FbxGeometry::Allocate, word,
                                             subclass);
    if (kind == "Deformer")
        return manager_.RegisterRuntimeClass(name.c_str(), FbxDeformer::ClassId, &FbxDeformer::Allocate, word,
                                             subclass);
    return manager_.RegisterRuntimeClass(name.c_str(), FbxObject::ClassId, &FbxObject::Allocate, word, subclass);
}

void Fbx7DocumentReader::ReadVersionAndProperties(FbxObject* object) {
    if (!object || !inBlock_) return;
    stream_->NextInt("Version", 0);
    StepProgress(object->GetName());
    reader_.ReadProperties70(object);
}

FbxObject* Fbx7DocumentReader::ReadGeneric(const char* word, const char* subclass, const char* name,
                                           FbxObject* referenced) {
    FbxObject* object = MakeObject(GenericClass(word, subclass), name, referenced);
    ReadVersionAndProperties(object);
    return object;
}

void Fbx7DocumentReader::ReadObject(const FbxString& word, int64_t id, const FbxString& name, const FbxString& subclass,
                                    FbxObject* referenced, FbxDocument* target, bool inBlock) {
    inBlock_ = inBlock;
    const char* n = name.c_str();
    const char* sub = subclass.c_str();
    FbxObject* object = nullptr;
    if (word == "PluginParameters" || word == "SceneInfo") {
        return;  // no plug-in takes parameters; the scene info came with the header
    } else if (word == "Model") {
        object = ReadModel(n, referenced);
    } else if (word == "NodeAttribute") {
        object = ReadNodeAttribute(sub, n, referenced);
    } else if (word == "Material") {
        if (FindObject(id)) return;
        object = ReadMaterial(sub, n, referenced);
    } else if (word == "Geometry") {
        object = ReadGeometry(sub, n, referenced);
    } else if (word == "Deformer") {
        object = ReadDeformer(sub, n, referenced);
    } else if (word == "Texture") {
        object = MakeObject(FbxFileTexture::ClassId, n, referenced);
        if (auto* texture = FbxCast<FbxFileTexture>(object); texture && inBlock_) ReadTexture(*texture);
    } else if (word == "LayeredTexture") {
        object = MakeObject(FbxLayeredTexture::ClassId, n, referenced);
        if (auto* texture = FbxCast<FbxLayeredTexture>(object); texture && inBlock_) ReadLayeredTexture(*texture);
    } else if (word == "Thumbnail") {
        object = MakeObject(FbxThumbnail::ClassId, n, referenced);
        ReadVersionAndProperties(object);
    } else if (word == "Video") {
        object = MakeObject(FbxVideo::ClassId, n, referenced);
        if (auto* video = FbxCast<FbxVideo>(object); video && inBlock_) ReadVideo(*video, referenced != nullptr);
    } else if (word == "Container") {
        if (!scene_) return;
        object = ReadGeneric(word.c_str(), sub, n, referenced);
    } else if (word == "Pose") {
        if (!scene_ || !isOneOf(subclass, {"BindPose", "RestPose"})) return;
        object = MakeObject(FbxPose::ClassId, n, referenced);
        if (auto* pose = FbxCast<FbxPose>(object)) {
            pose->SetIsBindPose(subclass == "BindPose");
            if (inBlock_) ReadPose(*pose);
        }
    } else if (word == "Constraint") {
        // Characters need the character set-up, which this system lacks.
        if (!scene_ || subclass == "Character") return;
        if (!Option(FbxIOPath::kConstraint, true)) return;
        object = ReadGeneric(word.c_str(), sub, n, referenced);
    } else if (word == "GlobalSettings") {
        // Files of 7.0 keep the scene's settings among the objects.
        if (!scene_) return;
        FbxGlobalSettings* settings = scene_->GetGlobalSettings();
        ReadVersionAndProperties(settings);
        AddToMaps(id, settings);
        return;
    } else if (word == "Collection" && subclass == "SelectionSet") {
        object = MakeObject(FbxSelectionSet::ClassId, n, referenced);
        ReadVersionAndProperties(object);
    } else if (word == "AnimationStack" || word == "AnimationLayer" || word == "AnimationCurveNode" ||
               word == "AnimationCurve") {
        object = ReadAnimationObject(word, n, referenced);
    } else if (word == "SceneReference") {
        // Kept by the manager alone: neither mapped nor connected.
        ReadVersionAndProperties(MakeObject(FbxSceneReference::ClassId, n, referenced));
        return;
    } else {
        object = ReadGeneric(word.c_str(), sub, n, referenced);
    }
    AddToMapsAndConnect(id, object, target);
}

FbxObject* Fbx7DocumentReader::ReadModel(const char* name, FbxObject* referenced) {
    FbxNode* node = FbxCast<FbxNode>(MakeObject(FbxNode::ClassId, name, referenced));
    if (!node) return nullptr;
    nodes_.push_back(node);
    FbxFieldStream& s = *stream_;
    if (inBlock_) {
        if (s.NextInt("Version", 100) < 232) node->SetOldVersion(true);
        FbxNode::EShadingMode shading = FbxNode::eHardShading;
        if (s.BeginField("Shading")) {
            switch (s.NextChar()) {
            case 'W':
                shading = FbxNode::eWireFrame;
                break;
            case 'F':
                shading = FbxNode::eFlatShading;
                break;
            case 'Y':
                shading = FbxNode::eLightShading;
                break;
            case 'T':
                shading = FbxNode::eTextureShading;
                break;
            case 'U':
                shading = FbxNode::eFullShading;
                break;
            default:
                break;
            }
            s.EndField();
        }
        node->SetShadingMode(shading);
        FbxString culling = s.NextString("Culling", "");
        node->SetCullingType(culling == "CullingOnCCW"  ? FbxNode::eCullingOnCCW
                             : culling == "CullingOnCW" ? FbxNode::eCullingOnCW
                                                        : FbxNode::eCullingOff);
        double v[3] = {0.0, 0.0, 0.0};
        if (s.BeginField("PostTargetRotation")) {
            s.NextDouble3(v);
            s.EndField();
            node->SetPostTargetRotation(FbxVector4(v[0], v[1], v[2]));
        }
        if (s.BeginField("UpTargetRotation")) {
            v[0] = v[1] = v[2] = 0.0;
            s.NextDouble3(v);
            s.EndField();
            node->SetUpTargetRotation(FbxVector4(v[0], v[1], v[2]));
        }
        StepProgress(name);
        reader_.ReadProperties70(node);
    }
    node->UpdatePivotsAndLimitsFromProperties();
    return node;
}

FbxObject* Fbx7DocumentReader::ReadNodeAttribute(const char* subclass, const char* name, FbxObject* referenced) {
    FbxString sub = subclass;
    FbxClassId classId;
    int skeletonType = -1;
    if (sub == "Null") {
        classId = FbxNull::ClassId;
    } else if (sub == "Root" || sub == "Limb" || sub == "LimbNode" || sub == "Effector") {
        classId = FbxSkeleton::ClassId;
        skeletonType = sub == "Root"       ? FbxSkeleton::eRoot
                       : sub == "Limb"     ? FbxSkeleton::eLimb
                       : sub == "LimbNode" ? FbxSkeleton::eLimbNode
                                           : FbxSkeleton::eEffector;
    } else if (isOneOf(sub, {"Marker", "OpticalMarker", "IKEffector", "FKEffector"})) {
        classId = FbxMarker::ClassId;
    } else if (sub == "Light") {
        classId = FbxLight::ClassId;
    } else {
        // Cameras, optical data, cached effects, level-of-detail groups and
        // kinds only the file knows.
        classId = GenericClass("NodeAttribute", subclass);
    }
    FbxObject* object = MakeObject(classId, name, referenced);
    if (!object) return nullptr;
    FbxSkeleton* skeleton = FbxCast<FbxSkeleton>(object);
    if (skeleton && skeletonType >= 0) skeleton->SetSkeletonType(static_cast<FbxSkeleton::EType>(skeletonType));
    if (!inBlock_) return object;

    // Older files keep sizes and colours outside "Properties70".
    FbxFieldStream& s = *stream_;
    if (skeleton && skeletonType == FbxSkeleton::eLimb) readDoubleInto(s, "LimbLength", skeleton->LimbLength());
    if (FbxNull* null = FbxCast<FbxNull>(object)) {
        if (s.BeginField("Properties")) {
            if (s.HasBlock() && s.EnterBlock()) {
                readDoubleInto(s, "Size", null->Size());
                s.LeaveBlock();
            }
            s.EndField();
        }
    } else if (skeleton && skeletonType != FbxSkeleton::eEffector) {
        bool properties = false;
        if (s.BeginField("Properties")) {
            if (s.HasBlock() && s.EnterBlock()) {
                properties = true;
                readDoubleInto(s, "Size", skeleton->Size());
                if (skeletonType != FbxSkeleton::eRoot && s.BeginField("Color")) {
                    double c[3] = {0.0, 0.0, 0.0};
                    s.NextDouble3(c);
                    s.EndField();
                    skeleton->SetLimbNodeColor(FbxDouble3(c[0], c[1], c[2]));
                }
                s.LeaveBlock();
            }
            s.EndField();
        }
        if (!properties && skeletonType == FbxSkeleton::eLimbNode) readDoubleInto(s, "Size", skeleton->Size(), 100.0);
    }
    ReadVersionAndProperties(object);
    return object;
}

FbxObject* Fbx7DocumentReader::ReadMaterial(const char* subclass, const char* name, FbxObject* referenced) {
    int version = inBlock_ ? stream_->NextInt("Version", 100) : 100;
    FbxString shading = subclass;
    if (shading.empty()) shading = inBlock_ ? stream_->NextString("ShadingModel", "Phong") : "Phong";
    FbxObject* object = nullptr;
    if (referenced && referenced->Is(FbxSurfaceMaterial::ClassId)) {
        object = MakeObject(referenced->GetClassId(), name, referenced);
    } else if (equalsNoCase(shading, "phong") || equalsNoCase(shading, "blinn")) {
        object = MakeObject(FbxSurfacePhong::ClassId, name, nullptr);
    } else if (equalsNoCase(shading, "lambert")) {
        object = MakeObject(FbxSurfaceLambert::ClassId, name, nullptr);
    } else {
        FbxClassId classId = manager_.FindClass(shading.c_str());
        bool known = classId.IsValid() && classId.Is(FbxSurfaceMaterial::ClassId);
        object = MakeObject(known ? classId : FbxSurfaceMaterial::ClassId, name, nullptr);
        if (object && !known) {
            FbxProperty model = object->FindProperty("ShadingModel", true);
            if (model.IsValid()) model.Set(shading.c_str());
        }
    }
    if (object && inBlock_) ReadMaterialFields(*object, version);
    return object;
}
