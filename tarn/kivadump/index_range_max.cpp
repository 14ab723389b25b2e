#include "tarn/kivadump/index_range_max.h"

#include <algorithm>
#include <bit>

namespace tarn::kivaread {

IndexRangeMax::IndexRangeMax(const std::uint8_t* data, std::uint64_t count, bool wide) : data_(data), wide_(wide) {
    const std::uint64_t blocks = count / kBlock;
    if (blocks == 0) return;
    levels_.emplace_back(blocks);
    for (std::uint64_t b = 0; b < blocks; ++b) levels_[0][b] = scan(b * kBlock, (b + 1) * kBlock);
    for (std::uint64_t span = 2; span <= blocks; span *= 2) {
        const std::vector<std::uint32_t>& below = levels_.back();
        std::vector<std::uint32_t> level(blocks - span + 1);
        for (std::uint64_t b = 0; b < level.size(); ++b) level[b] = std::max(below[b], below[b + span / 2]);
        levels_.push_back(std::move(level));
    }
}

std::uint32_t IndexRangeMax::value(std::uint64_t i) const {
    if (wide_) {
        const std::uint8_t* p = data_ + 4 * i;
        return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
    }
    const std::uint8_t* p = data_ + 2 * i;
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8;
}

std::uint32_t IndexRangeMax::scan(std::uint64_t first, std::uint64_t end) const {
    std::uint32_t result = 0;
    for (std::uint64_t i = first; i < end; ++i) result = std::max(result, value(i));
    return result;
}

std::uint32_t IndexRangeMax::max(std::uint64_t first, std::uint64_t end) const {
    const std::uint64_t firstBlock = (first + kBlock - 1) / kBlock;
    const std::uint64_t endBlock = end / kBlock;
    if (firstBlock >= endBlock) return scan(first, end);
    std::uint32_t result = std::max(scan(first, firstBlock * kBlock), scan(endBlock * kBlock, end));
    const int k = std::bit_width(endBlock - firstBlock) - 1;
    const std::vector<std::uint32_t>& level = levels_[k];
    return std::max({result, level[firstBlock], level[endBlock - (std::uint64_t(1) << k)]});
}

}  // namespace tarn::kivaread
