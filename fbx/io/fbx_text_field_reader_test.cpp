// Text FBX files through the field stream: header, line reader, tokeniser,
// value conversions, arrays and blobs, and damaged or extreme files.
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_field_walk_testing.h"
#include "fbx/io/fbx_memory_file_testing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

const char kHeader[] = "; FBX 7.4.0 project file\n";

class Text {
public:
    explicit Text(const std::string& text) : file_(std::vector<uint8_t>(text.begin(), text.end())) {
        stream.SetFbx7Mode(true);
        ok = stream.OpenStream(&file_);
    }
    std::string Message() const { return stream.GetStatus().GetErrorString(); }
    // All values of the instance as strings.
    std::vector<std::string> Values(const char* name) {
        std::vector<std::string> values;
        if (!stream.BeginField(name)) return {"(absent)"};
        while (stream.ValuesLeft() > 0) values.emplace_back(stream.NextString());
        stream.EndField();
        return values;
    }

    FbxMemoryFile file_;
    FbxFieldStream stream;
    bool ok = false;
};

using Strings = std::vector<std::string>;

TEST(FbxTextFields, HeaderLineGivesTheVersion) {
    // The product word of old text headers, kept as bytes like the reader's.
    const std::string old = std::string({0x46, 0x69, 0x6C, 0x6D, 0x62, 0x6F, 0x78});
    struct Case {
        std::string line;
        uint32_t version;  // 0: no text header
    } cases[] = {
        {"; FBX 7.4.0 project file", 7400},
        {"; FBX 7.10.0 project file", 7000},
        {"; FBX 7.3.0 Project File", 7300},
        {";FBX 7.5 project file\r", 7500},
        {"; Anything 7.2.112 project file", 7212},
        {"; " + old + " 4.5 project file", 4050},
        {"; " + old + " 2.7 project file", 2001},
        {"; " + old + " 3.3 project file", 0},
        {"; FBX 7,4,0 project file", 0},
        {"FBX 7.4.0 project file", 0},
        {"; FBX 7.4.0 project", 0},
        {"; FBX 7.4.0.1 project file", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Text t(c.line + "\nA: 1\n");
        EXPECT_EQ(t.ok, c.version != 0) << t.Message();
        if (c.version == 0) {
            EXPECT_EQ(t.Message(), "File is corrupted (stream)");
            continue;
        }
        EXPECT_FALSE(t.stream.IsBinary());
        EXPECT_EQ(t.stream.FileVersion(), c.version);
        EXPECT_EQ(t.stream.SectionCount(), 1);
        EXPECT_EQ(t.Values("A"), Strings{"1"});
    }
    Text future("; FBX 8.0.0 project file\n");
    EXPECT_EQ(future.Message(), "FBX file version 8.0.0 is not supported in this product");
}

TEST(FbxTextFields, HeaderExtensionCountsOnlyAsTheFirstField) {
    FbxHeaderInfo info;
    std::string extension = "FBXHeaderExtension:  {\n FBXHeaderVersion: 1003\n FBXVersion: 7300\n Creator: \"me\"\n}\n";
    std::vector<uint8_t> bytes;
    for (const std::string& body : {extension + "Z: 1\n", "A: 1\n" + extension}) {
        std::string text = kHeader + body;
        FbxMemoryFile file(std::vector<uint8_t>(text.begin(), text.end()));
        FbxFieldStream s;
        s.SetFbx7Mode(true);
        info = FbxHeaderInfo();
        ASSERT_TRUE(s.OpenStream(&file, nullptr, true, false, &info));
        bool first = body[0] == 'F';
        EXPECT_EQ(s.FileVersion(), first ? 7300u : 7400u);
        EXPECT_EQ(info.creator, first ? "me" : "");
        EXPECT_EQ(s.FieldCount(), 2);
    }
}

TEST(FbxTextFields, LinesAndTokens) {
    Text t(std::string(kHeader) +
           "; a comment { with a brace\n"
           "\n   \t\n"
           "   ;indented comment\n"
           "Quoted: \"a, {b}\", \"q&quot;x&lf;y&cr;&amp;\",\"\",\"x\"dropped 2\n"
           "Some Key : 1\n"
           "List: 1,\n  2,\n  3\n"
           "Empty: , ,\"\",\n"
           "Block: 5\n{\n  Inner: 6\n}\n"
           "Inline: {X: 1} , 7\n"
           "Multi: 1\nMulti: 2\nmulti: 3\n"
           "Tail: 1 ; not a comment\n"
           "Bare: {\n}\n");
    ASSERT_TRUE(t.ok) << t.Message();
    FbxFieldStream& s = t.stream;
    EXPECT_EQ(t.Values("Quoted"), (Strings{"a, {b}", "q\"x\ny\r&amp;", "", "x", "2"}));
    EXPECT_EQ(t.Values("Some Key"), Strings{"1"});
    EXPECT_EQ(t.Values("List"), (Strings{"1", "2", "3"}));
    EXPECT_EQ(t.Values("Empty"), Strings{""});
    EXPECT_EQ(t.Values("Tail"), (Strings{"1", ";", "not", "a", "comment"}));
    EXPECT_EQ(t.Values("Multi"), Strings{"1"});
    EXPECT_EQ(t.Values("Multi"), Strings{"2"});
    EXPECT_EQ(t.Values("MULTI"), Strings{"3"});
    EXPECT_EQ(s.FieldCount(), 9);

    for (const char* name : {"Block", "Inline", "Bare"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(s.BeginField(name));
        EXPECT_TRUE(s.HasBlock());
        bool bare = std::strcmp(name, "Bare") == 0;
        EXPECT_EQ(s.ValueCount(), bare ? 0 : 1);
        EXPECT_EQ(s.NextInt(), bare ? 0 : std::strcmp(name, "Block") == 0 ? 5 : 7);
        ASSERT_TRUE(s.EnterBlock());
        EXPECT_EQ(s.FieldCount(), bare ? 0 : 1);
        EXPECT_EQ(s.NextInt("Inner", -1), std::strcmp(name, "Block") == 0 ? 6 : -1);
        EXPECT_EQ(s.NextInt("X", -1), std::strcmp(name, "Inline") == 0 ? 1 : -1);
        s.LeaveBlock();
        s.EndField();
    }
}

TEST(FbxTextFields, NumbersInEverySpelling) {
    Text t(std::string(kHeader) +
           "N: 42, -17, +8, 007, 1.5, .5, 5., 1e3, -2.5E-2, 12abc, abc, 0x10, \"  9\", \"\", "
           "99999999999, -99999999999, 99999999999999999999, inf, -INF, nan, 1e999, 1e-999, -0, T\n");
    ASSERT_TRUE(t.ok);
    FbxFieldStream& s = t.stream;
    ASSERT_TRUE(s.BeginField("N"));
    ASSERT_EQ(s.ValueCount(), 24);
    struct Expect {
        int i;
        double d;
    } expected[] = {{42, 42},  {-17, -17},   {8, 8},   {7, 7}, {1, 1.5}, {0, 0.5}, {5, 5},
                    {1, 1000}, {-2, -0.025}, {12, 12}, {0, 0}, {0, 0},   {9, 9},   {0, 0}};
    for (const Expect& e : expected) {
        int cursor = s.ValueCount() - s.ValuesLeft();
        SCOPED_TRACE(cursor);
        EXPECT_EQ(s.NextValueType(), 'S');
        EXPECT_EQ(s.NextInt(), e.i);
        s.BeginField("N", 0);
        for (int k = 0; k < cursor; ++k) s.NextByte();
        EXPECT_EQ(s.NextDouble(), e.d);
    }
    EXPECT_EQ(s.NextInt(), INT32_MAX);  // signed 32-bit conversion saturates
    EXPECT_EQ(s.NextLong(), -99999999999);
    EXPECT_EQ(s.NextULong(), UINT64_MAX);
    EXPECT_TRUE(std::isinf(s.NextDouble()));
    EXPECT_EQ(s.NextDouble(), -INFINITY);
    EXPECT_TRUE(std::isnan(s.NextFloat()));
    EXPECT_TRUE(std::isinf(s.NextDouble()));
    EXPECT_EQ(s.NextDouble(), 0.0);
    EXPECT_TRUE(std::signbit(s.NextDouble()));
    EXPECT_EQ(s.NextChar(), 'T');
    EXPECT_EQ(s.NextInt(), 0);  // past the last value

    Text u(std::string(kHeader) + "U: -1, 4294967296, 1, 0, -3, 300\n");
    ASSERT_TRUE(u.stream.BeginField("U"));
    EXPECT_EQ(u.stream.NextUInt(), 0xFFFFFFFFu);
    EXPECT_EQ(u.stream.NextUInt(), 0u);
    EXPECT_TRUE(u.stream.NextBool());
    EXPECT_FALSE(u.stream.NextBool());
    EXPECT_TRUE(u.stream.NextBool());
    EXPECT_EQ(u.stream.NextUByte(), 44);  // 300 narrowed
}

TEST(FbxTextFields, ArraysBlobsAndTimes) {
    Text t(std::string(kHeader) +
           "Ints: *4 {\n  a: 1,-2,\n  3,4\n}\n"
           "Reals: *3 {a: 0.5,1e-45,-2}\n"
           "Short: *3 { a: 1,2 }\n"
           "Long: *1 { a: 1,2 }\n"
           "Keys: *1 { a: 1\n b: 2 }\n"
           "Zero: *0 { a: }\n"
           "NoBlock: *2\n"
           "Blob: \"SGVsbG8=\", \"\", \"!\"\n"
           "Time: 46186158000\n");
    ASSERT_TRUE(t.ok);
    FbxFieldStream& s = t.stream;
    int count = 0;
    ASSERT_TRUE(s.BeginField("Ints"));
    EXPECT_EQ(s.NextValueType(), 'a');
    const int* ints = s.NextIntArray(count, 'd');  // text has no codes to refuse
    ASSERT_EQ(count, 4);
    EXPECT_EQ(std::vector<int>(ints, ints + 4), (std::vector<int>{1, -2, 3, 4}));
    s.BeginField("Ints", 0);
    const int64_t* longs = s.NextLongArray(count);
    ASSERT_EQ(count, 4);
    EXPECT_EQ(longs[1], -2);
    s.BeginField("Ints", 0);
    const bool* bools = s.NextBoolArray(count);
    EXPECT_EQ(count, 4);
    EXPECT_TRUE(bools[0] && bools[1]);
    s.EndField();

    const float* floats = s.NextFloatArray("Reals", count);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(floats[1], std::numeric_limits<float>::denorm_min());  // arrays keep tiny values
    s.BeginField("Reals", 0);
    const double* doubles = s.NextDoubleArray(count);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(doubles[2], -2.0);
    s.EndField();
    for (const char* bad : {"Short", "Long", "Keys", "Zero", "NoBlock", "Blob"}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(s.NextDoubleArray(bad, count), nullptr);
        EXPECT_EQ(count, 0);
    }
    ASSERT_TRUE(s.BeginField("Blob", 0));
    int size = 0;
    const void* blob = s.NextBlob(size);
    ASSERT_EQ(size, 5);
    EXPECT_EQ(std::memcmp(blob, "Hello", 5), 0);
    EXPECT_EQ(s.NextBlob(size), nullptr);
    EXPECT_EQ(s.NextBlob(size), nullptr);
    EXPECT_EQ(size, 0);
    s.EndField();
    EXPECT_EQ(s.NextTime("Time", -1), FbxFieldStream::kTicksPerSecond);

    // Before version 2001 a time is a number of seconds.
    Text old("; FBX 2.0 project file\nTime: 1.5\n");
    EXPECT_EQ(old.stream.NextTime("Time", -1), FbxFieldStream::kTicksPerSecond * 3 / 2);
}

TEST(FbxTextFields, DamagedFilesGiveWhatTheyHold) {
    // A missing closing brace ends the block at the end of the file; a
    // truncated file is one; a "}" in excess ends the top level.
    Text open(std::string(kHeader) + "A: 1 {\n B: 2\n C: *3 {\n a: 1,2,3\n");
    ASSERT_TRUE(open.ok) << open.Message();
    ASSERT_TRUE(open.stream.BeginField("A"));
    ASSERT_TRUE(open.stream.EnterBlock());
    EXPECT_EQ(open.stream.NextInt("B", 0), 2);
    int count = 0;
    EXPECT_NE(open.stream.NextIntArray("C", count), nullptr);
    EXPECT_EQ(count, 3);

    Text truncated(std::string(kHeader) + "A: 1 {\n B: \"cut off");
    ASSERT_TRUE(truncated.ok);
    ASSERT_TRUE(truncated.stream.BeginField("A"));
    ASSERT_TRUE(truncated.stream.EnterBlock());
    EXPECT_EQ(truncated.Values("B"), Strings{"cut off"});

    Text excess(std::string(kHeader) + "A: 1\n}\nB: 2\n");
    ASSERT_TRUE(excess.ok);
    EXPECT_EQ(excess.stream.FieldCount(), 1);

    // A file of nothing but a header is an empty file.
    Text empty(kHeader);
    ASSERT_TRUE(empty.ok);
    EXPECT_EQ(empty.stream.FieldCount(), 0);
}

TEST(FbxTextFields, LongLinesAreReadWhole) {
    // One line of 20,000 values, and a string with a brace far into its line.
    std::string values;
    for (int i = 0; i < 20000; ++i) values += std::to_string(i) + ",";
    std::string padding(10000, 'x');
    Text t(std::string(kHeader) + "Big: *20000 {a: " + values + "}\nText: \"" + padding + "}\" {\n Inner: 1\n}\n");
    ASSERT_TRUE(t.ok);
    FbxFieldStream& s = t.stream;
    int count = 0;
    const int* ints = s.NextIntArray("Big", count);
    ASSERT_EQ(count, 20000);
    EXPECT_EQ(ints[19999], 19999);
    ASSERT_TRUE(s.BeginField("Text"));
    EXPECT_EQ(std::string(s.NextString()), padding + "}");
    ASSERT_TRUE(s.EnterBlock());
    EXPECT_EQ(s.NextInt("Inner", 0), 1);
}

TEST(FbxTextFields, TenThousandNestedBlocksNeedNoRecursion) {
    constexpr int kDepth = 10000;
    std::string text = kHeader;
    for (int i = 0; i < kDepth; ++i) text += "N: " + std::to_string(i) + " {\n";
    text += "Leaf: \"deep\"\n";
    for (int i = 0; i < kDepth; ++i) text += "}\n";
    text += "After: 1\n";
    Text t(text);
    ASSERT_TRUE(t.ok);
    FbxFieldStream& s = t.stream;
    EXPECT_EQ(s.NextInt("After", 0), 1);
    for (int i = 0; i < kDepth; ++i) {
        ASSERT_TRUE(s.BeginField("N")) << i;
        ASSERT_EQ(s.NextInt(), i);
        ASSERT_TRUE(s.EnterBlock());
    }
    EXPECT_EQ(t.Values("Leaf"), Strings{"deep"});
    // The stream closes its levels without recursing too.
}

}  // namespace
