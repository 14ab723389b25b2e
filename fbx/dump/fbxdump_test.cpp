#include "fbx/dump/fbxdump.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/dump/dump_value.h"
#include "fbx/dump/dump_writer.h"
#include "fbx/dump/scene_dump.h"
#include "fbx/io/fbx_test_scenes_testing.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"
#include "qe/scratch_dir_testing.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct DumpRun {
    int code;
    std::string out;
    std::string err;
};

DumpRun dump(std::vector<std::string> args) {
    std::ostringstream out, err;
    int code = runFbxDump(args, out, err);
    return {code, out.str(), err.str()};
}

// Runs `run` on a thread with a stack of 1 MiB: a walk that recursed once
// per level of a file thousands of levels deep would overflow it.
void onSmallStack(const std::function<void()>& run) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 1 << 20);
    pthread_t thread;
    auto body = [](void* f) -> void* {
        (*static_cast<const std::function<void()>*>(f))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, body, const_cast<std::function<void()>*>(&run)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

std::string blender(const char* name) {
    return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name + ".fbx";
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

size_t occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

// Checks that brackets pair up outside strings and that strings end: the
// shape of a JSON document, which every test here needs before its own
// checks.
bool wellFormedJson(const std::string& text) {
    std::string stack;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
            else if (static_cast<unsigned char>(c) < 0x20)
                return false;
            continue;
        }
        if (c == '"')
            inString = true;
        else if (c == '{' || c == '[')
            stack.push_back(c);
        else if (c == '}' || c == ']') {
            if (stack.empty() || stack.back() != (c == '}' ? '{' : '[')) return false;
            stack.pop_back();
        }
    }
    return !inString && stack.empty() && !text.empty() && text[0] == '{';
}

class FbxDump : public ::testing::Test {
protected:
    std::string Write(const std::string& name, const Bytes& bytes) {
        return dir.write(name, std::string(bytes.begin(), bytes.end()));
    }
    ScratchDir dir;
};

TEST_F(FbxDump, ShowsHeaderNodeTreeAndObjectsOfAScene) {
    DumpRun run = dump({blender("empties_hierarchy")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(contains(run.out, "version: \"7.4.0\"\nfileVersion: 7400\n"));
    EXPECT_TRUE(contains(run.out, "creator: \"Blender (stable FBX IO) - 3.4.1 - 4.37.1\""));
    // Nested under its parent, with its attribute class and local values.
    EXPECT_TRUE(contains(run.out,
                         "        - name: \"Sibling\"\n"
                         "          attributes: [\"FbxNull\"]\n"
                         "          translation: [-2, 0, 0]\n"
                         "          rotation: [0, 0, 0]\n"
                         "          scaling: [1, 1, 1]\n"
                         "          children: []\n"))
        << run.out;
    // Objects by class, with connections and the values that differ from
    // the class default only.
    EXPECT_TRUE(contains(run.out, "  - class: \"FbxNode\"\n    name: \"Bottom\"\n"));
    EXPECT_TRUE(contains(run.out, "destinations: [\"FbxScene EmptiesScene\", \"FbxNode Middle\"]"));
    EXPECT_TRUE(contains(run.out, "      kiva_tag: \"leaf node\"\n"));
    EXPECT_FALSE(contains(run.out, "Visibility:"));
    EXPECT_LT(run.out.find("class: \"FbxNode\""), run.out.find("class: \"FbxNull\""));
    EXPECT_EQ(dump({blender("empties_hierarchy")}).out, run.out);  // byte for byte the same

    DumpRun json = dump({"--json", blender("multi_material")});
    ASSERT_EQ(json.code, 0) << json.err;
    EXPECT_TRUE(wellFormedJson(json.out)) << json.out;
    EXPECT_TRUE(contains(json.out, "\"materials\": [\"Red\", \"Green\", \"Blue\"]"));
    EXPECT_TRUE(contains(json.out, "\"attributes\": [\"FbxMesh\"]"));
}

TEST_F(FbxDump, ShowsMeshLayersSkinClustersMaterialTexturesAndEmbeddedSizes) {
    std::string dir = std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/geometry/";
    DumpRun skinned = dump({dir + "skinned.fbx"});
    ASSERT_EQ(skinned.code, 0) << skinned.err;
    EXPECT_TRUE(
        contains(skinned.out, "    mesh:\n      controlPoints: 26\n      polygons: 12\n      polygonVertices: 48\n"));
    EXPECT_TRUE(contains(skinned.out,
                         "        - - kind: \"LayerElementNormal\"\n            name: \"\"\n"
                         "            mapping: \"ByPolygonVertex\"\n            reference: \"Direct\"\n"
                         "            direct: 48\n            index: 0\n"))
        << skinned.out;
    EXPECT_TRUE(contains(skinned.out,
                         "      - name: \"Bone1\"\n        link: \"Bone1\"\n        indices: 13\n"
                         "        weightSum: 4.6285"));
    EXPECT_TRUE(contains(skinned.out, "    pose:\n      type: \"bind\"\n"));

    DumpRun embedded = dump({"--json", dir + "embedded_texture.fbx"});
    ASSERT_EQ(embedded.code, 0) << embedded.err;
    EXPECT_TRUE(wellFormedJson(embedded.out));
    EXPECT_TRUE(contains(embedded.out, "\"NormalMap\": \"embedded_texture.fbm/tex_normal.png\""));
    EXPECT_TRUE(contains(embedded.out, "\"shadingModel\": \"Phong\""));
    EXPECT_TRUE(contains(embedded.out, "\"embeddedSize\": 73"));
    EXPECT_TRUE(contains(embedded.out, "\"unlayeredElements\": 0"));
}

TEST_F(FbxDump, FieldsShowTheRawTreeWithArraysSummarised) {
    DumpRun text = dump({"--fields", blender("textured_cube")});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_TRUE(contains(text.out, "  - name: \"Objects\"\n"));
    EXPECT_TRUE(contains(text.out, "values: [[\"S\", \"OP\"], "));
    EXPECT_TRUE(contains(text.out, "values: [[\"d\", \"double[24]\"]]"));  // 8 vertices
    EXPECT_TRUE(contains(text.out, "values: [[\"i\", \"int[24]\"]]"));     // 6 quads
    EXPECT_TRUE(contains(text.out, "[\"S\", \"Model::TexturedCube\"]"));
    EXPECT_FALSE(contains(text.out, "nodes:"));

    DumpRun json = dump({"--json", "--fields", blender("textured_cube")});
    ASSERT_EQ(json.code, 0);
    EXPECT_TRUE(wellFormedJson(json.out));
    EXPECT_TRUE(contains(json.out, "[\"d\", \"double[24]\"]"));
    EXPECT_FALSE(contains(json.out, "\"values\": [["));  // a pair a line
}

TEST_F(FbxDump, FieldsStopAtTheFirstArrayOrBlockThatDoesNotRead) {
    std::vector<int32_t> ints = {1, 2, 3, 4};
    Bytes raw(reinterpret_cast<const uint8_t*>(ints.data()), reinterpret_cast<const uint8_t*>(ints.data() + 4));
    Bytes packed = FbxBinaryBuilder::Deflate(raw.data(), raw.size());
    packed[packed.size() / 2] ^= 0x5A;
    struct Case {
        const char* name;
        std::function<void(FbxBinaryBuilder&)> bad;
        const char* problem;
    };
    const Case cases[] = {
        {"zlib", [&](FbxBinaryBuilder& b) { b.ArrayWithHeader('i', 4, 1, packed); },
         "File is corrupted: an array of \"Bad\" does not decode"},
        {"short", [&](FbxBinaryBuilder& b) { b.ArrayWithHeader('i', 5, 0, raw); },
         "File is corrupted: an array of \"Bad\" does not decode"},
        {"block",
         [](FbxBinaryBuilder& b) {
             b.Begin("Inner").RawValueBytes({'?', 0}).SetValueCount(1).End();
         },
         "File is corrupted: the block of \"Bad\" does not load"},
    };
    for (const Case& c : cases) {
        FbxBinaryBuilder b(7400);
        b.Begin("Aa").IntArray({7, 8}).End();
        b.Begin("Bad");
        c.bad(b);
        b.End();
        b.Begin("Later").Int(1).End();
        std::string path = Write(std::string(c.name) + ".fbx", b.Finish());
        for (const char* form : {"--fields", "--json"}) {
            DumpRun run = dump({"--fields", form, path});
            EXPECT_EQ(run.code, 1) << c.name;
            EXPECT_EQ(run.err, path + ": " + c.problem + "\n") << c.name;
            // What came before the fault is shown, and nothing behind it.
            EXPECT_TRUE(contains(run.out, "int[2]")) << c.name;
            EXPECT_FALSE(contains(run.out, "Later")) << c.name;
            EXPECT_TRUE(std::string(form) != "--json" || wellFormedJson(run.out)) << run.out;
        }
    }

    // A file whose top level does not load is named once.
    FbxBinaryBuilder top(7400);
    top.Begin("Bad").RawValueBytes({'?', 0}).SetValueCount(1).End();
    std::string path = Write("top.fbx", top.Finish());
    DumpRun run = dump({"--fields", path});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, path + ": File is corrupted\n");
}

TEST_F(FbxDump, UnreadableAndCyclicFilesGiveOneMessageAndExitOne) {
    FbxBinaryBuilder old(6100);
    old.Begin("Creator").String("old").End();
    FbxBinaryBuilder future(8000);
    future.Begin("Creator").String("future").End();
    for (const std::string& path : {Write("old.fbx", old.Finish()), Write("future.fbx", future.Finish())}) {
        for (const char* mode : {"", "--fields"}) {
            std::vector<std::string> args{path};
            if (*mode) args.insert(args.begin(), mode);
            DumpRun run = dump(args);
            EXPECT_EQ(run.code, 1) << path;
            EXPECT_EQ(run.err, path + ": Unexpected file type\n");
            EXPECT_EQ(run.out, "");
        }
    }
    EXPECT_EQ(dump({dir.file("missing.fbx")}).code, 1);

    // Two documents each other's source and nodes in cycles: the dump shows
    // what was read and ends with the status.
    std::string cycles = Write("cycles.fbx", cyclesFile());
    DumpRun run = dump({cycles});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, cycles + ": File is corrupted (or invalid): its connections form a cycle\n");
    EXPECT_TRUE(contains(run.out, "- name: \"Node2\""));
    EXPECT_EQ(occurrences(run.out, "name: \"Node2\""), 3u);  // in the tree, among the objects, in the transforms
}

TEST_F(FbxDump, AnimationAndTransformsAtTimes) {
    std::string file = std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender_animation/object_actions.fbx";
    DumpRun run = dump({"--time", "0.375,1", "--time", "-2", file});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(contains(run.out,
                         "          - name: \"R\"\n"
                         "            animates: [\"EulerXYZ|Lcl Rotation\"]\n"
                         "            channels:\n"
                         "              - name: \"X\"\n"
                         "                value: 0\n"
                         "                curve:\n"
                         "                  name: \"\"\n"
                         "                  keys: 17\n"
                         "                  firstKey: 0.041666666666666664\n"
                         "                  lastKey: 0.7083333333333334\n"
                         "                  interpolations: [\"Linear\"]\n"))
        << run.out;
    // Frame 9, where Blender's world matrix of EulerXYZ has the columns
    // (0.4698, 0.8138, -0.3420), ... and the translation (1, 2, 3).
    size_t at = run.out.find("  - time: 0.375\n");
    ASSERT_NE(at, std::string::npos);
    size_t node = run.out.find("name: \"EulerXYZ\"", at);
    ASSERT_NE(node, std::string::npos);
    EXPECT_EQ(run.out.substr(run.out.find("global: ", node), 18), "global: [[0.469846");
    EXPECT_TRUE(contains(run.out.substr(node, 400), "[1, 2, 3, 1]]"));
    EXPECT_TRUE(contains(run.out, "  - time: 1\n"));
    EXPECT_TRUE(contains(run.out, "  - time: -2\n"));
    EXPECT_FALSE(contains(run.out, "time: \"static\""));
    DumpRun json = dump({"--json", file});
    EXPECT_TRUE(wellFormedJson(json.out));
    EXPECT_TRUE(contains(json.out, "\"time\": \"static\""));
}

TEST_F(FbxDump, DeepFilesAreDumpedWithoutRecursionAndInLinearSpace) {
    constexpr int kDepth = 5000;
    std::string chain = Write("chain.fbx", nodeChainFile(kDepth));
    std::string nested = Write("nested.fbx", nestedBlocksFile(kDepth));
    DumpRun text, json, fields;
    onSmallStack([&] {
        text = dump({chain});
        json = dump({"--json", chain});
        fields = dump({"--fields", nested});
    });
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_TRUE(contains(text.out, "name: \"Node4999\""));
    // Indentation stops growing: the output is linear in the nodes.
    EXPECT_LT(text.out.size(), static_cast<size_t>(kDepth) * 4000);
    EXPECT_TRUE(contains(text.out, "\n<101>"));
    ASSERT_EQ(json.code, 0) << json.err;
    EXPECT_TRUE(wellFormedJson(json.out));
    EXPECT_LT(json.out.size(), static_cast<size_t>(kDepth) * 4000);
    ASSERT_EQ(fields.code, 0) << fields.err;
    EXPECT_EQ(occurrences(fields.out, "name: \"Nest\""), static_cast<size_t>(kDepth));
    EXPECT_LT(fields.out.size(), static_cast<size_t>(kDepth) * 1000);
}

TEST(SceneDump, EveryNodeIsWrittenOnceHoweverItIsConnected) {
    // Diamonds made by hand: each node of a layer is a child of both nodes
    // of the layer above, 2^24 paths down.
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "scene");
    std::vector<FbxNode*> above{scene->GetRootNode()};
    for (int layer = 0; layer < 24; ++layer) {
        std::vector<FbxNode*> nodes;
        for (int k = 0; k < 2; ++k) {
            FbxNode* node = FbxNode::Create(scene, ("N" + std::to_string(layer) + "_" + std::to_string(k)).c_str());
            for (FbxNode* parent : above) parent->ConnectSrcObject(node);
            nodes.push_back(node);
        }
        above = nodes;
    }
    std::ostringstream out;
    DumpWriter writer(out, DumpWriter::Form::eJson);
    dumpNodeTree(*scene, writer);
    writer.finish();
    EXPECT_EQ(occurrences(out.str(), "\"name\": \"N23_1\""), 2u);  // once whole, once named again
    // 94 connections reach the 48 nodes: 46 meet a node again.
    EXPECT_EQ(occurrences(out.str(), "\"seenBefore\": true"), 46u);
    manager->Destroy();
}

TEST_F(FbxDump, UsageErrorsAndTheProgram) {
    EXPECT_EQ(dump({}).code, 1);
    DumpRun unknown = dump({"--tree", blender("textured_cube")});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_TRUE(contains(unknown.err, "usage: fbxdump"));
    EXPECT_EQ(dump({blender("textured_cube"), blender("multi_material")}).code, 1);
    EXPECT_EQ(dump({"--help"}).code, 0);
    for (std::vector<std::string> args : {std::vector<std::string>{"--time"},
                                          {"--time", "1,x", blender("textured_cube")},
                                          {"--time", "", blender("textured_cube")},
                                          {"--fields", "--time", "1", blender("textured_cube")},
                                          {"--fields", "--convert", blender("textured_cube")},
                                          {"--write-text"}}) {
        DumpRun run = dump(args);
        EXPECT_EQ(run.code, 1);
        EXPECT_TRUE(contains(run.err, "usage: fbxdump")) << run.err;
    }

    std::string program = std::string(KIVA_BIN_DIR) + "/fbxdump";
    std::string out = dir.file("out.txt");
    int status = std::system((program + " " + blender("skinned_armature") + " > " + out + " 2>&1").c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(contains(readFile(out), "name: \"Head\""));
    status = std::system((program + " " + dir.file("none.fbx") + " 2> /dev/null").c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST_F(FbxDump, TriangulateListsEachMeshNodeWithItsTriangleCountAfterTheConversion) {
    // Polygons of 3, 4, 5 and 6 corners in a Y-up file.
    DumpRun run =
        dump({"--convert", "--triangulate", std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/geometry/ngons.fbx"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(contains(run.out, "triangulation:\n  - node: \"Ngons\"\n    triangles: 10\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "polygons: 10\n")) << run.out;
}

TEST(DumpWriter, NumbersStringsAndEmptyContainersAreWrittenExactlyAndSafely) {
    EXPECT_EQ(formatDouble(0.1), "0.1");
    EXPECT_EQ(formatDouble(-0.0), "0");
    EXPECT_EQ(formatDouble(1e300), "1e+300");
    DumpValue value = DumpValue::object();
    value.add("text", std::string("a\"b\\c\n\x01\xC3\xA9\xFF", 10));
    value.add("nan", std::nan(""));
    value.add("empty", DumpValue::array());
    value.add("none", DumpValue::object());
    std::ostringstream json;
    writeJson(value, json);
    EXPECT_EQ(json.str(),
              "{\n  \"text\": \"a\\\"b\\\\c\\n\\u0001\xC3\xA9\\u00ff\",\n  \"nan\": \"nan\",\n  \"empty\": [],\n"
              "  \"none\": {}\n}\n");
    std::ostringstream text;
    writeText(value, text);
    EXPECT_EQ(text.str(), "text: \"a\\\"b\\\\c\\n\\u0001\xC3\xA9\\u00ff\"\nnan: nan\nempty: []\nnone: {}\n");
}

}  // namespace
