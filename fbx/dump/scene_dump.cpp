#include "fbx/dump/scene_dump.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

#include "fbx/dump/dump_writer.h"
#include "fbx/dump/geometry_dump.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_surface_material.h"
#include "fbx/model/fbx_time.h"

namespace {

DumpValue vector3(const FbxDouble3& v) {
    DumpValue array = DumpValue::array();
    for (int i = 0; i < 3; ++i) array.push(v[i]);
    return array;
}

std::string objectLabel(const FbxObject* object) {
    return std::string(object->GetClassId().GetName()) + " " + object->GetName();
}

template <int N>
DumpValue doubles(const FbxProperty& property) {
    FbxDoubleN<N> value;
    property.Get(&value, N == 2 ? eFbxDouble2 : N == 3 ? eFbxDouble3 : eFbxDouble4);
    DumpValue array = DumpValue::array();
    for (int i = 0; i < N; ++i) array.push(value[i]);
    return array;
}

DumpValue propertyValue(const FbxProperty& property) {
    switch (property.GetPropertyDataType().GetType()) {
    case eFbxChar:
    case eFbxUChar:
    case eFbxShort:
    case eFbxUShort:
    case eFbxUInt:
    case eFbxInt:
    case eFbxEnum:
    case eFbxLongLong:
        return DumpValue(property.Get<FbxLongLong>());
    case eFbxULongLong:
        return DumpValue(property.Get<FbxULongLong>());
    case eFbxBool:
        return DumpValue(property.Get<FbxBool>());
    case eFbxHalfFloat:
    case eFbxFloat:
    case eFbxDouble:
        return DumpValue(property.Get<FbxDouble>());
    case eFbxDistance:
        return DumpValue(property.Get<FbxDouble>());
    case eFbxDouble2:
        return doubles<2>(property);
    case eFbxDouble3:
        return doubles<3>(property);
    case eFbxDouble4:
        return doubles<4>(property);
    case eFbxString:
        return DumpValue(property.Get<FbxString>());
    case eFbxTime:
        return DumpValue(property.Get<FbxTime>().Get());
    default:
        return DumpValue(std::string("<") + property.GetPropertyDataType().GetName() + ">");
    }
}

// Properties in tree order, so that children follow their parents.
void collectProperties(const FbxObject& object, DumpValue& properties, DumpValue& connections) {
    std::vector<FbxProperty> pending;
    for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = p.GetSibling()) pending.push_back(p);
    std::reverse(pending.begin(), pending.end());
    while (!pending.empty()) {
        FbxProperty p = pending.back();
        pending.pop_back();
        std::string name = p.GetHierarchicalName();
        if (p.ValueOwner(true) == FbxProperty::eOwnValue) properties.add(name, propertyValue(p));
        for (int i = 0; i < p.GetSrcObjectCount(); ++i)
            if (FbxObject* source = p.GetSrcObject(i)) connections.push(name + " <- " + objectLabel(source));
        for (int i = 0; i < p.GetSrcPropertyCount(); ++i) {
            FbxProperty source = p.GetSrcProperty(i);
            FbxObject* owner = source.GetFbxObject();
            if (owner) connections.push(name + " <- " + objectLabel(owner) + " | " + source.GetHierarchicalName());
        }
        std::vector<FbxProperty> children;
        for (FbxProperty c = p.GetChild(); c.IsValid(); c = c.GetSibling()) children.push_back(c);
        pending.insert(pending.end(), children.rbegin(), children.rend());
    }
    FbxProperty root = object.GetRootProperty();
    for (int i = 0; i < root.GetSrcPropertyCount(); ++i) {
        FbxProperty source = root.GetSrcProperty(i);
        if (FbxObject* owner = source.GetFbxObject())
            connections.push(std::string("(object) <- ") + objectLabel(owner) + " | " + source.GetHierarchicalName());
    }
}

DumpValue dumpObject(const FbxObject& object) {
    DumpValue value = DumpValue::object();
    value.add("class", object.GetClassId().GetName());
    value.add("name", object.GetName());
    DumpValue& sources = value.add("sources", DumpValue::array());
    for (int i = 0; i < object.GetSrcObjectCount(); ++i)
        if (FbxObject* source = object.GetSrcObject(i)) sources.push(objectLabel(source));
    DumpValue& destinations = value.add("destinations", DumpValue::array());
    for (int i = 0; i < object.GetDstObjectCount(); ++i)
        if (FbxObject* destination = object.GetDstObject(i)) destinations.push(objectLabel(destination));
    DumpValue connections = DumpValue::array();
    DumpValue properties = DumpValue::object();
    collectProperties(object, properties, connections);
    value.add("propertyConnections", std::move(connections));
    value.add("properties", std::move(properties));
    addGeometryDetails(object, value);
    return value;
}

// A node's own lines, all but its children.
DumpValue nodeValues(const FbxNode& node) {
    DumpValue value = DumpValue::object();
    value.add("name", node.GetName());
    DumpValue& attributes = value.add("attributes", DumpValue::array());
    for (int i = 0; i < node.GetNodeAttributeCount(); ++i)
        if (FbxNodeAttribute* attribute = node.GetNodeAttributeByIndex(i))
            attributes.push(attribute->GetClassId().GetName());
    value.add("translation", vector3(node.LclTranslation().Get()));
    value.add("rotation", vector3(node.LclRotation().Get()));
    value.add("scaling", vector3(node.LclScaling().Get()));
    if (node.GetMaterialCount() > 0) {
        DumpValue& materials = value.add("materials", DumpValue::array());
        for (int i = 0; i < node.GetMaterialCount(); ++i)
            if (FbxSurfaceMaterial* material = node.GetMaterial(i)) materials.push(material->GetName());
    }
    return value;
}

// Opens a node: its own lines, then the array of its children.
void openNode(const FbxNode& node, DumpWriter& writer) {
    writer.beginObject();
    DumpValue values = nodeValues(node);
    for (const auto& [key, value] : values.members()) {
        writer.key(key);
        writer.write(value);
    }
    writer.key("children");
    writer.beginArray(DumpWriter::Items::eAny);
}

}  // namespace

DumpValue dumpHeader(const FbxImporter& importer) {
    DumpValue value = DumpValue::object();
    int major = 0, minor = 0, revision = 0;
    importer.GetFileVersion(major, minor, revision);
    value.add("version", std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(revision));
    const FbxHeaderInfo* header = importer.GetHeaderInfo();
    value.add("fileVersion", static_cast<int64_t>(header ? header->fileVersion : 0));
    value.add("creator", header ? header->creator : std::string());
    auto* reader = dynamic_cast<FbxReaderFbx7*>(importer.GetReader());
    FbxFieldStream* stream = reader ? reader->GetFieldStream() : nullptr;
    value.add("syntax", !stream ? "" : stream->IsBinary() ? "binary" : "text");
    return value;
}

void dumpNodeTree(const FbxScene& scene, DumpWriter& writer) {
    FbxNode* root = scene.GetRootNode();
    if (!root) {
        writer.write(DumpValue());
        return;
    }
    // Depth first with a stack of its own, each node once: a node met again
    // (connections made by hand can share one) is named and marked.
    struct Step {
        const FbxNode* node;
        int next;
        int count;
    };
    std::unordered_set<const FbxNode*> seen{root};
    std::vector<Step> path{{root, 0, root->GetChildCount()}};
    openNode(*root, writer);
    while (!path.empty()) {
        Step& step = path.back();
        if (step.next >= step.count) {
            writer.end();
            writer.end();
            path.pop_back();
            continue;
        }
        const FbxNode* child = step.node->GetChild(step.next++);
        if (!child) continue;
        if (!seen.insert(child).second) {
            DumpValue again = DumpValue::object();
            again.add("name", child->GetName());
            again.add("seenBefore", true);
            writer.write(again);
            continue;
        }
        openNode(*child, writer);
        path.push_back({child, 0, child->GetChildCount()});
    }
}

void dumpObjects(const FbxDocument& document, DumpWriter& writer) {
    std::vector<const FbxObject*> objects;
    std::unordered_set<const FbxObject*> seen{&document};  // lookup only; the output follows `objects`
    for (int i = 0; i < document.GetSrcObjectCount(); ++i) {
        const FbxObject* member = document.GetSrcObject(i);
        if (member && seen.insert(member).second) objects.push_back(member);
    }
    std::stable_sort(objects.begin(), objects.end(), [](const FbxObject* a, const FbxObject* b) {
        return std::string_view(a->GetClassId().GetName()) < std::string_view(b->GetClassId().GetName());
    });
    writer.beginArray(DumpWriter::Items::eAny);
    writer.write(dumpObject(document));
    for (const FbxObject* object : objects) writer.write(dumpObject(*object));
    writer.end();
}
