#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Builds the bytes of a binary FBX file from a description, so that tests,
// benchmarks and fuzz seeds can produce exactly the bytes a case needs.
//
//     FbxBinaryBuilder b(7400);
//     b.Begin("Objects");
//       b.Begin("Geometry").Long(1).ObjectName("Cube", "Geometry").String("Mesh");
//         b.Begin("Vertices").DoubleArray(points, FbxArrayEncoding::eZlib).End();
//       b.End();
//     b.End();
//     std::vector<uint8_t> bytes = b.Finish();
//
// A record is opened with Begin, takes its values, then its nested records,
// and is closed with End. A record with nested records gets its null record
// on End. Finish closes the last section with the requested tail (by default
// none: the file ends behind the top-level null record).
//
// Everything is written in the byte order chosen at construction. The raw
// forms (RawValueBytes, ArrayWithHeader, SetValueCount, PatchU32) exist to
// write malformed files.
enum class FbxArrayEncoding { eRaw, eZlib };

struct FbxSectionTail {
    bool sectionCode = false;     // 16 code bytes behind the null record
    bool trailer = false;         // padding, the 128-byte trailer and its marker
    uint32_t trailerVersion = 0;  // 0 writes the builder's version
    std::array<uint8_t, 16> code{};

    static FbxSectionTail None() { return {}; }
    static FbxSectionTail Full() {
        FbxSectionTail tail;
        tail.sectionCode = true;
        tail.trailer = true;
        return tail;
    }
};

class FbxBinaryBuilder {
public:
    explicit FbxBinaryBuilder(uint32_t version = 7400, bool bigEndian = false, bool olderMagic = false);

    // --- Records ---
    FbxBinaryBuilder& Begin(std::string_view name);
    FbxBinaryBuilder& End();
    // An explicit null record inside the open record: gives it an empty block.
    FbxBinaryBuilder& EmptyBlock();

    // --- Scalar values ---
    FbxBinaryBuilder& Bool(bool value);                    // "C"
    FbxBinaryBuilder& Char(char value);                    // "C"
    FbxBinaryBuilder& Byte(int8_t value);                  // "Z"
    FbxBinaryBuilder& Short(int16_t value);                // "Y"
    FbxBinaryBuilder& Int(int32_t value);                  // "I"
    FbxBinaryBuilder& Float(float value);                  // "F"
    FbxBinaryBuilder& Long(int64_t value);                 // "L"
    FbxBinaryBuilder& Double(double value);                // "D"
    FbxBinaryBuilder& String(std::string_view value);      // "S"
    FbxBinaryBuilder& Raw(const void* data, size_t size);  // "R"
    FbxBinaryBuilder& Raw(const std::vector<uint8_t>& data) { return Raw(data.data(), data.size()); }
    // Two-part object name: name, NUL, 0x01, class word.
    FbxBinaryBuilder& ObjectName(std::string_view name, std::string_view klass);

    // --- Array values ---
    FbxBinaryBuilder& BoolArray(const std::vector<bool>& values, FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& ByteArray(const std::vector<uint8_t>& values, FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& ShortArray(const std::vector<int16_t>& values,
                                 FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& IntArray(const std::vector<int32_t>& values, FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& FloatArray(const std::vector<float>& values, FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& LongArray(const std::vector<int64_t>& values, FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    FbxBinaryBuilder& DoubleArray(const std::vector<double>& values,
                                  FbxArrayEncoding encoding = FbxArrayEncoding::eRaw);
    // Any array: `count` elements of `elementSize` bytes in host order.
    FbxBinaryBuilder& Array(char code, const void* elements, size_t count, size_t elementSize,
                            FbxArrayEncoding encoding);
    // An array value with a header of one's choosing and `data` as it stands.
    FbxBinaryBuilder& ArrayWithHeader(char code, uint32_t count, uint32_t encoding, const std::vector<uint8_t>& data);
    // As ArrayWithHeader, with a byte length word that need not match the data.
    FbxBinaryBuilder& ArrayWithHeader(char code, uint32_t count, uint32_t encoding, uint32_t byteLength,
                                      const std::vector<uint8_t>& data);

    // --- Malformed records ---
    // Bytes appended to the open record's value list, not counted as a value.
    FbxBinaryBuilder& RawValueBytes(const std::vector<uint8_t>& bytes);
    // Overrides the value count written for the open record.
    FbxBinaryBuilder& SetValueCount(uint32_t count);

    // --- Sections and output ---
    // Closes the current section with `tail` and starts another.
    void NextSection(const FbxSectionTail& tail);
    std::vector<uint8_t> Finish(const FbxSectionTail& tail = FbxSectionTail::None());

    // Writes "FileId" (16 bytes) and "CreationTime", which a file with
    // trailers carries.
    FbxBinaryBuilder& SectionIdentity(std::string_view creationTime = "2026-11-22 10:20:30:400");

    // zlib level of the compressed arrays written from here on (6 by default).
    void SetCompressionLevel(int level) { compressionLevel_ = level; }

    size_t Position() const { return bytes_.size(); }
    // Position of the most recently begun record.
    size_t LastRecordStart() const { return lastRecordStart_; }
    void PatchU32(size_t offset, uint32_t value);
    uint32_t ReadU32(size_t offset) const;

    // Compresses with zlib in its own wrapped format.
    static std::vector<uint8_t> Deflate(const void* data, size_t size, int level = 6);

private:
    struct Open {
        size_t start;
        size_t valuesStart;
        uint32_t valueCount;
        bool valuesClosed;
        bool hasChildren;
        bool countOverride;
    };

    void CloseValues(Open& record);
    FbxBinaryBuilder& Value(char code, const void* data, size_t size);
    void PutU32(uint32_t value);
    void PutSwapped(const void* data, size_t size);
    void PutBytes(const void* data, size_t size);
    void EndSection(const FbxSectionTail& tail);

    uint32_t version_;
    bool bigEndian_;
    std::vector<uint8_t> bytes_;
    std::vector<Open> open_;
    size_t sectionStart_;
    bool firstSection_ = true;
    size_t lastRecordStart_ = 0;
    int compressionLevel_ = 6;
};
