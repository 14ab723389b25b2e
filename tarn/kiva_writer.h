#pragma once

#include <cstdint>
#include <vector>

#include "tarn/kiva_container.h"

namespace tarn {

inline constexpr uint32_t kKivaMagic = 0x4B697661;
inline constexpr uint32_t kKivaVersion = 0x00030000;
inline constexpr uint64_t kKivaNoOffset = 0xFFFFFFFFFFFFFFFFull;
inline constexpr uint16_t kKivaNoIndex = 0xFFFF;

// The bytes of the .kiva file for everything in `container` that is reachable
// from its roots (named textures, models, animations). Does not change the
// container. Throws std::runtime_error "too many" when a table or a list in a
// row (bindings, bone maps, groups, parameters, bones, bone names) would
// exceed 65535 entries, "too many strings" for the string table, "string too
// long" for a string of 2^32 bytes or more, and "texture too large" for a
// texture side above 65535.
std::vector<uint8_t> serializeKiva(const KivaContainer& container);

}  // namespace tarn
