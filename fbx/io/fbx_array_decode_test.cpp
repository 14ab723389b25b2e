#include "fbx/io/fbx_array_decode.h"

#include "fbx/io/fbx_binary_builder_testing.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::vector<uint8_t> Header(uint32_t count, uint32_t encoding, const std::vector<uint8_t>& data) {
    uint32_t length = static_cast<uint32_t>(data.size());
    std::vector<uint8_t> value(12 + data.size());
    std::memcpy(&value[0], &count, 4);
    std::memcpy(&value[4], &encoding, 4);
    std::memcpy(&value[8], &length, 4);
    if (!data.empty()) std::memcpy(&value[12], data.data(), data.size());
    return value;
}

// A count that claims far more than the data holds must not cost its memory.
TEST(FbxArrayDecode, ClaimedCountsAreNotAllocatedBeforeTheDataProvesThem) {
    std::vector<uint8_t> small(1000, 1);
    std::vector<uint8_t> packed = FbxBinaryBuilder::Deflate(small.data(), small.size());
    std::vector<uint8_t> value = Header(0xFFFFFFFFu, 1, packed);
    FbxByteBuffer out;
    EXPECT_EQ(FbxDecodeArray(value.data(), value.size(), 4, false, false, out), 0u);
    EXPECT_LE(out.Capacity(), 1u << 20);

    // Data that does inflate to a large array grows into it.
    std::vector<uint8_t> zeros(8u << 20, 0);
    packed = FbxBinaryBuilder::Deflate(zeros.data(), zeros.size(), 9);
    value = Header(static_cast<uint32_t>(zeros.size() / 8), 1, packed);
    EXPECT_EQ(FbxDecodeArray(value.data(), value.size(), 8, false, false, out), zeros.size() / 8);
    EXPECT_EQ(out.Size(), zeros.size());
    EXPECT_EQ(out.Data()[zeros.size() - 1], 0);
}

TEST(FbxArrayDecode, HeadersThatPassTheValueListAreRefused) {
    std::vector<uint8_t> data(8, 1);
    std::vector<uint8_t> value = Header(2, 0, data);
    FbxByteBuffer out;
    EXPECT_EQ(FbxDecodeArray(value.data(), value.size(), 4, false, false, out), 2u);
    EXPECT_EQ(FbxDecodeArray(value.data(), value.size() - 1, 4, false, false, out), 0u);
    EXPECT_EQ(FbxDecodeArray(value.data(), 11, 4, false, false, out), 0u);
}

}  // namespace
