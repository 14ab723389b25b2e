// Builds a well-formed FBX scene from the fuzzer's bytes and converts it as
// the tool does, container and all. The bytes choose the node tree (nulls,
// skeletons and meshes in any nesting), each mesh's control points and
// polygons (any sizes, indices out of range), its normals, UVs and material
// indices in every mapping and reference mode, materials with textures, a
// skin whose clusters link any node with any indices and weights, geometric
// offsets, and an animated stack. Conversion must neither crash nor hang,
// whatever the scene holds.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings_store.h"
#include "fbx/io/fbx_binary_builder_testing.h"
#include "scene/convert_scene.h"
#include "tarn/kiva_builder.h"
#include "tarn/kiva_container.h"
#include "tarn/kiva_writer.h"
#include "tarn/material_cache.h"

namespace {

// The fuzzer's bytes as a stream of choices; zeros once they run out.
class Choices {
public:
    Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
    int Below(int n) { return Byte() % n; }
    bool Flag() { return Byte() & 1; }
    double Value() { return static_cast<int8_t>(Byte()) * 0.25; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

const char* const kMappings[] = {"ByPolygonVertex", "ByVertice", "ByPolygon", "AllSame", "ByEdge", "NoMapping"};
const char* const kReferences[] = {"Direct", "IndexToDirect", "Index"};

void vector3(FbxBinaryBuilder& b, const char* name, double x, double y, double z) {
    b.Begin("P").String(name).String("Vector3D").String("").String("A").Double(x).Double(y).Double(z).End();
}

// A layer element whose value and index arrays the choices size freely.
void element(FbxBinaryBuilder& b, Choices& c, const char* word, const char* values, int width, int corners,
             bool withIndex) {
    b.Begin(word).Int(0);
    b.Begin("Version").Int(101).End();
    b.Begin("Name").String(c.Flag() ? "UVMap" : "").End();
    b.Begin("MappingInformationType").String(kMappings[c.Below(6)]).End();
    b.Begin("ReferenceInformationType").String(kReferences[c.Below(3)]).End();
    if (values) {
        std::vector<double> data(static_cast<size_t>(width * (c.Below(4) == 0 ? c.Below(8) : corners)));
        for (double& v : data) v = c.Value();
        b.Begin(values).DoubleArray(data).End();
    }
    if (withIndex) {
        std::vector<int32_t> index(static_cast<size_t>(c.Below(4) == 0 ? c.Below(8) : corners));
        for (int32_t& i : index) i = c.Below(10) - 1;
        b.Begin(values ? (std::string(values) + "Index").c_str() : "Materials").IntArray(index).End();
    }
    b.End();
}

void mesh(FbxBinaryBuilder& b, Choices& c, int64_t id) {
    b.Begin("Geometry").Long(id).ObjectName("mesh", "Geometry").String("Mesh");
    const int points = c.Below(12);
    std::vector<double> positions(static_cast<size_t>(3 * points));
    for (double& v : positions) v = c.Value();
    b.Begin("Vertices").DoubleArray(positions).End();
    std::vector<int32_t> polygons;
    const int polygonCount = c.Below(8);
    for (int p = 0; p < polygonCount; ++p) {
        const int size = 1 + c.Below(7);
        for (int k = 0; k < size; ++k) {
            int32_t index = c.Below(16) == 0 ? c.Below(40) - 20 : c.Below(points > 0 ? points : 1);
            polygons.push_back(k + 1 == size ? -1 - index : index);
        }
    }
    b.Begin("PolygonVertexIndex").IntArray(polygons).End();
    const int corners = static_cast<int>(polygons.size());
    if (c.Flag()) element(b, c, "LayerElementNormal", "Normals", 3, corners, c.Flag());
    if (c.Flag()) element(b, c, "LayerElementUV", "UV", 2, corners, true);
    if (c.Flag()) element(b, c, "LayerElementMaterial", nullptr, 0, polygonCount, true);
    b.Begin("Layer").Int(0);
    b.Begin("Version").Int(100).End();
    for (const char* type : {"LayerElementNormal", "LayerElementUV", "LayerElementMaterial"}) {
        b.Begin("LayerElement");
        b.Begin("Type").String(type).End();
        b.Begin("TypedIndex").Int(0).End();
        b.End();
    }
    b.End();
    b.End();
}

std::vector<uint8_t> buildFile(Choices& c) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    for (const char* word : {"Model", "NodeAttribute", "Geometry", "Deformer", "Material", "Texture", "AnimationStack",
                             "AnimationLayer", "AnimationCurveNode", "AnimationCurve"}) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();

    std::vector<std::vector<int64_t>> links;  // source, destination; a third value names a property
    b.Begin("Objects");
    const int nodes = 1 + c.Below(8);
    static const char* const kKinds[] = {"Null", "LimbNode", "Mesh", "Root"};
    for (int n = 0; n < nodes; ++n) {
        const int kind = c.Below(4);
        const int64_t id = 100 + n;
        b.Begin("Model").Long(id).ObjectName(("node" + std::to_string(n)).c_str(), "Model").String(kKinds[kind]);
        b.Begin("Properties70");
        for (const char* name : {"Lcl Translation", "Lcl Rotation", "Lcl Scaling", "GeometricTranslation",
                                 "GeometricRotation", "GeometricScaling"})
            if (c.Below(3) == 0) vector3(b, name, c.Value(), c.Value(), c.Value());
        b.End();
        b.End();
        links.push_back({id, n == 0 || c.Below(3) == 0 ? 0 : 100 + c.Below(n)});
        if (kind == 1 || kind == 3) {
            b.Begin("NodeAttribute").Long(200 + n).ObjectName("bone", "NodeAttribute").String(kKinds[kind]);
            b.Begin("TypeFlags").String("Skeleton").End();
            b.End();
            links.push_back({200 + n, id});
        } else if (kind == 2) {
            mesh(b, c, 300 + n);
            links.push_back({300 + n, id});
            const int materials = c.Below(4);
            for (int m = 0; m < materials; ++m) {
                const int64_t material = 400 + n * 4 + m;
                b.Begin("Material").Long(material).ObjectName("material", "Material").String("");
                b.Begin("ShadingModel").String(c.Flag() ? "phong" : "lambert").End();
                b.Begin("Properties70");
                vector3(b, "DiffuseColor", c.Value(), c.Value(), c.Value());
                b.End();
                b.End();
                links.push_back({material, id});
                for (int t = 0; t < 4; ++t) {
                    if (c.Below(3) != 0) continue;
                    const int64_t texture = 1000 + material * 4 + t;
                    b.Begin("Texture").Long(texture).ObjectName("texture", "Texture").String("");
                    b.Begin("FileName").String(c.Flag() ? "missing.png" : "").End();
                    b.Begin("RelativeFilename").String(c.Flag() ? "../x/missing.tga" : "C:\\t\\a.png").End();
                    b.End();
                    links.push_back({texture, material, t});
                }
            }
            if (c.Flag()) {
                const int64_t skin = 3000 + n * 16;
                b.Begin("Deformer").Long(skin).ObjectName("skin", "Deformer").String("Skin").End();
                links.push_back({skin, 300 + n});
                const int clusters = c.Below(4);
                for (int k = 0; k < clusters; ++k) {
                    const int64_t cluster = skin + 1 + k;
                    b.Begin("Deformer").Long(cluster).ObjectName("cluster", "SubDeformer").String("Cluster");
                    std::vector<int32_t> indexes(static_cast<size_t>(c.Below(10)));
                    std::vector<double> weights(indexes.size() + static_cast<size_t>(c.Below(3)));
                    for (int32_t& i : indexes) i = c.Below(16) - 2;
                    for (double& w : weights) w = c.Value();
                    b.Begin("Indexes").IntArray(indexes).End();
                    b.Begin("Weights").DoubleArray(weights).End();
                    b.End();
                    links.push_back({cluster, skin});
                    links.push_back({100 + c.Below(nodes), cluster});
                }
            }
        }
    }
    if (c.Flag()) {
        b.Begin("AnimationStack").Long(5000).ObjectName("Take", "AnimStack").String("").End();
        b.Begin("AnimationLayer").Long(5001).ObjectName("layer", "AnimLayer").String("").End();
        b.Begin("AnimationCurveNode").Long(5002).ObjectName("R", "AnimCurveNode").String("").End();
        b.Begin("AnimationCurve").Long(5003).ObjectName("", "AnimCurve").String("");
        b.Begin("KeyVer").Int(4009).End();
        std::vector<int64_t> times;
        std::vector<float> values;
        const int keys = c.Below(4);
        for (int k = 0; k < keys; ++k) {
            times.push_back(static_cast<int64_t>(c.Below(120)) * 46186158000 / 30);
            values.push_back(static_cast<float>(c.Value()));
        }
        b.Begin("KeyTime").LongArray(times).End();
        b.Begin("KeyValueFloat").FloatArray(values).End();
        b.Begin("KeyAttrFlags").IntArray({0x4}).End();
        b.Begin("KeyAttrDataFloat").FloatArray({0, 0, 0, 0}).End();
        b.Begin("KeyAttrRefCount").IntArray({keys}).End();
        b.End();
        links.push_back({5001, 5000});
        links.push_back({5002, 5001});
        links.push_back({5002, 100 + c.Below(nodes), 100});
        links.push_back({5003, 5002, 101});
    }
    b.EmptyBlock();
    b.End();

    static const char* const kTextureChannels[] = {"DiffuseColor", "NormalMap", "SpecularFactor", "SpecularColor"};
    b.Begin("Connections");
    for (const std::vector<int64_t>& link : links) {
        if (link.size() == 2) {
            b.Begin("C").String("OO").Long(link[0]).Long(link[1]).End();
            continue;
        }
        const char* property = link[2] < 4 ? kTextureChannels[link[2]] : link[2] == 100 ? "Lcl Rotation" : "d|Z";
        b.Begin("C").String("OP").Long(link[0]).Long(link[1]).String(property).End();
    }
    b.EmptyBlock();
    b.End();
    return b.Finish();
}

const std::string& inputPath() {
    static const std::string path = "/tmp/kiva_scene_fuzz_" + std::to_string(getpid()) + ".fbx";
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices(data, size);
    std::vector<uint8_t> bytes = buildFile(choices);
    std::ofstream(inputPath(), std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());

    std::ostringstream err;
    ErrorReporter errors(err);
    DependencySet dependencies;
    SettingsStore settings(dependencies, errors);
    tarn::MaterialCache materialCache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder(&container);
    const SceneOptions options{.noMaterials = choices.Below(4) == 0};
    convertScene(inputPath(), options, builder, materialCache, settings, dependencies, errors);
    volatile size_t written = tarn::serializeKiva(container).bytes.size();
    (void)written;
    std::remove(inputPath().c_str());
    return 0;
}
