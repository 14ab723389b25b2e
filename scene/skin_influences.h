#pragma once

#include <array>
#include <cstdint>
#include <vector>

// One bone's share of a control point.
struct SkinInfluence {
    uint32_t bone = 0;  // position in the model's skeleton
    float weight = 0.0f;
};

// The influences on one control point of a skinned mesh, and the four bone
// and weight bytes a skinned vertex carries.
struct SkinInfluences {
    std::vector<SkinInfluence> influences;  // every positive influence, in the order met
    std::array<uint8_t, 4> bones{};
    std::array<uint8_t, 4> weights{};  // add up to 255 once packed
};
