#include "image/halve.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(Halve, AveragesTruncateAndRepeatedHalvingAccumulates) {
    std::vector<uint8_t> p = {0, 0, 0, 0, 255, 255, 255, 255, 1, 1, 1, 1, 1, 1, 1, 1};
    // A 4 by 1 image: (0,255) -> 127, (1,1) -> 1.
    int32_t w = 4;
    halveWidth(p.data(), w, 1);
    EXPECT_EQ(w, 2);
    EXPECT_EQ(std::vector<uint8_t>(p.begin(), p.begin() + 8), (std::vector<uint8_t>{127, 127, 127, 127, 1, 1, 1, 1}));
    halveWidth(p.data(), w, 1);
    EXPECT_EQ(w, 1);
    EXPECT_EQ(std::vector<uint8_t>(p.begin(), p.begin() + 4), (std::vector<uint8_t>{64, 64, 64, 64}));
}

TEST(Halve, OddSidesDropTheLastColumnOrRow) {
    // 3 by 2: each row yields one pixel from its first two.
    std::vector<uint8_t> p = {10, 20, 30, 40, 12, 22, 32, 42, 200, 200, 200, 200,
                              0,  1,  2,  3,  5,  6,  7,  9,  99,  99,  99,  99};
    int32_t w = 3;
    halveWidth(p.data(), w, 2);
    EXPECT_EQ(w, 1);
    EXPECT_EQ(std::vector<uint8_t>(p.begin(), p.begin() + 8), (std::vector<uint8_t>{11, 21, 31, 41, 2, 3, 4, 6}));
    // 2 by 3 -> 2 by 1 from rows 0 and 1; then to 0 rows: nothing computed.
    p = {0, 0, 0, 0, 100, 100, 100, 100, 2, 4, 6, 255, 50, 50, 50, 50, 9, 9, 9, 9, 9, 9, 9, 9};
    int32_t h = 3;
    halveHeight(p.data(), 2, h);
    EXPECT_EQ(h, 1);
    EXPECT_EQ(std::vector<uint8_t>(p.begin(), p.begin() + 8), (std::vector<uint8_t>{1, 2, 3, 127, 75, 75, 75, 75}));
    halveHeight(p.data(), 2, h);
    EXPECT_EQ(h, 0);
    EXPECT_EQ(p[0], 1);
}

}  // namespace
