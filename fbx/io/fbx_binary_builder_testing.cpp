#include "fbx/io/fbx_binary_builder_testing.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

constexpr unsigned char kMagicOld[20] = {0x4B, 0x61, 0x79, 0x64, 0x61, 0x72, 0x61, 0x20, 0x46, 0x42,
                                         0x58, 0x20, 0x42, 0x69, 0x6E, 0x61, 0x72, 0x79, 0x20, 0x20};
constexpr unsigned char kMagicNew[20] = {0x41, 0x75, 0x74, 0x6F, 0x64, 0x65, 0x73, 0x6B, 0x20, 0x46,
                                         0x42, 0x58, 0x20, 0x42, 0x69, 0x6E, 0x61, 0x72, 0x79, 0x20};
constexpr unsigned char kTrailerMarker[16] = {0xF8, 0x5A, 0x8C, 0x6A, 0xDE, 0xF5, 0xD9, 0x7E,
                                              0xEC, 0xE9, 0x0C, 0xE3, 0x75, 0x8F, 0x29, 0x0B};

void Fail(const char* what) { throw std::logic_error(what); }

}  // namespace

FbxBinaryBuilder::FbxBinaryBuilder(uint32_t version, bool bigEndian, bool olderMagic)
    : version_(version), bigEndian_(bigEndian) {
    // Room for the header up front; it also keeps GCC 12 at -O3 from a false
    // -Wstringop-overflow on the first insert into an empty vector.
    bytes_.reserve(4096);
    PutBytes(olderMagic ? kMagicOld : kMagicNew, 20);
    bytes_.push_back(0x00);
    bytes_.push_back(0x1A);
    bytes_.push_back(bigEndian ? 1 : 0);
    PutU32(version);
    sectionStart_ = bytes_.size();
}

void FbxBinaryBuilder::PutBytes(const void* data, size_t size) {
    const uint8_t* p = static_cast<const uint8_t*>(data);
    bytes_.insert(bytes_.end(), p, p + size);
}

void FbxBinaryBuilder::PutSwapped(const void* data, size_t size) {
    const uint8_t* p = static_cast<const uint8_t*>(data);
    if (!bigEndian_) {
        PutBytes(p, size);
        return;
    }
    for (size_t i = size; i > 0; --i) bytes_.push_back(p[i - 1]);
}

void FbxBinaryBuilder::PutU32(uint32_t value) { PutSwapped(&value, 4); }

void FbxBinaryBuilder::PatchU32(size_t offset, uint32_t value) {
    uint8_t b[4];
    std::memcpy(b, &value, 4);
    for (int i = 0; i < 4; ++i) bytes_.at(offset + static_cast<size_t>(i)) = bigEndian_ ? b[3 - i] : b[i];
}

uint32_t FbxBinaryBuilder::ReadU32(size_t offset) const {
    uint8_t b[4];
    for (int i = 0; i < 4; ++i) b[i] = bytes_.at(offset + static_cast<size_t>(bigEndian_ ? 3 - i : i));
    uint32_t value;
    std::memcpy(&value, b, 4);
    return value;
}

void FbxBinaryBuilder::CloseValues(Open& record) {
    if (record.valuesClosed) return;
    record.valuesClosed = true;
    PatchU32(record.start + 4, record.valueCount);
    PatchU32(record.start + 8, static_cast<uint32_t>(bytes_.size() - record.valuesStart));
}

FbxBinaryBuilder& FbxBinaryBuilder::Begin(std::string_view name) {
    if (name.size() > 255) Fail("record name longer than 255 bytes");
    if (!open_.empty()) {
        CloseValues(open_.back());
        open_.back().hasChildren = true;
    }
    size_t start = bytes_.size();
    lastRecordStart_ = start;
    PutU32(0);
    PutU32(0);
    PutU32(0);
    bytes_.push_back(static_cast<uint8_t>(name.size()));
    PutBytes(name.data(), name.size());
    open_.push_back({start, bytes_.size(), 0, false, false, false});
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::EmptyBlock() {
    if (open_.empty()) Fail("EmptyBlock outside a record");
    CloseValues(open_.back());
    open_.back().hasChildren = true;
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::End() {
    if (open_.empty()) Fail("End without Begin");
    Open record = open_.back();
    open_.pop_back();
    CloseValues(record);
    if (record.hasChildren) bytes_.insert(bytes_.end(), 13, 0);
    PatchU32(record.start, static_cast<uint32_t>(bytes_.size()));
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::Value(char code, const void* data, size_t size) {
    if (open_.empty() || open_.back().valuesClosed) Fail("value outside a record's value list");
    bytes_.push_back(static_cast<uint8_t>(code));
    PutSwapped(data, size);
    if (!open_.back().countOverride) ++open_.back().valueCount;
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::Bool(bool value) {
    uint8_t b = value ? 1 : 0;
    return Value('C', &b, 1);
}
FbxBinaryBuilder& FbxBinaryBuilder::Char(char value) { return Value('C', &value, 1); }
FbxBinaryBuilder& FbxBinaryBuilder::Byte(int8_t value) { return Value('Z', &value, 1); }
FbxBinaryBuilder& FbxBinaryBuilder::Short(int16_t value) { return Value('Y', &value, 2); }
FbxBinaryBuilder& FbxBinaryBuilder::Int(int32_t value) { return Value('I', &value, 4); }
FbxBinaryBuilder& FbxBinaryBuilder::Float(float value) { return Value('F', &value, 4); }
FbxBinaryBuilder& FbxBinaryBuilder::Long(int64_t value) { return Value('L', &value, 8); }
FbxBinaryBuilder& FbxBinaryBuilder::Double(double value) { return Value('D', &value, 8); }

FbxBinaryBuilder& FbxBinaryBuilder::String(std::string_view value) {
    uint32_t length = static_cast<uint32_t>(value.size());
    Value('S', &length, 4);
    PutBytes(value.data(), value.size());
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::Raw(const void* data, size_t size) {
    uint32_t length = static_cast<uint32_t>(size);
    Value('R', &length, 4);
    PutBytes(data, size);
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::ObjectName(std::string_view name, std::string_view klass) {
    std::string text(name);
    text.push_back('\0');
    text.push_back('\x01');
    text.append(klass);
    return String(text);
}

std::vector<uint8_t> FbxBinaryBuilder::Deflate(const void* data, size_t size, int level) {
    uLongf bound = compressBound(static_cast<uLong>(size));
    std::vector<uint8_t> out(bound);
    if (compress2(out.data(), &bound, static_cast<const Bytef*>(data), static_cast<uLong>(size), level) != Z_OK) {
        Fail("compress2 failed");
    }
    out.resize(bound);
    return out;
}

FbxBinaryBuilder& FbxBinaryBuilder::Array(char code, const void* elements, size_t count, size_t elementSize,
                                          FbxArrayEncoding encoding) {
    // Elements in file byte order first, then encoded.
    std::vector<uint8_t> data(count * elementSize);
    const uint8_t* in = static_cast<const uint8_t*>(elements);
    for (size_t i = 0; i < count; ++i) {
        for (size_t j = 0; j < elementSize; ++j) {
            data[i * elementSize + j] = in[i * elementSize + (bigEndian_ ? elementSize - 1 - j : j)];
        }
    }
    if (encoding == FbxArrayEncoding::eZlib) {
        return ArrayWithHeader(code, static_cast<uint32_t>(count), 1,
                               Deflate(data.data(), data.size(), compressionLevel_));
    }
    return ArrayWithHeader(code, static_cast<uint32_t>(count), 0, data);
}

FbxBinaryBuilder& FbxBinaryBuilder::ArrayWithHeader(char code, uint32_t count, uint32_t encoding,
                                                    const std::vector<uint8_t>& data) {
    return ArrayWithHeader(code, count, encoding, static_cast<uint32_t>(data.size()), data);
}

FbxBinaryBuilder& FbxBinaryBuilder::ArrayWithHeader(char code, uint32_t count, uint32_t encoding, uint32_t byteLength,
                                                    const std::vector<uint8_t>& data) {
    Value(code, &count, 4);
    PutU32(encoding);
    PutU32(byteLength);
    PutBytes(data.data(), data.size());
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::BoolArray(const std::vector<bool>& values, FbxArrayEncoding encoding) {
    std::vector<uint8_t> bytes(values.begin(), values.end());
    return Array('b', bytes.data(), bytes.size(), 1, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::ByteArray(const std::vector<uint8_t>& values, FbxArrayEncoding encoding) {
    return Array('c', values.data(), values.size(), 1, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::ShortArray(const std::vector<int16_t>& values, FbxArrayEncoding encoding) {
    return Array('h', values.data(), values.size(), 2, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::IntArray(const std::vector<int32_t>& values, FbxArrayEncoding encoding) {
    return Array('i', values.data(), values.size(), 4, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::FloatArray(const std::vector<float>& values, FbxArrayEncoding encoding) {
    return Array('f', values.data(), values.size(), 4, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::LongArray(const std::vector<int64_t>& values, FbxArrayEncoding encoding) {
    return Array('l', values.data(), values.size(), 8, encoding);
}
FbxBinaryBuilder& FbxBinaryBuilder::DoubleArray(const std::vector<double>& values, FbxArrayEncoding encoding) {
    return Array('d', values.data(), values.size(), 8, encoding);
}

FbxBinaryBuilder& FbxBinaryBuilder::RawValueBytes(const std::vector<uint8_t>& bytes) {
    if (open_.empty() || open_.back().valuesClosed) Fail("value bytes outside a record's value list");
    PutBytes(bytes.data(), bytes.size());
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::SetValueCount(uint32_t count) {
    if (open_.empty()) Fail("SetValueCount outside a record");
    open_.back().valueCount = count;
    open_.back().countOverride = true;
    return *this;
}

FbxBinaryBuilder& FbxBinaryBuilder::SectionIdentity(std::string_view creationTime) {
    static const uint8_t kFileId[16] = {0x28, 0xB3, 0x2A, 0xEB, 0xB6, 0x24, 0xCC, 0xC2,
                                        0xBF, 0xC8, 0xB0, 0x2A, 0xA9, 0x2B, 0xFC, 0xF1};
    Begin("FileId").Raw(kFileId, sizeof kFileId).End();
    Begin("CreationTime").String(creationTime).End();
    return *this;
}

void FbxBinaryBuilder::EndSection(const FbxSectionTail& tail) {
    if (!open_.empty()) Fail("section ended with open records");
    bytes_.insert(bytes_.end(), 13, 0);
    if (tail.sectionCode) PutBytes(tail.code.data(), tail.code.size());
    if (tail.trailer) {
        size_t padding = 16 - bytes_.size() % 16;
        bytes_.insert(bytes_.end(), padding, 0);
        size_t trailerStart = bytes_.size();
        PutU32(firstSection_ ? 0 : static_cast<uint32_t>(trailerStart - sectionStart_));
        PutU32(tail.trailerVersion ? tail.trailerVersion : version_);
        bytes_.insert(bytes_.end(), 120, 0);
        PutBytes(kTrailerMarker, sizeof kTrailerMarker);
    }
}

void FbxBinaryBuilder::NextSection(const FbxSectionTail& tail) {
    EndSection(tail);
    firstSection_ = false;
    sectionStart_ = bytes_.size();
}

std::vector<uint8_t> FbxBinaryBuilder::Finish(const FbxSectionTail& tail) {
    EndSection(tail);
    return std::move(bytes_);
}
