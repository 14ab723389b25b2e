#include "fbx/io/fbx7_animation_records.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_importer.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_memory_file_testing.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_kfcurve.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;
constexpr int64_t kSecond = FbxTime::kTicksPerSecond;

float floatOf(uint32_t bits) {
    float f;
    std::memcpy(&f, &bits, 4);
    return f;
}

// Reads one "AnimationCurve" record whose block `fields` writes.
bool readCurve(const std::function<void(FbxBinaryBuilder&)>& fields, KFCurve& curve) {
    FbxBinaryBuilder b(7400);
    b.Begin("AnimationCurve").Long(1).ObjectName("", "AnimCurve").String("");
    fields(b);
    b.EmptyBlock();
    b.End();
    FbxMemoryFile file(b.Finish());
    FbxFieldStream stream;
    stream.SetFbx7Mode(true);
    if (!stream.OpenStream(&file) || !stream.BeginField("AnimationCurve") || !stream.EnterBlock()) return false;
    return FbxReadAnimCurveKeys(stream, curve);
}

void extrapolation(FbxBinaryBuilder& b, const char* field, char type, int repetition) {
    b.Begin(field);
    b.Begin("Type").Char(type).End();
    b.Begin("Repetition").Int(repetition).End();
    b.End();
}

TEST(AnimationCurveRecord, KeysShareTheirAttributesAndKeepTheirBits) {
    // Weights of 3333 and 100 pack into a word that, read as a float, is a
    // denormal; the velocity word here is a signalling not-a-number. Both
    // must arrive bit for bit.
    const uint32_t weights = 3333u | (100u << 16), velocities = 0x7F800001u;
    KFCurve curve;
    ASSERT_TRUE(readCurve(
        [&](FbxBinaryBuilder& b) {
            b.Begin("Default").Double(2.5).End();
            b.Begin("KeyVer").Int(4007).End();
            b.Begin("KeyTime").LongArray({0, kSecond, 2 * kSecond, 3 * kSecond, 4 * kSecond}).End();
            b.Begin("KeyValueDouble").DoubleArray({1.0, 2.0, 3.0, 4.0, 5.0000001}).End();
            b.Begin("KeyAttrFlags").IntArray({0x1108 | (3 << 24) | (1 << 28), 0x4}).End();
            b.Begin("KeyAttrDataFloat")
                .FloatArray({1.5f, -2.0f, floatOf(weights), floatOf(velocities), 0, 0, 0, 0}, FbxArrayEncoding::eZlib)
                .End();
            b.Begin("KeyAttrRefCount").IntArray({3, 2}).End();
            extrapolation(b, "Post-Extrapolation", 'R', -1);
        },
        curve));
    EXPECT_EQ(curve.GetDefaultValue(), 2.5f);
    ASSERT_EQ(curve.KeyGetCount(), 5);
    EXPECT_EQ(curve.KeyGetTime(3), 3 * kSecond);
    EXPECT_EQ(curve.KeyGetValue(4), 5.0000001f);  // narrowed to float
    const KFCurve::KeyAttribute* first = curve.KeyGet(0).attribute;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(curve.KeyGet(2).attribute, first);
    EXPECT_EQ(first->refCount, 3);
    EXPECT_EQ(curve.KeyGet(4).attribute->refCount, 2);
    EXPECT_EQ(first->data[2], weights);
    EXPECT_EQ(first->data[3], velocities);
    EXPECT_EQ(first->GetFloat(0), 1.5f);
    EXPECT_EQ(curve.KeyGetNextLeftWeight(0), 100 / 9999.0);
    // "Repetition" -1 is the unlimited count; no pre-extrapolation block
    // leaves the default.
    EXPECT_EQ(curve.GetPostExtrapolation(), KFCurve::eRepetition);
    EXPECT_EQ(curve.GetPostExtrapolationCount(), KFCurve::kUnlimitedCount);
    EXPECT_EQ(curve.GetPreExtrapolation(), KFCurve::eConstant);
    EXPECT_EQ(curve.GetPreExtrapolationCount(), 0u);
}

TEST(AnimationCurveRecord, ArraysThatDisagreeAndMissingFields) {
    // Five times, three values, two attributes for nine keys, unknown
    // extrapolation letter.
    KFCurve curve;
    ASSERT_TRUE(readCurve(
        [](FbxBinaryBuilder& b) {
            b.Begin("Default").Double(0).End();
            b.Begin("KeyVer").Int(4008).End();
            b.Begin("KeyTime").LongArray({0, 10, 20, 30, 40}).End();
            b.Begin("KeyValueFloat").FloatArray({1, 2, 3}).End();
            b.Begin("KeyAttrFlags").IntArray({4, 2}).End();
            b.Begin("KeyAttrDataFloat").FloatArray({0, 0, 0, 0}).End();  // one attribute's data
            b.Begin("KeyAttrRefCount").IntArray({2, 7, 4}).End();
            extrapolation(b, "Pre-Extrapolation", 'X', 3);
        },
        curve));
    ASSERT_EQ(curve.KeyGetCount(), 5);
    EXPECT_EQ(curve.KeyGetValue(2), 3.0f);
    EXPECT_EQ(curve.KeyGetValue(4), 0.0f);
    EXPECT_EQ(curve.KeyGetFlags(1), 4u);
    EXPECT_EQ(curve.KeyGetFlags(4), 2u);
    EXPECT_EQ(curve.KeyGet(4).attribute->refCount, 3);
    EXPECT_EQ(curve.GetPreExtrapolation(), KFCurve::eExtrapolationNone);
    EXPECT_EQ(curve.GetPreExtrapolationCount(), 3u);

    // No data array: keys without attribute, and the extrapolation is not
    // read. An old key form: no keys. No "Default": nothing happens.
    KFCurve bare;
    ASSERT_TRUE(readCurve(
        [](FbxBinaryBuilder& b) {
            b.Begin("Default").Double(0).End();
            b.Begin("KeyVer").Int(4007).End();
            b.Begin("KeyTime").LongArray({0, 10}).End();
            b.Begin("KeyAttrFlags").IntArray({4}).End();
            extrapolation(b, "Pre-Extrapolation", 'M', 3);
        },
        bare));
    EXPECT_EQ(bare.KeyGetCount(), 2);
    EXPECT_EQ(bare.KeyGet(0).attribute, nullptr);
    EXPECT_EQ(bare.GetPreExtrapolation(), KFCurve::eConstant);
    KFCurve old;
    ASSERT_TRUE(readCurve(
        [](FbxBinaryBuilder& b) {
            b.Begin("Default").Double(7).End();
            b.Begin("KeyVer").Int(4005).End();
            b.Begin("KeyTime").LongArray({0, 10}).End();
        },
        old));
    EXPECT_EQ(old.KeyGetCount(), 0);
    EXPECT_EQ(old.Evaluate(5), 7.0f);
    EXPECT_FALSE(readCurve([](FbxBinaryBuilder& b) { b.Begin("KeyVer").Int(4007).End(); }, old));
    EXPECT_EQ(old.GetDefaultValue(), 7.0f);
}

// --- Whole files ---------------------------------------------------------------

void p(FbxBinaryBuilder& b, const char* name, const char* type1, const char* type2, const char* flags) {
    b.Begin("P").String(name).String(type1).String(type2).String(flags);
}

// A scene with a node "Mover" whose translation (or rotation) a stack "Take"
// animates: a curve on channel Y, a template for stacks in "Definitions",
// and a take list that names the stack. A turning node interpolates as
// quaternions.
Bytes animatedFile(bool rotation) {
    FbxBinaryBuilder b(7400);
    b.Begin("Definitions");
    for (const char* word : {"Model", "AnimationStack", "AnimationLayer", "AnimationCurveNode", "AnimationCurve"}) {
        b.Begin("ObjectType").String(word);
        b.Begin("Count").Int(1).End();
        if (std::string(word) == "AnimationStack") {
            b.Begin("PropertyTemplate").String("FbxAnimStack");
            b.Begin("Properties70");
            p(b, "Description", "KString", "", "");
            b.String("from the template").End();
            b.End();
            b.End();
        }
        b.End();
    }
    b.End();
    b.Begin("Objects");
    b.Begin("Model").Long(10).ObjectName("Mover", "Model").String("Null");
    b.Begin("Properties70");
    p(b, "Lcl Translation", "Lcl Translation", "", "A+");
    b.Double(1).Double(2).Double(3).End();
    if (rotation) {
        p(b, "QuaternionInterpolate", "enum", "", "");
        b.Int(2).End();
    }
    b.End();
    b.End();
    b.Begin("AnimationStack").Long(20).ObjectName("Take", "AnimStack").String("");
    b.Begin("Properties70");
    p(b, "LocalStop", "KTime", "Time", "");
    b.Long(5 * kSecond).End();
    b.End();
    b.End();
    b.Begin("AnimationLayer").Long(30).ObjectName("Base", "AnimLayer").String("").EmptyBlock().End();
    b.Begin("AnimationCurveNode").Long(40).ObjectName("T", "AnimCurveNode").String("");
    b.Begin("Properties70");
    for (const char* channel : {"d|X", "d|Y", "d|Z"}) {
        p(b, channel, "Number", "", "A");
        b.Double(channel[2] == 'X' ? 7 : 9).End();
    }
    b.End();
    b.End();
    b.Begin("AnimationCurve").Long(50).ObjectName("", "AnimCurve").String("");
    b.Begin("Default").Double(0).End();
    b.Begin("KeyVer").Int(4008).End();
    b.Begin("KeyTime").LongArray({0, 2 * kSecond}).End();
    b.Begin("KeyValueFloat").FloatArray({0, 4}).End();
    b.Begin("KeyAttrFlags").IntArray({4}).End();
    b.Begin("KeyAttrDataFloat").FloatArray({0, 0, 0, 0}).End();
    b.Begin("KeyAttrRefCount").IntArray({2}).End();
    b.End();
    b.End();
    b.Begin("Connections");
    b.Begin("C").String("OO").Long(10).Long(0).End();
    b.Begin("C").String("OO").Long(30).Long(20).End();
    b.Begin("C").String("OO").Long(40).Long(30).End();
    b.Begin("C").String("OP").Long(40).Long(10).String(rotation ? "Lcl Rotation" : "Lcl Translation").End();
    b.Begin("C").String("OP").Long(50).Long(40).String("d|Y").End();
    b.End();
    b.Begin("Takes");
    b.Begin("Current").String("Take").End();
    b.Begin("Take").String("Take");
    b.Begin("Comments").String("the take's words").End();
    b.Begin("LocalTime").Long(kSecond).Long(3 * kSecond).End();
    b.Begin("ReferenceTime").Long(0).Long(4 * kSecond).End();
    b.End();
    b.End();
    return b.Finish();
}

class AnimationImport : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("kiva_animation_records_test_" + std::to_string(getpid()));
        fs::create_directories(dir);
        manager = FbxManager::Create();
        settings = FbxIOSettings::Create(manager, "IOSRoot");
        manager->SetIOSettings(settings);
        scene = FbxScene::Create(manager, "scene");
    }
    void TearDown() override {
        manager->Destroy();
        fs::remove_all(dir);
    }
    bool Import(const Bytes& bytes) {
        std::string path = (dir / "anim.fbx").string();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        FbxImporter* importer = FbxImporter::Create(manager, "");
        return importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene);
    }
    template <class T>
    T* First() const {
        return scene->GetSrcObject<T>(0);
    }

    fs::path dir;
    FbxManager* manager = nullptr;
    FbxIOSettings* settings = nullptr;
    FbxScene* scene = nullptr;
};

TEST_F(AnimationImport, StacksLayersCurveNodesAndCurvesConnectAndEvaluate) {
    ASSERT_TRUE(Import(animatedFile(false)));
    FbxAnimStack* stack = First<FbxAnimStack>();
    FbxNode* mover = scene->GetRootNode()->GetChild(0);
    ASSERT_NE(stack, nullptr);
    ASSERT_NE(mover, nullptr);
    EXPECT_EQ(manager->GetAnimationEvaluator()->GetContext(), stack);  // not the template's stack
    ASSERT_EQ(stack->GetLayerCount(), 1);
    FbxAnimCurveNode* curveNode = mover->LclTranslation().GetCurveNode(stack->GetLayer(0));
    ASSERT_NE(curveNode, nullptr);
    EXPECT_EQ(curveNode->GetChannelsCount(), 3u);
    EXPECT_EQ(curveNode->GetCurve(0), nullptr);
    ASSERT_NE(curveNode->GetCurve(1), nullptr);
    EXPECT_EQ(curveNode->GetCurve(1)->KeyGetCount(), 2);
    EXPECT_EQ(curveNode->GetTransformKind(), FbxAnimCurveNode::eTranslation);
    // The take of the stack's name overrides its own time properties.
    EXPECT_EQ(stack->GetLocalTimeSpan(), (FbxTimeSpan{FbxTime(kSecond), FbxTime(3 * kSecond)}));
    EXPECT_EQ(stack->GetReferenceTimeSpan().stop, FbxTime(4 * kSecond));
    EXPECT_EQ(stack->Description().Get(), "the take's words");
    ASSERT_NE(scene->GetTakeInfo("Take"), nullptr);

    // Channels without curves give their own values, the curve its keys.
    FbxVector4 t = mover->EvaluateLocalTranslation(FbxTime(kSecond));
    EXPECT_EQ(t[0], 7.0);
    EXPECT_EQ(t[1], 2.0);
    EXPECT_EQ(t[2], 9.0);
    EXPECT_EQ(mover->EvaluateLocalTranslation()[1], 2.0);  // static
    FbxTimeSpan interval;
    ASSERT_TRUE(mover->GetAnimationInterval(interval));
    EXPECT_EQ(interval.stop, FbxTime(2 * kSecond));
}

TEST_F(AnimationImport, WithoutAnimationTheStackKeepsItsPropertiesAndQuaternionModesArrive) {
    settings->SetBoolProp(FbxIOPath::kAnimation, false);
    ASSERT_TRUE(Import(animatedFile(true)));
    FbxAnimStack* stack = First<FbxAnimStack>();
    ASSERT_NE(stack, nullptr);
    EXPECT_EQ(stack->GetLocalTimeSpan(), (FbxTimeSpan{FbxTime(0), FbxTime(5 * kSecond)}));
    EXPECT_EQ(stack->Description().Get(), "from the template");
    FbxAnimCurveNode* curveNode = First<FbxAnimCurveNode>();
    ASSERT_NE(curveNode, nullptr);
    EXPECT_EQ(curveNode->GetTransformKind(), FbxAnimCurveNode::eOther);  // no "Takes" step, no kinds
    // The node was read before its curve nodes were connected: its mode
    // reaches the curve node of its rotation all the same.
    EXPECT_EQ(curveNode->GetQuaternionMode(), 2u);
    EXPECT_EQ(scene->GetSrcObjectCount<FbxAnimCurveNode>(), 1);
}

}  // namespace
