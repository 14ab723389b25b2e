#pragma once

#include <cstdint>
#include <vector>

#include "tarn/kiva_container.h"
#include "tarn/kiva_limits.h"

namespace tarn {

inline constexpr uint32_t kKivaMagic = 0x4B697661;
inline constexpr uint32_t kKivaVersion = 0x00030000;
inline constexpr uint64_t kKivaNoOffset = 0xFFFFFFFFFFFFFFFFull;
inline constexpr uint16_t kKivaNoIndex = 0xFFFF;

// The bytes of a .kiva file, or the first limit of the format that the
// container passes; then there are no bytes.
struct SerializedKiva {
    std::vector<uint8_t> bytes;
    KivaLimit limit;
};

// The file for everything in `container` that is reachable from its roots
// (named textures, models, animations). Does not change the container. Fails
// with a limit when a table would hold more than 65535 rows or the string
// table more than 65535 distinct names, when a row passes one of the limits
// of kivaLimitOf, or for a name of 2^32 bytes or more.
SerializedKiva serializeKiva(const KivaContainer& container);

}  // namespace tarn
