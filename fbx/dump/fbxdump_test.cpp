#include "fbx/dump/fbxdump.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/dump/dump_value.h"
#include "fbx/io/fbx_binary_builder_testing.h"

namespace {

namespace fs = std::filesystem;

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

std::string blender(const char* name) {
    return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name + ".fbx";
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

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
    void SetUp() override {
        dir = fs::temp_directory_path() / ("kiva_fbxdump_test_" + std::to_string(getpid()));
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) {
        std::string path = (dir / name).string();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return path;
    }
    fs::path dir;
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
                         "          scaling: [1, 1, 1]\n"))
        << run.out;
    // Objects by class, with connections and the values that differ from
    // the class default only.
    EXPECT_TRUE(contains(run.out, "  - class: \"FbxNode\"\n    name: \"Bottom\"\n"));
    EXPECT_TRUE(contains(run.out, "destinations: [\"FbxScene EmptiesScene\", \"FbxNode Middle\"]"));
    EXPECT_TRUE(contains(run.out, "      kiva_tag: \"leaf node\"\n"));
    EXPECT_FALSE(contains(run.out, "Visibility:"));
    EXPECT_LT(run.out.find("class: \"FbxNode\""), run.out.find("class: \"FbxNull\""));

    DumpRun again = dump({blender("empties_hierarchy")});
    EXPECT_EQ(again.out, run.out);  // byte for byte the same
}

TEST_F(FbxDump, JsonHoldsTheSameDumpAndMaterialsInOrder) {
    DumpRun run = dump({"--json", blender("multi_material")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_TRUE(wellFormedJson(run.out)) << run.out;
    EXPECT_TRUE(contains(run.out, "\"materials\": [\"Red\", \"Green\", \"Blue\"]"));
    EXPECT_TRUE(contains(run.out, "\"name\": \"MultiMaterialStrip\""));
    EXPECT_TRUE(contains(run.out, "\"attributes\": [\"FbxMesh\"]"));
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
    EXPECT_TRUE(contains(json.out, "\"name\": \"Objects\""));
}

TEST_F(FbxDump, UnreadableFilesGiveTheImporterStatusAndExitOne) {
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
    DumpRun missing = dump({(dir / "missing.fbx").string()});
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(contains(missing.err, "Unexpected file type"));

    // A read that fails part-way shows what it got.
    FbxBinaryBuilder broken(7400);
    broken.Begin("Documents");
    broken.Begin("Count").Int(0).End();
    broken.End();
    std::string path = Write("broken.fbx", broken.Finish());
    DumpRun run = dump({path});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, path + ": File is corrupted (or invalid)\n");
    EXPECT_TRUE(contains(run.out, "name: \"RootNode\""));
}

TEST_F(FbxDump, UsageErrors) {
    EXPECT_EQ(dump({}).code, 1);
    DumpRun unknown = dump({"--tree", blender("textured_cube")});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_TRUE(contains(unknown.err, "usage: fbxdump"));
    EXPECT_EQ(dump({blender("textured_cube"), blender("multi_material")}).code, 1);
    EXPECT_EQ(dump({"--help"}).code, 0);
}

TEST_F(FbxDump, TheProgramRunsAndSetsItsExitCode) {
    std::string program = std::string(KIVA_BIN_DIR) + "/fbxdump";
    std::string out = (dir / "out.txt").string();
    int status = std::system((program + " " + blender("skinned_armature") + " > " + out + " 2>&1").c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    std::ifstream in(out);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(contains(text, "name: \"Head\""));
    status = std::system((program + " " + (dir / "none.fbx").string() + " 2> /dev/null").c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST(DumpValue, NumbersAndStringsAreWrittenExactlyAndSafely) {
    EXPECT_EQ(formatDouble(0.1), "0.1");
    EXPECT_EQ(formatDouble(-0.0), "0");
    EXPECT_EQ(formatDouble(1e300), "1e+300");
    DumpValue value = DumpValue::object();
    value.add("text", std::string("a\"b\\c\n\x01\xC3\xA9\xFF", 10));
    value.add("nan", std::nan(""));
    value.add("empty", DumpValue::array());
    std::ostringstream json;
    writeJson(value, json);
    EXPECT_EQ(json.str(),
              "{\n  \"text\": \"a\\\"b\\\\c\\n\\u0001\xC3\xA9\\u00ff\",\n  \"nan\": \"nan\",\n  \"empty\": []\n}\n");
    std::ostringstream text;
    writeText(value, text);
    EXPECT_EQ(text.str(), "text: \"a\\\"b\\\\c\\n\\u0001\xC3\xA9\\u00ff\"\nnan: nan\nempty: []\n");
}

}  // namespace
