#include "scene/mesh_assembler.h"

#include <unistd.h>

namespace {

constexpr uint64_t kGolden = 0x9E3779B97F4A7C15ull;

uint64_t mix(uint64_t x) {
    x ^= x >> 30;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 27;
    x *= 0x94D049BB133111EBull;
    x ^= x >> 31;
    return x;
}

// Drawn once from the system's entropy; a fixed value when there is none,
// which costs only the protection against crafted collisions.
uint64_t processSalt() {
    static const uint64_t salt = [] {
        uint64_t random = 0;
        if (getentropy(&random, sizeof random) != 0) random = 0;
        return mix(random ^ kGolden);
    }();
    return salt;
}

}  // namespace

uint64_t hashVertexBytes(const void* bytes, size_t size) {
    const auto* p = static_cast<const unsigned char*>(bytes);
    uint64_t h = processSalt() ^ size;
    size_t i = 0;
    // One multiply per word, folding the high half back down; the final mix
    // spreads every input bit over the low bits that pick a slot.
    for (; i + 8 <= size; i += 8) {
        uint64_t word;
        std::memcpy(&word, p + i, 8);
        h = (h ^ word) * kGolden;
        h ^= h >> 32;
    }
    if (i < size) {
        uint64_t word = 0;
        std::memcpy(&word, p + i, size - i);
        h = (h ^ word) * kGolden;
        h ^= h >> 32;
    }
    return mix(h);
}
