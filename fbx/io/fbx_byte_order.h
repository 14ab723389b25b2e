#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// Loads of unaligned little-endian values, byte-swapped when the file is
// big-endian. The reader runs on little-endian machines only.
static_assert(std::endian::native == std::endian::little, "the FBX reader assumes a little-endian host");

inline uint16_t FbxLoadU16(const void* p, bool swap) {
    uint16_t v;
    std::memcpy(&v, p, sizeof v);
    return swap ? __builtin_bswap16(v) : v;
}

inline uint32_t FbxLoadU32(const void* p, bool swap) {
    uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return swap ? __builtin_bswap32(v) : v;
}

inline uint64_t FbxLoadU64(const void* p, bool swap) {
    uint64_t v;
    std::memcpy(&v, p, sizeof v);
    return swap ? __builtin_bswap64(v) : v;
}
