#pragma once

// Largest index value in any range of an index buffer, in constant time after
// one pass over the buffer. The reader checks each material group's range of
// indices against its mesh's vertex count with it, so that a file with many
// groups over one large buffer costs a pass over the buffer, not a pass per
// group.

#include <cstdint>
#include <vector>

namespace tarn::kivaread {

class IndexRangeMax {
public:
    // `data` holds `count` little-endian indices of 2 bytes, or of 4 when
    // `wide`; it must stay valid while the object is used.
    IndexRangeMax(const std::uint8_t* data, std::uint64_t count, bool wide);

    // The largest value among indices first .. end - 1; first < end <= count.
    std::uint32_t max(std::uint64_t first, std::uint64_t end) const;
    // The value of index i.
    std::uint32_t value(std::uint64_t i) const;

private:
    static constexpr std::uint64_t kBlock = 256;
    std::uint32_t scan(std::uint64_t first, std::uint64_t end) const;

    const std::uint8_t* data_;
    bool wide_;
    // levels_[k][b]: the largest value in blocks b .. b + 2^k - 1.
    std::vector<std::vector<std::uint32_t>> levels_;
};

}  // namespace tarn::kivaread
