// Builds a well-formed FBX file of animated nodes from the fuzzer's bytes and
// imports and evaluates it: the bytes choose the node tree and every
// transform property, the stacks, layers and their blending, the curve
// nodes and their channels, and each curve's key arrays (lengths that
// disagree, times in any order, any flag and data words, any extrapolation).
// Reading, evaluation at any time and the interval of the keys must neither
// crash nor hang.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

// The fuzzer's bytes as a stream of choices; zeros once they run out.
class Choices {
public:
    Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
    int Below(int n) { return Byte() % n; }
    bool Flag() { return Byte() & 1; }
    uint32_t Word() {
        uint32_t w = 0;
        for (int i = 0; i < 4; ++i) w = w << 8 | Byte();
        return w;
    }
    int64_t Time() {
        // Mostly small steps of a second's fraction, sometimes anything.
        if (Byte() < 230) return static_cast<int64_t>(static_cast<int8_t>(Byte())) * (FbxTime::kTicksPerSecond / 8);
        return static_cast<int64_t>(static_cast<uint64_t>(Word()) << 32 | Word());
    }
    double Value() {
        uint8_t kind = Byte();
        if (kind < 200) return static_cast<int8_t>(Byte()) * 1.5;
        float f;
        uint32_t w = Word();
        std::memcpy(&f, &w, 4);
        return f;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

void property(FbxBinaryBuilder& b, const char* name, const char* type, double x, double y, double z) {
    b.Begin("P").String(name).String(type).String("").String("A").Double(x).Double(y).Double(z).End();
}

void intProperty(FbxBinaryBuilder& b, const char* name, const char* type, int value) {
    b.Begin("P").String(name).String(type).String("").String("").Int(value).End();
}

void curveRecord(FbxBinaryBuilder& b, Choices& c, int64_t id) {
    b.Begin("AnimationCurve").Long(id).ObjectName("", "AnimCurve").String("");
    if (c.Below(8) != 0) b.Begin("Default").Double(c.Value()).End();
    b.Begin("KeyVer").Int(c.Below(4) == 0 ? 4005 : 4008).End();
    int keys = c.Below(40);
    std::vector<int64_t> times;
    int64_t t = c.Time();
    for (int i = 0; i < keys; ++i) {
        // Wrapping addition: the times may be anything, the harness itself must not overflow.
        int64_t step = c.Below(16) == 0 ? c.Time() : c.Below(9) * 1000000;
        t = static_cast<int64_t>(static_cast<uint64_t>(t) + static_cast<uint64_t>(step));
        times.push_back(t);
    }
    if (c.Below(8) != 0) b.Begin("KeyTime").LongArray(times).End();
    int valueCount = keys + c.Below(5) - 2;
    std::vector<float> values(valueCount > 0 ? valueCount : 0);
    for (float& v : values) v = static_cast<float>(c.Value());
    if (c.Flag())
        b.Begin("KeyValueFloat").FloatArray(values).End();
    else
        b.Begin("KeyValueDouble").DoubleArray(std::vector<double>(values.begin(), values.end())).End();
    int attributes = c.Below(5);
    std::vector<int32_t> flags, counts;
    std::vector<float> data;
    static const uint32_t kFlags[] = {0x2, 0x102, 0x4, 0x108, 0x208, 0x408, 0x908, 0xC08, 0x1108, 0x2108, 0x6108};
    for (int i = 0; i < attributes; ++i) {
        uint32_t f = c.Below(4) == 0 ? c.Word() : kFlags[c.Below(11)] | (c.Below(4) << 24);
        flags.push_back(static_cast<int32_t>(f));
        for (int w = 0; w < 4; ++w) {
            uint32_t word = c.Below(3) == 0 ? c.Word() : 0;
            float f32 = w < 2 ? static_cast<float>(c.Value()) : 0.0f;
            if (w >= 2) std::memcpy(&f32, &word, 4);
            data.push_back(f32);
        }
        counts.push_back(c.Below(8) == 0 ? static_cast<int32_t>(c.Word()) : c.Below(keys + 2));
    }
    b.Begin("KeyAttrFlags").IntArray(flags).End();
    if (c.Below(8) != 0) b.Begin("KeyAttrDataFloat").FloatArray(data).End();
    b.Begin("KeyAttrRefCount").IntArray(counts).End();
    static const char kTypes[] = {'C', 'R', 'M', 'K', 'X'};
    for (const char* field : {"Pre-Extrapolation", "Post-Extrapolation"}) {
        if (!c.Flag()) continue;
        b.Begin(field);
        b.Begin("Type").Char(kTypes[c.Below(5)]).End();
        b.Begin("Repetition").Int(c.Below(4) == 0 ? -1 : c.Below(4)).End();
        b.End();
    }
    b.EmptyBlock();
    b.End();
}

std::vector<uint8_t> buildFile(Choices& c) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    for (const char* word : {"Model", "AnimationStack", "AnimationLayer", "AnimationCurveNode", "AnimationCurve"}) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        b.End();
    }
    b.End();
    std::vector<std::vector<int64_t>> connections;  // kind 0 OO, 1 OP: source, destination, property index
    static const char* const kProperties[] = {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"};
    b.Begin("Objects");
    int nodes = 1 + c.Below(4);
    for (int n = 0; n < nodes; ++n) {
        b.Begin("Model").Long(100 + n).ObjectName("node", "Model").String("Null");
        b.Begin("Properties70");
        for (const char* name : {"Lcl Translation", "Lcl Rotation", "Lcl Scaling", "PreRotation", "PostRotation",
                                 "RotationPivot", "ScalingPivot", "RotationOffset", "ScalingOffset", "RotationMin",
                                 "RotationMax", "TranslationMin", "ScalingMax"})
            if (c.Below(3) == 0) property(b, name, "Vector3D", c.Value(), c.Value(), c.Value());
        for (const char* name : {"RotationOrder", "InheritType", "QuaternionInterpolate", "RotationActive",
                                 "TranslationActive", "ScalingActive", "RotationSpaceForLimitOnly", "RotationMinX",
                                 "RotationMaxZ", "TranslationMinX", "ScalingMaxY"})
            if (c.Below(3) == 0) intProperty(b, name, "enum", c.Below(8));
        b.End();
        b.End();
        connections.push_back({0, 100 + n, n == 0 || c.Below(4) == 0 ? 0 : 100 + c.Below(n)});
    }
    int stacks = 1 + c.Below(2), layers = 1 + c.Below(3), curveNodes = c.Below(8);
    for (int s = 0; s < stacks; ++s) {
        b.Begin("AnimationStack").Long(200 + s).ObjectName(s == 0 ? "Take" : "Other", "AnimStack").String("");
        b.EmptyBlock();
        b.End();
    }
    for (int l = 0; l < layers; ++l) {
        b.Begin("AnimationLayer").Long(300 + l).ObjectName("layer", "AnimLayer").String("");
        b.Begin("Properties70");
        b.Begin("P").String("Weight").String("Number").String("").String("A").Double(c.Value()).End();
        for (const char* name : {"Mute", "BlendMode", "RotationAccumulationMode", "ScaleAccumulationMode"})
            if (c.Below(3) == 0) intProperty(b, name, "int", c.Below(4));
        if (c.Below(4) == 0)
            b.Begin("P").String("BlendModeBypass").String("ULongLong").String("").String("").Long(c.Word()).End();
        b.End();
        b.End();
        connections.push_back({0, 300 + l, 200 + c.Below(stacks)});
    }
    int64_t curveId = 500;
    for (int k = 0; k < curveNodes; ++k) {
        int64_t id = 400 + k;
        b.Begin("AnimationCurveNode").Long(id).ObjectName("cn", "AnimCurveNode").String("");
        b.Begin("Properties70");
        int channels = c.Below(5);
        static const char* const kChannels[] = {"d|X", "d|Y", "d|Z", "d|W"};
        for (int ch = 0; ch < channels; ++ch)
            b.Begin("P").String(kChannels[ch]).String("Number").String("").String("A").Double(c.Value()).End();
        b.End();
        b.End();
        connections.push_back({0, id, 300 + c.Below(layers)});
        connections.push_back({1, id, 100 + c.Below(nodes), c.Below(3)});
        for (int ch = 0; ch < channels; ++ch) {
            if (c.Below(4) == 0) continue;
            curveRecord(b, c, curveId);
            connections.push_back({2, curveId++, id, ch});
        }
    }
    b.EmptyBlock();
    b.End();

    static const char* const kChannels[] = {"d|X", "d|Y", "d|Z", "d|W"};
    b.Begin("Connections");
    for (const auto& link : connections) {
        b.Begin("C").String(link[0] == 0 ? "OO" : "OP").Long(link[1]).Long(link[2]);
        if (link[0] == 1) b.String(kProperties[link[3]]);
        if (link[0] == 2) b.String(kChannels[link[3]]);
        b.End();
    }
    b.EmptyBlock();
    b.End();
    if (c.Flag()) {
        b.Begin("Takes");
        b.Begin("Take").String("Take");
        b.Begin("LocalTime").Long(c.Time()).Long(c.Time()).End();
        b.End();
        b.End();
    }
    return b.Finish();
}

const std::string& inputPath() {
    static const std::string path = "/tmp/kiva_animation_fuzz_" + std::to_string(getpid()) + ".fbx";
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices(data, size);
    std::vector<uint8_t> bytes = buildFile(choices);
    std::ofstream(inputPath(), std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());

    FbxManager* manager = FbxManager::Create();
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    manager->SetIOSettings(settings);
    FbxImporter* importer = FbxImporter::Create(manager, "");
    FbxScene* scene = FbxScene::Create(manager, "fuzz");
    if (importer->Initialize(inputPath().c_str(), -1, settings) && importer->Import(scene)) {
        std::vector<FbxTime> times = {FbxTime::Infinite(), FbxTime::MinusInfinite(), FbxTime(0)};
        for (int i = 0; i < 6; ++i) times.push_back(FbxTime(choices.Time()));
        volatile double sink = 0.0;
        for (int s = 0; s < scene->GetSrcObjectCount<FbxAnimStack>(); ++s) {
            manager->GetAnimationEvaluator()->SetContext(scene->GetSrcObject<FbxAnimStack>(s));
            for (FbxTime time : times)
                for (int n = 0; n < scene->GetSrcObjectCount<FbxNode>(); ++n) {
                    FbxNode* node = scene->GetSrcObject<FbxNode>(n);
                    sink = sink + node->EvaluateGlobalTransform(time)[3][0];
                    sink = sink + node->EvaluateLocalTransform(time)[3][1];
                }
            FbxTimeSpan interval;
            sink = sink + scene->GetRootNode()->GetAnimationInterval(interval, scene->GetSrcObject<FbxAnimStack>(s));
        }
        for (int i = 0; i < scene->GetSrcObjectCount<FbxAnimCurve>(); ++i)
            for (FbxTime time : times) sink = sink + scene->GetSrcObject<FbxAnimCurve>(i)->Evaluate(time);
    }
    manager->Destroy();
    std::remove(inputPath().c_str());
    return 0;
}
