#include "fbx/io/fbx_field_stream.h"

#include "fbx/io/fbx_binary_builder_testing.h"
#include "fbx/io/fbx_field_walk_testing.h"
#include "fbx/io/fbx_memory_file_testing.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qe/scratch_dir_testing.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A stream over bytes in memory, in FBX 7 mode like the document reader.
class Opened {
public:
    explicit Opened(const Bytes& bytes, bool openSection = true, FbxHeaderInfo* info = nullptr,
                    FbxHeaderExtensionReader* owner = nullptr)
        : file_(bytes) {
        stream.SetFbx7Mode(true);
        ok = stream.OpenStream(&file_, owner, openSection, false, info);
    }
    std::string Message() const { return stream.GetStatus().GetErrorString(); }
    int Code() const { return stream.GetStatus().GetCode(); }

    FbxMemoryFile file_;
    FbxFieldStream stream;
    bool ok = false;
};

Bytes WithIdentityAndTrailer(FbxBinaryBuilder& b) {
    b.SectionIdentity();
    return b.Finish(FbxSectionTail::Full());
}

TEST(FbxFieldStream, FieldsAreFoundWithoutRegardToCaseAndInstancesComeInFileOrder) {
    FbxBinaryBuilder b;
    b.Begin("Model").String("first").End();
    b.Begin("alpha").Int(2).End();
    b.Begin("model").String("second").End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok) << o.Message();
    FbxFieldStream& s = o.stream;
    ASSERT_EQ(s.FieldCount(), 2);
    EXPECT_STREQ(s.FieldName(0), "alpha");
    EXPECT_STREQ(s.FieldName(1), "Model");
    EXPECT_EQ(s.FieldName(2), nullptr);
    EXPECT_EQ(s.FieldInstanceCount("MODEL"), 2);
    EXPECT_EQ(s.NextInt("ALPHA", -1), 2);
    EXPECT_EQ(s.NextInt("gamma", -1), -1);
    for (const char* expected : {"first", "second"}) {
        ASSERT_TRUE(s.BeginField("Model"));
        EXPECT_STREQ(s.NextString(), expected);
        s.EndField();
    }
    EXPECT_FALSE(s.BeginField("Model"));
    // Without EndField the same instance is taken again.
    s.RewindFields();
    ASSERT_TRUE(s.BeginField("Model"));
    ASSERT_TRUE(s.BeginField("Model"));
    EXPECT_STREQ(s.NextString(), "first");
    ASSERT_TRUE(s.BeginField("Model", 1));
    EXPECT_STREQ(s.NextString(), "second");
    EXPECT_FALSE(s.BeginField("Model", 2));
    EXPECT_FALSE(s.BeginFieldAt(5, 0));
}

TEST(FbxFieldStream, ReadsConvertOrRefuseByCode) {
    FbxBinaryBuilder b;
    b.Begin("V").Double(0.1).Float(0.25f).Int(7).Long(0x100000002LL).Int(5).Char(0).Int(9).Bool(true).End();
    b.Begin("T").Long(46186158000LL).Double(0.5).Double(1.0).Double(2.0).End();
    b.Begin("Blob").Int(1).String("").End();
    b.Begin("Tiny").Float(1e-39f).Float(1e-30f).Double(1e-308).Double(1e-300).Float(-1e-39f).End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    FbxFieldStream& s = o.stream;
    ASSERT_TRUE(s.BeginField("V"));
    EXPECT_EQ(s.NextFloat(), 0.1f);    // a double narrowed
    EXPECT_EQ(s.NextDouble(), 0.25);   // a float widened
    EXPECT_EQ(s.NextFloat(), 0.0f);    // an integer is no float
    EXPECT_EQ(s.NextInt(), 2);         // low 32 bits of a 64-bit value
    EXPECT_EQ(s.NextChar(), 0);        // an integer is no character
    EXPECT_FALSE(s.NextBool());        // a one-byte 0 followed by other values
    EXPECT_STREQ(s.NextString(), "");  // an integer is no string
    EXPECT_TRUE(s.NextBool());
    s.EndField();

    ASSERT_TRUE(s.BeginField("T"));
    EXPECT_EQ(s.NextTime(), 46186158000LL);
    EXPECT_EQ(s.NextTime(), 23093079000LL);
    int64_t start = 0, stop = 0;
    s.NextTimeSpan(start, stop);
    EXPECT_EQ(start, 46186158000LL);
    EXPECT_EQ(stop, 2 * 46186158000LL);
    s.EndField();

    int size = -1;
    ASSERT_TRUE(s.BeginField("Blob"));
    EXPECT_EQ(s.NextBlob(size), nullptr);  // no length word
    EXPECT_EQ(s.NextBlob(size), nullptr);  // length 0
    EXPECT_EQ(size, 0);
    s.EndField();

    // Tiny values read as 0.
    ASSERT_TRUE(s.BeginField("Tiny"));
    EXPECT_EQ(s.NextFloat(), 0.0f);
    EXPECT_EQ(s.NextFloat(), 1e-30f);
    EXPECT_EQ(s.NextDouble(), 0.0);
    EXPECT_EQ(s.NextDouble(), 1e-300);
    EXPECT_EQ(s.NextDouble(), 0.0);
    // Past the last value.
    EXPECT_EQ(s.ValuesLeft(), 0);
    EXPECT_EQ(s.NextValueType(), 'S');
    EXPECT_EQ(s.NextInt(), 0);
    EXPECT_STREQ(s.NextString(), "");
    s.EndField();
    EXPECT_EQ(s.NextValueType(), 'S');  // no current instance
}

TEST(FbxFieldStream, StringsFollowTheTwoPartNameConvention) {
    FbxBinaryBuilder b;
    b.Begin("S")
        .ObjectName("Cube", "Model")
        .String(std::string("A\0B", 3))
        .String("plain")
        .String("")
        .ObjectName("", "NodeAttribute")
        .String(std::string("A\0\x01"
                            "B\0C",
                            6))
        .End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    FbxFieldStream& s = o.stream;
    ASSERT_TRUE(s.BeginField("S"));
    EXPECT_STREQ(s.NextString(), "Model::Cube");
    EXPECT_STREQ(s.NextString(), "A");
    EXPECT_STREQ(s.NextString(), "plain");
    EXPECT_STREQ(s.NextString(), "");
    EXPECT_STREQ(s.NextString(), "NodeAttribute::");
    EXPECT_STREQ(s.NextString(), "B::A");
    s.EndField();
}

// The same description in either byte order.
Bytes EveryValueFile(bool bigEndian, FbxArrayEncoding encoding) {
    FbxBinaryBuilder b(7400, bigEndian);
    b.Begin("Scalars").Char('c').Byte(-2).Short(-300).Int(-70000).Float(-2.5f).Long(-5000000000LL).Double(1e100);
    b.String("name").ObjectName("n", "K").Raw(Bytes{9, 8, 7}).End();
    b.Begin("Arrays");
    b.BoolArray({true, false, true}, encoding);
    b.ByteArray({1, 200, 3}, encoding);
    b.ShortArray({-1, 2, 30000}, encoding);
    b.IntArray({-1, 0x12345678, 3}, encoding);
    b.FloatArray({0.5f, -1.25f}, encoding);
    b.LongArray({-1, 0x123456789ABCLL}, encoding);
    b.DoubleArray({3.5, -1e-10, 1e300}, encoding);
    b.Begin("Nested").Int(42).End();
    b.End();
    return b.Finish();
}

void ExpectEveryValue(FbxFieldStream& s) {
    ASSERT_TRUE(s.BeginField("Scalars"));
    EXPECT_EQ(s.ValueCount(), 10);
    EXPECT_EQ(s.NextValueType(), 'C');
    EXPECT_EQ(s.NextChar(), 'c');
    EXPECT_EQ(s.NextByte(), -2);
    EXPECT_EQ(s.NextShort(), -300);
    EXPECT_EQ(s.NextInt(), -70000);
    EXPECT_EQ(s.NextFloat(), -2.5f);
    EXPECT_EQ(s.NextLong(), -5000000000LL);
    EXPECT_EQ(s.NextDouble(), 1e100);
    EXPECT_STREQ(s.NextString(), "name");
    EXPECT_STREQ(s.NextString(), "K::n");
    int size = 0;
    const uint8_t* blob = static_cast<const uint8_t*>(s.NextBlob(size));
    ASSERT_EQ(size, 3);
    EXPECT_EQ(blob[0], 9);
    s.EndField();

    ASSERT_TRUE(s.BeginField("Arrays"));
    int n = 0;
    const bool* bools = s.NextBoolArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_TRUE(bools[0]);
    EXPECT_FALSE(bools[1]);
    const unsigned char* bytes = s.NextUByteArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_EQ(bytes[1], 200);
    const short* shorts = s.NextShortArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_EQ(shorts[2], 30000);
    const int* ints = s.NextIntArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_EQ(ints[0], -1);
    EXPECT_EQ(ints[1], 0x12345678);
    const float* floats = s.NextFloatArray(n);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(floats[1], -1.25f);
    const int64_t* longs = s.NextLongArray(n);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(longs[1], 0x123456789ABCLL);
    const double* doubles = s.NextDoubleArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_EQ(doubles[0], 3.5);
    EXPECT_EQ(doubles[2], 1e300);
    ASSERT_TRUE(s.EnterBlock());
    EXPECT_EQ(s.NextInt("Nested", 0), 42);
    EXPECT_TRUE(s.LeaveBlock());
    s.EndField();
}

TEST(FbxFieldStream, BigEndianFilesReadLikeLittleEndianOnes) {
    for (FbxArrayEncoding encoding : {FbxArrayEncoding::eRaw, FbxArrayEncoding::eZlib}) {
        Opened little(EveryValueFile(false, encoding));
        Opened big(EveryValueFile(true, encoding));
        ASSERT_TRUE(little.ok);
        ASSERT_TRUE(big.ok) << big.Message();
        EXPECT_FALSE(little.stream.IsBigEndian());
        EXPECT_TRUE(big.stream.IsBigEndian());
        ExpectEveryValue(little.stream);
        ExpectEveryValue(big.stream);
        little.stream.RewindFields();
        big.stream.RewindFields();
        EXPECT_EQ(FbxWalkFields(little.stream).checksum, FbxWalkFields(big.stream).checksum);
    }
}

TEST(FbxFieldStream, ArrayReadsCheckCodeCountLengthAndEncoding) {
    std::vector<int32_t> ints = {1, 2, 3, 4};
    Bytes raw(reinterpret_cast<const uint8_t*>(ints.data()), reinterpret_cast<const uint8_t*>(ints.data() + 4));
    Bytes packed = FbxBinaryBuilder::Deflate(raw.data(), raw.size());
    Bytes packedWithTail = packed;
    packedWithTail.push_back(0);
    Bytes shortPacked = FbxBinaryBuilder::Deflate(raw.data(), 12);
    Bytes broken = packed;
    broken[broken.size() / 2] ^= 0x5A;
    broken[2] ^= 0xFF;

    FbxBinaryBuilder b;
    b.Begin("A");
    b.ArrayWithHeader('i', 4, 0, raw);                // 0: good raw
    b.ArrayWithHeader('i', 4, 1, packed);             // 1: good zlib
    b.ArrayWithHeader('i', 4, 0x101, packed);         // 2: only the low byte of the encoding counts
    b.ArrayWithHeader('i', 0, 0, Bytes{});            // 3: empty raw
    b.ArrayWithHeader('i', 0, 1, packed);             // 4: empty zlib
    b.ArrayWithHeader('i', 3, 0, raw);                // 5: length is not count * 4
    b.ArrayWithHeader('i', 4, 2, raw);                // 6: unknown encoding
    b.ArrayWithHeader('i', 4, 1, broken);             // 7: bad zlib stream
    b.ArrayWithHeader('i', 4, 1, packedWithTail);     // 8: bytes behind the zlib stream
    b.ArrayWithHeader('i', 4, 1, shortPacked);        // 9: inflates to too few bytes
    b.ArrayWithHeader('i', 3, 1, packed);             // 10: inflates to more: the rest is dropped
    b.ArrayWithHeader('b', 4, 0, Bytes{1, 0, 1, 0});  // 11: read as bytes with a named code
    b.ArrayWithHeader('i', 4, 0, raw);                // 12: read with the wrong code
    b.ArrayWithHeader('b', 3, 0, Bytes{0, 2, 255});   // 13: booleans become 0 or 1
    b.End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok) << o.Message();
    FbxFieldStream& s = o.stream;
    ASSERT_TRUE(s.BeginField("A"));
    int n = -1;
    const int* got = s.NextIntArray(n);
    ASSERT_EQ(n, 4);
    EXPECT_EQ(got[3], 4);
    got = s.NextIntArray(n);
    ASSERT_EQ(n, 4);
    EXPECT_EQ(got[0], 1);
    EXPECT_EQ(got[3], 4);
    s.NextIntArray(n);
    EXPECT_EQ(n, 4);
    for (int i = 3; i <= 9; ++i) {
        EXPECT_EQ(s.NextIntArray(n), nullptr) << "array " << i;
        EXPECT_EQ(n, 0) << "array " << i;
    }
    got = s.NextIntArray(n);
    ASSERT_EQ(n, 3);
    EXPECT_EQ(got[2], 3);
    s.NextUByteArray(n, 'b');
    EXPECT_EQ(n, 4);
    EXPECT_EQ(s.NextDoubleArray(n), nullptr);
    EXPECT_EQ(n, 0);
    const bool* bools = s.NextBoolArray(n);
    ASSERT_EQ(n, 3);
    unsigned char bits[3];
    std::memcpy(bits, bools, 3);
    EXPECT_EQ(bits[0], 0);
    EXPECT_EQ(bits[1], 1);
    EXPECT_EQ(bits[2], 1);
    s.EndField();
    EXPECT_EQ(s.GetStatus().GetCode(), FbxStatus::eSuccess);  // bad arrays report nothing
}

TEST(FbxFieldStream, ArrayResultsStayValidUntilTheNextReadOnTheSameInstance) {
    FbxBinaryBuilder b;
    b.Begin("A").IntArray({1, 2}).End();
    b.Begin("B").IntArray({3, 4}, FbxArrayEncoding::eZlib).End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    int n;
    const int* a = o.stream.NextIntArray("A", n);
    const int* c = o.stream.NextIntArray("B", n);
    ASSERT_TRUE(a && c);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(c[1], 4);
}

TEST(FbxFieldStream, BlocksAreEnteredAndLeft) {
    FbxBinaryBuilder b;
    b.Begin("Objects");
    b.Begin("Model").Long(1).Begin("Deep").Begin("Deeper").Double(1.5).End().End().End();
    b.Begin("Empty").EmptyBlock().End();
    b.End();
    b.Begin("Values").Int(5).End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    FbxFieldStream& s = o.stream;

    ASSERT_TRUE(s.BeginField("Values"));
    EXPECT_FALSE(s.HasBlock());
    EXPECT_FALSE(s.EnterBlock());
    s.EndField();

    ASSERT_TRUE(s.BeginField("Objects"));
    EXPECT_EQ(s.ValueCount(), 0);
    ASSERT_TRUE(s.EnterBlock());
    ASSERT_TRUE(s.BeginField("Model"));
    EXPECT_EQ(s.NextLong(), 1);
    ASSERT_TRUE(s.EnterBlock());
    ASSERT_TRUE(s.BeginField("Deep"));
    ASSERT_TRUE(s.EnterBlock());
    EXPECT_EQ(s.NextDouble("Deeper", 0), 1.5);
    EXPECT_EQ(s.Depth(), 3);
    EXPECT_TRUE(s.LeaveBlock());
    s.EndField();
    EXPECT_TRUE(s.LeaveBlock());
    s.EndField();
    ASSERT_TRUE(s.BeginField("Empty"));
    EXPECT_TRUE(s.HasBlock());
    ASSERT_TRUE(s.EnterBlock());
    EXPECT_EQ(s.FieldCount(), 0);
    EXPECT_TRUE(s.LeaveBlock());
    s.EndField();
    EXPECT_TRUE(s.LeaveBlock());
    EXPECT_FALSE(s.LeaveBlock());
    s.EndField();

    // Rewinding closes an open child and restarts every field.
    s.RewindFields();
    ASSERT_TRUE(s.BeginField("Objects"));
    ASSERT_TRUE(s.EnterBlock());
    EXPECT_TRUE(s.LeaveBlock());
    s.RewindFields();
    EXPECT_EQ(s.Depth(), 0);
    ASSERT_TRUE(s.BeginField("Objects"));
    s.EndField();
    EXPECT_EQ(o.Code(), FbxStatus::eSuccess);
    FbxWalkStats stats = FbxWalkFields(s);
    EXPECT_EQ(stats.fields, 6u);
    EXPECT_EQ(stats.blocks, 4u);
    EXPECT_EQ(stats.maxDepth, 3);
}

TEST(FbxFieldStream, HeaderVersionAndSyntax) {
    // Neither header: bytes that are no file of ours, and no bytes at all.
    for (const Bytes& bytes : {Bytes(100, 'x'), Bytes{}}) {
        SCOPED_TRACE(bytes.size());
        Opened o(bytes);
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Code(), FbxStatus::eFailure);
        EXPECT_EQ(o.Message(), "File is corrupted (stream)");
        EXPECT_FALSE(o.stream.IsOpen());
    }
    {
        FbxBinaryBuilder b(7300, false, true);
        b.Begin("A").Int(1).End();
        Opened o(b.Finish());
        ASSERT_TRUE(o.ok);
        EXPECT_TRUE(o.stream.IsBinary());
        EXPECT_EQ(o.stream.FileVersion(), 7300u);
    }
    {
        FbxBinaryBuilder b(7500);
        Opened o(b.Finish());
        EXPECT_TRUE(o.ok);
    }
    {
        FbxBinaryBuilder b(8000);
        Opened o(b.Finish());
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Code(), FbxStatus::eInvalidFileVersion);
        EXPECT_EQ(o.Message(), "FBX file version 8.0.0 is not supported in this product");
        EXPECT_EQ(o.stream.FileVersion(), 8000u);
    }
    {
        // Major 7 needs FBX 7 mode.
        FbxBinaryBuilder b(7401);
        FbxMemoryFile file(b.Finish());
        FbxFieldStream s;
        EXPECT_FALSE(s.OpenStream(&file));
        EXPECT_EQ(s.GetStatus().GetErrorString(),
                  std::string("FBX file version 7.4.1 is not supported in this product"));
        FbxBinaryBuilder b6(6100);
        FbxMemoryFile file6(b6.Finish());
        EXPECT_TRUE(s.OpenStream(&file6));
    }
}

class RecordingOwner : public FbxHeaderExtensionReader {
public:
    void ReadHeaderExtension(FbxFieldStream& stream) override { sceneInfo = stream.NextString("SceneInfo", ""); }
    std::string sceneInfo;
};

TEST(FbxFieldStream, HeaderExtensionGivesVersionInfoAndEncryption) {
    auto file = [](int encryption, uint32_t fbxVersion) {
        FbxBinaryBuilder b(7100);
        b.Begin("FBXHeaderExtension");
        b.Begin("FBXHeaderVersion").Int(1003).End();
        b.Begin("FBXVersion").Int(static_cast<int32_t>(fbxVersion)).End();
        if (encryption >= 0) b.Begin("EncryptionType").Int(encryption).End();
        b.Begin("CreationTimeStamp").Begin("Version").Int(1000).End().Begin("Millisecond").Int(400).End().End();
        b.Begin("Creator").String("kivatran test").End();
        b.Begin("OtherFlags").Begin("FlagIOPlugin").Int(1).End().End();
        b.Begin("SceneInfo").ObjectName("GlobalInfo", "SceneInfo").EmptyBlock().End();
        b.End();
        b.Begin("Later").Int(1).End();
        return b.Finish();
    };
    {
        FbxHeaderInfo info;
        RecordingOwner owner;
        Opened o(file(0, 7400), true, &info, &owner);
        ASSERT_TRUE(o.ok) << o.Message();
        EXPECT_EQ(o.stream.FileVersion(), 7400u);  // the extension's version counts
        EXPECT_EQ(info.headerVersion, 1003);
        EXPECT_EQ(info.millisecond, 400);
        EXPECT_EQ(info.creator, "kivatran test");
        EXPECT_TRUE(info.flagIOPlugin);
        EXPECT_EQ(owner.sceneInfo, "SceneInfo::GlobalInfo");
        EXPECT_EQ(o.stream.NextInt("Later", 0), 1);
    }
    {
        Opened o(file(-1, 8100));  // the header extension's version counts
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Code(), FbxStatus::eInvalidFileVersion);
    }
    {
        Opened o(file(1, 7400));
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Code(), FbxStatus::eFailure);
        EXPECT_NE(o.Message().find("encrypted"), std::string::npos) << o.Message();
        EXPECT_TRUE(o.stream.IsEncrypted());
    }
    {
        Opened o(file(2, 7400));
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Message(), "Encryption type is not supported");
    }
    {
        // A header extension whose block does not load.
        FbxBinaryBuilder b(7400);
        b.Begin("FBXHeaderExtension").Begin("FBXVersion").Int(7400).End().End();
        Bytes bytes = b.Finish();
        bytes[27 + 13 + 18] = 0x55;  // the nested record's end offset
        Opened o(bytes);
        EXPECT_FALSE(o.ok);
        EXPECT_EQ(o.Code(), FbxStatus::eInvalidFile);
        EXPECT_EQ(o.Message(), "File is corrupted (stream)");
    }
}

// One record "A" with an Int, then `change` spoils the file's bytes or the
// record; `at` is the record's start.
Bytes spoiled(const std::function<void(FbxBinaryBuilder&)>& record, const std::function<void(Bytes&, size_t)>& change) {
    FbxBinaryBuilder b;
    size_t at = b.Position();
    b.Begin("A");
    record(b);
    b.End();
    b.Begin("B").Int(2).End();
    Bytes bytes = b.Finish();
    if (change) change(bytes, at);
    return bytes;
}

TEST(FbxFieldStream, MalformedLevelsFailTheirLoad) {
    auto value = [](std::vector<uint8_t> raw, uint32_t count) {
        return [raw, count](FbxBinaryBuilder& b) { b.RawValueBytes(raw).SetValueCount(count); };
    };
    auto one = [](FbxBinaryBuilder& b) { b.Int(1); };
    auto patch = [](size_t offset, uint32_t word) {
        return [offset, word](Bytes& bytes, size_t at) { std::memcpy(&bytes[at + offset], &word, 4); };
    };
    struct Case {
        const char* what;
        Bytes bytes;
    };
    const Case cases[] = {
        {"end offsets not ascending", spoiled(one,
                                              [](Bytes& bytes, size_t at) {
                                                  uint32_t firstEnd = 27 + 13 + 1 + 5;  // where "B" starts
                                                  std::memcpy(&bytes[firstEnd], &firstEnd, 4);
                                                  (void)at;
                                              })},
        {"unknown value code", spoiled(value({'I', 1, 0, 0, 0, 'Q', 0}, 2), nullptr)},
        {"more values than bytes", spoiled(value({'I', 1, 0, 0, 0}, 3), nullptr)},
        {"value past the list", spoiled(value({'I', 1, 2}, 1), nullptr)},
        {"string longer than the list", spoiled(value({'S', 200, 0, 0, 0, 'x'}, 1), nullptr)},
        {"value list passes the record's end", spoiled(one, patch(8, 100))},
        {"no null record", spoiled(one, [](Bytes& bytes, size_t) { bytes.resize(bytes.size() - 13); })},
        {"truncated record", spoiled(one, [](Bytes& bytes, size_t) { bytes.resize(30); })},
    };
    for (const Case& c : cases) {
        Opened o(c.bytes);
        EXPECT_FALSE(o.ok) << c.what;
        EXPECT_EQ(o.Code(), FbxStatus::eInvalidFile) << c.what;
        EXPECT_EQ(o.Message(), "File is corrupted (stream)") << c.what;
    }
    // A value count of 0 with bytes is not walked.
    EXPECT_TRUE(Opened(spoiled(value({'Q', 'Q'}, 0), nullptr)).ok);
}

TEST(FbxFieldStream, ABlockThatFailsToLoadStaysCurrentUntilLeft) {
    FbxBinaryBuilder b;
    b.Begin("Outer");
    b.Begin("Good").Int(1).End();
    b.Begin("Bad").RawValueBytes({'?', 0}).SetValueCount(1).End();
    b.End();
    b.Begin("Next").Int(2).End();
    Opened o(b.Finish());
    ASSERT_TRUE(o.ok);
    FbxFieldStream& s = o.stream;
    ASSERT_TRUE(s.BeginField("Outer"));
    EXPECT_FALSE(s.EnterBlock());
    EXPECT_EQ(o.Code(), FbxStatus::eInvalidFile);
    EXPECT_EQ(s.Depth(), 1);
    EXPECT_EQ(s.NextInt("Good", 0), 1);  // what was read before the fault
    EXPECT_TRUE(s.LeaveBlock());
    s.EndField();
    EXPECT_EQ(s.NextInt("Next", 0), 2);
}

TEST(FbxFieldStream, SectionsComeFromTheTrailers) {
    {
        FbxBinaryBuilder b(7300);
        b.Begin("A").Int(1).End();
        b.Begin("NodeId").String("node").End();
        b.SectionIdentity("2020-01-02 03:04:05:678");
        FbxSectionTail tail = FbxSectionTail::Full();
        tail.trailerVersion = 7301;
        Opened o(b.Finish(tail));
        ASSERT_TRUE(o.ok) << o.Message();
        EXPECT_EQ(o.stream.SectionCount(), 1);
        EXPECT_EQ(o.stream.SectionVersion(0), 7301u);
        ASSERT_NE(o.stream.NodeId(), nullptr);
        EXPECT_STREQ(o.stream.NodeId(), "node");
        EXPECT_EQ(o.stream.CreationTime()[0], 2020);
        EXPECT_EQ(o.stream.CreationTime()[6], 678);
        EXPECT_EQ(o.stream.NextInt("A", 0), 1);
    }
    {
        FbxBinaryBuilder b(7200);
        b.Begin("A").Int(1).End();
        b.SectionIdentity();
        b.NextSection(FbxSectionTail::Full());
        b.Begin("B").Int(2).End();
        b.SectionIdentity();
        FbxSectionTail tail = FbxSectionTail::Full();
        tail.trailerVersion = 0;  // a later section without a version is taken as 4000
        Bytes bytes = b.Finish(tail);
        uint32_t zero = 0;
        std::memcpy(&bytes[bytes.size() - 16 - 124], &zero, 4);
        Opened o(bytes);
        ASSERT_TRUE(o.ok) << o.Message();
        FbxFieldStream& s = o.stream;
        ASSERT_EQ(s.SectionCount(), 2);
        EXPECT_EQ(s.SectionVersion(0), 7200u);
        EXPECT_EQ(s.SectionVersion(1), 4000u);
        EXPECT_EQ(s.NodeId(), nullptr);
        EXPECT_FALSE(s.OpenSection(1));  // one is open
        s.CloseSection();
        EXPECT_EQ(s.CurrentSection(), -1);
        EXPECT_EQ(s.FieldCount(), 0);
        ASSERT_TRUE(s.OpenSection(1)) << o.Message();
        EXPECT_EQ(s.NextInt("B", 0), 2);
        EXPECT_EQ(s.FieldInstanceCount("A"), 0);
        s.CloseSection();
        ASSERT_TRUE(s.OpenSection(0));
        EXPECT_EQ(s.NextInt("A", 0), 1);
        s.CloseSection();
        EXPECT_FALSE(s.OpenSection(2));
        EXPECT_EQ(o.Code(), FbxStatus::eFailure);
    }
}

TEST(FbxFieldStream, SectionCheckNeedsIdAndTimeTogetherWithTheirCode) {
    auto open = [](bool id, bool time, const FbxSectionTail& tail) {
        FbxBinaryBuilder b;
        b.Begin("A").Int(1).End();
        if (id) b.Begin("FileId").Raw(Bytes(16, 7)).End();
        if (time) b.Begin("CreationTime").String("1970-01-01 10:00:00:000").End();
        return std::make_unique<Opened>(b.Finish(tail));
    };
    EXPECT_TRUE(open(true, true, FbxSectionTail::Full())->ok);
    EXPECT_FALSE(open(true, true, FbxSectionTail::None())->ok);  // no section code
    EXPECT_FALSE(open(true, false, FbxSectionTail::Full())->ok);
    EXPECT_FALSE(open(false, true, FbxSectionTail::Full())->ok);
    EXPECT_TRUE(open(false, false, FbxSectionTail::None())->ok);
    // Neither, but bytes behind the last section's null record.
    auto trailing = open(false, false, FbxSectionTail::Full());
    EXPECT_FALSE(trailing->ok);
    EXPECT_EQ(trailing->Code(), FbxStatus::eInvalidFile);
    EXPECT_EQ(trailing->Message(), "File is corrupted (stream)");
    {
        // "Source" stands in for the id.
        FbxBinaryBuilder b;
        b.Begin("Source").String("0123456789abcdef").End();
        b.Begin("CreationTime").String("1970-01-01 10:00:00:000").End();
        EXPECT_TRUE(Opened(b.Finish(FbxSectionTail::Full())).ok);
    }
}

TEST(FbxFieldStream, OpensFilesByPathWithOrWithoutCache) {
    FbxBinaryBuilder b;
    b.Begin("Objects");
    std::vector<double> many(50000);
    for (size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i) * 0.5;
    b.Begin("Big").DoubleArray(many, FbxArrayEncoding::eZlib).DoubleArray(many).End();
    b.Begin("Small").Int(3).End();
    b.End();
    Bytes bytes = WithIdentityAndTrailer(b);
    ScratchDir dir;
    std::string path = dir.write("scene.fbx", std::string(bytes.begin(), bytes.end()));

    uint64_t reference = 0;
    for (uint32_t cache : {0u, 1u, 8u, 64u}) {
        FbxFieldStream s;
        s.SetFbx7Mode(true);
        s.SetCacheSize(cache);
        ASSERT_TRUE(s.OpenFile(path.c_str())) << s.GetStatus().GetErrorString();
        EXPECT_EQ(s.FileBaseName(), "scene.fbx");
        EXPECT_EQ(s.FileDirectory(), dir.path() + "/");
        FbxWalkStats stats = FbxWalkFields(s);
        EXPECT_EQ(stats.arrayBytes, 2 * many.size() * 8);
        if (reference == 0) reference = stats.checksum;
        EXPECT_EQ(stats.checksum, reference) << "cache " << cache;
    }

    // A project folder opens through its project file.
    dir.write("Project.bin", std::string(bytes.begin(), bytes.end()));
    FbxFieldStream s;
    s.SetFbx7Mode(true);
    EXPECT_TRUE(s.OpenFile(dir.path().c_str())) << s.GetStatus().GetErrorString();
    EXPECT_EQ(s.FileBaseName(), "Project.bin");

    std::string missing = dir.file("missing.fbx");
    EXPECT_FALSE(s.OpenFile(missing.c_str()));
    EXPECT_EQ(s.GetStatus().GetErrorString(), "Unable to open file " + missing);
    EXPECT_FALSE(s.IsOpen());
}

TEST(FbxFieldStream, SharedStatusAndReopening) {
    FbxStatus status;
    FbxFieldStream s(&status);
    s.SetFbx7Mode(true);
    FbxMemoryFile bad(Bytes(40, 0));
    EXPECT_FALSE(s.OpenStream(&bad));
    EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);

    FbxBinaryBuilder b;
    b.Begin("A").Int(1).End();
    FbxMemoryFile good(b.Finish());
    ASSERT_TRUE(s.OpenStream(&good, nullptr, false));
    EXPECT_EQ(s.CurrentSection(), -1);
    EXPECT_FALSE(s.BeginField("A"));
    ASSERT_TRUE(s.OpenSection(0));
    EXPECT_EQ(s.NextInt("A", 0), 1);
    s.Close();
    EXPECT_FALSE(s.IsOpen());
    EXPECT_EQ(s.FieldCount(), 0);
    EXPECT_EQ(s.FileVersion(), 7400u);
}

}  // namespace
