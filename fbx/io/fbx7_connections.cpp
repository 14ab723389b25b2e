// The "Connections" section of the FBX 7 document reader: each "C" record
// links two ends, objects or properties, named by the file's ids. The
// order of the records is the order of the connections, which gives the
// order of children, attributes and materials.

#include <cstring>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/model/fbx_document.h"
#include "fbx/model/fbx_layered_texture.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_texture.h"

namespace {

enum class Kind { eObjectObject, ePropertyObject, eObjectProperty, ePropertyProperty, eDocumentProperty, eOther };

Kind kindOf(const char* word) {
    // Only the first 31 characters of the word count.
    auto is = [word](const char* kind) { return std::strncmp(word, kind, 31) == 0; };
    if (is("OO") || is("OD")) return Kind::eObjectObject;
    if (is("PO")) return Kind::ePropertyObject;
    if (is("OP")) return Kind::eObjectProperty;
    if (is("PP")) return Kind::ePropertyProperty;
    if (is("EP")) return Kind::eDocumentProperty;
    return Kind::eOther;
}

// Whether a pair that is connected already may be connected once more: a
// texture can stand twice in a layered texture, a material twice on a node.
bool allowsSecondLink(const FbxObject* source, const FbxObject* destination) {
    return (destination->Is<FbxLayeredTexture>() && source->Is<FbxTexture>()) ||
           (destination->Is<FbxNode>() && source->Is<FbxSurfaceMaterial>());
}

FbxProperty findProperty(FbxObject* object, const FbxString& name) {
    return object ? object->FindProperty(name.c_str(), true) : FbxProperty();
}

}  // namespace

FbxObject* Fbx7DocumentReader::ResolveId(int64_t id) const {
    if (id == 0) return scene_ ? scene_->GetRootNode() : nullptr;
    return FindObject(id);
}

void Fbx7DocumentReader::ConnectObjects(FbxObject* source, FbxObject* destination) {
    // Nodes and documents form trees: one parent each, and no cycle.
    switch (parentLinks_.Check(source, destination)) {
    case Fbx7ParentLinks::Verdict::eCycle:
        cycleRefused_ = true;
        return;
    case Fbx7ParentLinks::Verdict::eSecondParent:
        return;
    case Fbx7ParentLinks::Verdict::eLink:
        // The scene's root node stands at the top of its tree.
        if (scene_ && source == scene_->GetRootNode()) return;
        break;
    case Fbx7ParentLinks::Verdict::eNotATreeLink:
        if (source == destination) return;
        break;
    }
    if (source->IsConnectedDstObject(destination) && !allowsSecondLink(source, destination)) return;
    destination->ConnectSrcObject(source);
    // A node that gets its first attribute without a default attribute
    // index (a file may leave "DefaultAttributeIndex" out) takes that one.
    FbxNode* node = FbxCast<FbxNode>(destination);
    if (node && source->Is<FbxNodeAttribute>() && node->GetDefaultNodeAttributeIndex() < 0)
        node->SetDefaultNodeAttributeIndex(0);
}

void Fbx7DocumentReader::ReadConnections() {
    FbxFieldStream& s = *stream_;
    if (!s.BeginField("Connections")) return;
    if (!s.HasBlock()) {
        s.EndField();
        return;
    }
    s.EnterBlock();
    // Whether two ends are connected is asked from the source's side: a
    // source has few destinations, while a destination such as the root
    // node or the scene can have very many sources.
    while (s.BeginField("C")) {
        Kind kind = kindOf(s.NextString());
        switch (kind) {
        case Kind::eObjectObject: {
            FbxObject* source = ResolveId(s.NextLong());
            FbxObject* destination = ResolveId(s.NextLong());
            if (source && destination) ConnectObjects(source, destination);
            break;
        }
        case Kind::ePropertyObject: {
            FbxObject* source = ResolveId(s.NextLong());
            FbxProperty property = findProperty(source, s.NextString());
            FbxObject* destination = ResolveId(s.NextLong());
            if (!property.IsValid() || !destination) break;
            FbxProperty root = destination->GetRootProperty();
            if (!property.IsConnectedDstProperty(root)) root.ConnectSrcProperty(property);
            break;
        }
        case Kind::eObjectProperty: {
            FbxObject* source = ResolveId(s.NextLong());
            FbxObject* destination = ResolveId(s.NextLong());
            FbxProperty property = findProperty(destination, s.NextString());
            if (!source || !property.IsValid()) break;
            if (!source->IsConnectedDstProperty(property)) property.ConnectSrcObject(source);
            break;
        }
        case Kind::ePropertyProperty: {
            FbxObject* source = ResolveId(s.NextLong());
            FbxProperty sourceProperty = findProperty(source, s.NextString());
            FbxObject* destination = ResolveId(s.NextLong());
            FbxProperty destinationProperty = findProperty(destination, s.NextString());
            if (!sourceProperty.IsValid() || !destinationProperty.IsValid()) break;
            if (!sourceProperty.IsConnectedDstProperty(destinationProperty))
                destinationProperty.ConnectSrcProperty(sourceProperty);
            break;
        }
        case Kind::eDocumentProperty: {
            FbxObject* destination = ResolveId(s.NextLong());
            FbxProperty property = findProperty(destination, s.NextString());
            if (!property.IsValid()) break;
            if (!document_->IsConnectedDstProperty(property)) property.ConnectSrcObject(document_);
            break;
        }
        case Kind::eOther:
            break;
        }
        s.EndField();
    }
    s.LeaveBlock();
    s.EndField();
}
