// Text twins written by fbxdump --write-text read back as their sources.
#include "fbx/dump/fbx_text_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/dump/fbxdump.h"
#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_stream.h"
#include "qe/scratch_dir_testing.h"

namespace {

namespace fs = std::filesystem;

int run(std::vector<std::string> args, std::string* out = nullptr, std::string* err = nullptr) {
    std::ostringstream o, e;
    int code = runFbxDump(args, o, e);
    if (out) *out = o.str();
    if (err) *err = e.str();
    return code;
}

// The --json dump of a file, with its own path taken out.
std::string jsonDump(const std::string& path) {
    std::string out, err;
    EXPECT_EQ(run({"--json", path}, &out, &err), 0) << err;
    for (size_t at; (at = out.find(path)) != std::string::npos;) out.replace(at, path.size(), "FILE");
    return out;
}

TEST(FbxTextWriter, BlenderFilesImportAlikeFromTheirTextTwins) {
    ScratchDir dir;
    int files = 0;
    std::vector<fs::directory_entry> entries;
    for (const char* folder : {"blender", "blender_animation", "geometry"})
        for (const auto& entry : fs::directory_iterator(std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/" + folder))
            if (entry.path().extension() == ".fbx") entries.push_back(entry);
    for (const auto& entry : entries) {
        ++files;
        std::string source = entry.path().string();
        std::string text = dir.file(entry.path().stem().string() + "_text.fbx");
        SCOPED_TRACE(source);
        ASSERT_EQ(run({"--write-text", text, source}), 0);
        std::string binaryDump = jsonDump(source), textDump = jsonDump(text);
        size_t syntax = binaryDump.find("\"syntax\": \"binary\"");
        ASSERT_NE(syntax, std::string::npos);
        EXPECT_EQ(binaryDump.replace(syntax, 18, "\"syntax\": \"text\""), textDump);
        if (entry.path().stem() == "textured_cube") {
            std::string fields;
            ASSERT_EQ(run({"--fields", text}, &fields), 0);
            EXPECT_NE(fields.find("values: [[\"a\", \"array[24]\"]]"), std::string::npos);  // 8 vertices
        }

        // Written again from the text, the twin keeps every line but the one
        // that names the syntax of its source.
        std::string again = dir.file("again.fbx");
        ASSERT_EQ(run({"--write-text", again, text}), 0);
        std::string first = readFile(text), second = readFile(again);
        EXPECT_EQ(first.replace(first.find("a binary"), 8, "a text"), second);
    }
    EXPECT_GE(files, 13);
}

TEST(FbxTextWriter, ValuesOfEveryCodeReadBackAlike) {
    FbxBinaryBuilder b;
    b.Begin("FBXHeaderExtension").Begin("FBXVersion").Int(7300).End().End();
    b.Begin("Scalars").Char('Y').Char(1).Byte(-5).Short(-300).Int(-70000).Long(-5000000000LL);
    b.Float(0.1f).Double(1e300).Double(-0.0).Double(NAN).End();
    b.Begin("Texts").String("a, \"b\" {c}\n;d").ObjectName("Cube", "Model").Raw(std::vector<uint8_t>{0, 1, 255});
    b.String("").End();
    b.Begin("Arrays").Begin("I").IntArray({1, -2}, FbxArrayEncoding::eZlib).End();
    b.Begin("D").DoubleArray({0.1, -1e-300}).End().Begin("F").FloatArray({0.1f, 3.5f}).End();
    b.Begin("L").LongArray({INT64_MIN}).End().Begin("B").BoolArray({true, false}).End();
    b.Begin("E").IntArray({}).End().End();
    std::vector<uint8_t> content(5000);
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<uint8_t>(i * 7);
    b.Begin("Content").Raw(content).End();
    ScratchDir dir;
    std::vector<uint8_t> bytes = b.Finish();
    std::string source = dir.write("every.fbx", std::string(bytes.begin(), bytes.end()));
    std::string text = dir.file("every_text.fbx");
    std::string err;
    ASSERT_EQ(run({"--write-text", text, source}, nullptr, &err), 0) << err;

    FbxFieldStream streams[2];
    for (int i = 0; i < 2; ++i) {
        streams[i].SetFbx7Mode(true);
        ASSERT_TRUE(streams[i].OpenFile((i ? text : source).c_str())) << i;
        EXPECT_EQ(streams[i].FileVersion(), 7300u);
    }
    auto same = [&](auto read) { EXPECT_EQ(read(streams[0]), read(streams[1])); };
    auto sameBits = [&](auto read) {
        auto a = read(streams[0]), b = read(streams[1]);
        EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    };
    for (FbxFieldStream& s : streams) s.BeginField("Scalars");
    same([](FbxFieldStream& s) { return s.NextChar(); });
    same([](FbxFieldStream& s) { return s.NextBool(); });
    same([](FbxFieldStream& s) { return s.NextByte(); });
    same([](FbxFieldStream& s) { return s.NextShort(); });
    same([](FbxFieldStream& s) { return s.NextInt(); });
    same([](FbxFieldStream& s) { return s.NextLong(); });
    sameBits([](FbxFieldStream& s) { return s.NextDouble(); });
    sameBits([](FbxFieldStream& s) { return s.NextDouble(); });
    sameBits([](FbxFieldStream& s) { return s.NextDouble(); });
    same([](FbxFieldStream& s) { return std::isnan(s.NextDouble()); });
    for (FbxFieldStream& s : streams) s.BeginField("Texts");
    same([](FbxFieldStream& s) { return std::string(s.NextString()); });
    same([](FbxFieldStream& s) { return std::string(s.NextString()); });
    same([](FbxFieldStream& s) {
        int size = 0;
        const char* data = static_cast<const char*>(s.NextBlob(size));
        return std::string(data, data + size);
    });
    same([](FbxFieldStream& s) { return std::string(s.NextString()); });
    for (FbxFieldStream& s : streams) s.BeginField("Arrays") && s.EnterBlock();
    auto array = [&](const char* name, auto read) {
        SCOPED_TRACE(name);
        same([&](FbxFieldStream& s) {
            int count = 0;
            s.BeginField(name);
            auto* data = read(s, count);
            s.EndField();
            const uint8_t* bytes = reinterpret_cast<const uint8_t*>(data);
            return std::vector<uint8_t>(bytes, bytes + count * sizeof *data);
        });
    };
    array("I", [](FbxFieldStream& s, int& n) { return s.NextIntArray(n); });
    array("E", [](FbxFieldStream& s, int& n) { return s.NextIntArray(n); });
    array("D", [](FbxFieldStream& s, int& n) { return s.NextDoubleArray(n); });
    array("F", [](FbxFieldStream& s, int& n) { return s.NextFloatArray(n); });
    array("L", [](FbxFieldStream& s, int& n) { return s.NextLongArray(n); });
    array("B", [](FbxFieldStream& s, int& n) { return s.NextBoolArray(n); });

    // Embedded content: a blob in binary, its size and base64 chunks in text.
    FbxFieldStream& t = streams[1];
    t.LeaveBlock();
    ASSERT_TRUE(t.BeginField("Content"));
    EXPECT_EQ(t.NextInt(), 5000);
    ASSERT_TRUE(t.EnterBlock() && t.BeginField("BinaryData"));
    std::vector<uint8_t> decoded;
    while (t.ValuesLeft() > 0) {
        int size = 0;
        const uint8_t* chunk = static_cast<const uint8_t*>(t.NextBlob(size));
        decoded.insert(decoded.end(), chunk, chunk + size);
    }
    EXPECT_EQ(decoded, content);
}

TEST(FbxTextWriter, DeepFilesAndRefusals) {
    ScratchDir dir;
    constexpr int kDepth = 10000;
    std::string deep = "; FBX 7.4.0 project file\n";
    for (int i = 0; i < kDepth; ++i) deep += "N: {\n";
    deep += "Leaf: 1\n" + std::string(kDepth, '}') + "\n";
    std::string source = dir.write("deep.fbx", deep), copy = dir.file("deep_copy.fbx");
    ASSERT_EQ(run({"--write-text", copy, source}), 0);
    std::string written = readFile(copy);
    EXPECT_NE(written.find(std::string(32, '\t') + "Leaf: 1\n"), std::string::npos);
    EXPECT_NE(written.find("\t}\n}\n"), std::string::npos);

    // Text gives a field one block: two arrays in one field do not fit.
    FbxBinaryBuilder b;
    b.Begin("Two").IntArray({1}).IntArray({2}).End();
    std::vector<uint8_t> bytes = b.Finish();
    std::string two = dir.write("two.fbx", std::string(bytes.begin(), bytes.end()));
    std::string out = dir.file("two_text.fbx"), err;
    EXPECT_EQ(run({"--write-text", out, two}, nullptr, &err), 1);
    EXPECT_EQ(err, two + ": the field \"Two\" has two arrays, which text cannot hold\n");
    EXPECT_FALSE(fs::exists(out));
    EXPECT_EQ(run({"--write-text", two, two}, nullptr, &err), 1);
    EXPECT_EQ(err, "fbxdump: " + two + ": the text file would overwrite its source\n");
    EXPECT_EQ(run({two, "--write-text"}, nullptr, &err), 1);
    EXPECT_NE(err.find("usage"), std::string::npos);
}

}  // namespace
