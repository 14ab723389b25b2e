#include "tarn/kiva_bytes_testing.h"

namespace tarn::testing {

std::string KivaBytes::string(uint16_t index) const {
    if (index >= count(Strings)) {
        outOfRange_ = true;
        return {};
    }
    const uint64_t row = table(Strings) + 16 * uint64_t{index};
    const uint32_t length = u32(row);
    const uint64_t chars = u64(row + 8);
    if (chars > bytes_.size() || bytes_.size() - chars < uint64_t{length} + 1) {
        outOfRange_ = true;
        return {};
    }
    return std::string(reinterpret_cast<const char*>(bytes_.data() + chars), length);
}

std::string KivaBytes::stringAt(uint64_t fieldOffset) const {
    const uint16_t index = u16(fieldOffset);
    return index == 0xFFFF ? std::string() : string(index);
}

}  // namespace tarn::testing
