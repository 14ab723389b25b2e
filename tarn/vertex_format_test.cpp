#include "tarn/vertex_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace tarn {
namespace {

// Every attribute of every vertex format lies inside the stride, next to
// the others without gap or overlap, so that a typo in the table shows.
TEST(VertexFormat, AttributesTileTheStride) {
    for (uint32_t value = 0; value < kVertexFormatCount; ++value) {
        const auto format = static_cast<VertexFormat>(value);
        const VertexFormatInfo& info = vertexFormatInfo(format);
        if (format == VertexFormat::Matrix) {
            EXPECT_EQ(info.stride, 64);
            continue;
        }
        const int colorWidth = format == VertexFormat::Position3Color8fTexCoord6 ? 16 : 4;
        const std::pair<int32_t, int> attributes[] = {
            {info.position, 12},   {info.weights, 4},     {info.bones, 4},          {info.normal, 12},
            {info.tangent, 12},    {info.binormal, 12},   {info.color, colorWidth}, {info.color2, colorWidth},
            {info.texCoord[0], 8}, {info.texCoord[1], 8}, {info.texCoord[2], 8}};
        std::vector<std::pair<int32_t, int>> present;
        for (const auto& a : attributes)
            if (a.first >= 0) present.push_back(a);
        std::sort(present.begin(), present.end());
        int32_t end = 0;
        for (const auto& [offset, width] : present) {
            EXPECT_EQ(offset, end) << info.name;
            end = offset + width;
        }
        EXPECT_EQ(end, info.stride) << info.name;
    }
}

}  // namespace
}  // namespace tarn
