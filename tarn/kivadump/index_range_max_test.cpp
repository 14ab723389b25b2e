#include "tarn/kivadump/index_range_max.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tarn::kivaread {
namespace {

// Every kind of range (inside one block, across block edges, many blocks)
// gives the same maximum as a plain scan, for both index widths.
TEST(IndexRangeMaxTest, MatchesAPlainScan) {
    std::mt19937 random(5);
    for (bool wide : {false, true}) {
        for (std::uint64_t count : {1u, 255u, 256u, 257u, 1000u, 5000u}) {
            std::vector<std::uint32_t> values(count);
            std::vector<std::uint8_t> bytes(count * (wide ? 4 : 2));
            for (std::uint64_t i = 0; i < count; ++i) {
                values[i] = wide ? std::uint32_t(random()) : std::uint32_t(random() & 0xFFFF);
                for (int b = 0; b < (wide ? 4 : 2); ++b)
                    bytes[i * (wide ? 4 : 2) + b] = std::uint8_t(values[i] >> (8 * b));
            }
            const IndexRangeMax ranges(bytes.data(), count, wide);
            for (int trial = 0; trial < 300; ++trial) {
                std::uint64_t first = random() % count, end = random() % count + 1;
                if (trial == 0) first = 0, end = count;
                if (first >= end) std::swap(first, end), ++end;
                if (end > count) end = count;
                if (first >= end) continue;
                const std::uint32_t expected = *std::max_element(values.begin() + first, values.begin() + end);
                ASSERT_EQ(ranges.max(first, end), expected) << wide << " " << count << " " << first << ".." << end;
            }
            EXPECT_EQ(ranges.value(count - 1), values[count - 1]);
        }
    }
}

}  // namespace
}  // namespace tarn::kivaread
