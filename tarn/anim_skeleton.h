#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "qe/counted.h"

namespace tarn {

// One bone of a skeleton: its local bind transform relative to its parent
// and the inverse of its bind matrix.
struct AnimBone {
    AnimBone() = default;
    AnimBone(std::string name, int32_t parent, const std::array<float, 3>& translation,
             const std::array<float, 4>& rotation, const std::array<float, 9>& scaleShear,
             const std::array<float, 16>& inverseBind)
        : name(std::move(name)),
          parent(parent),
          translation(translation),
          rotation(rotation),
          scaleShear(scaleShear),
          inverseBind(inverseBind) {}

    std::string name;
    int32_t parent = -1;                  // position of the parent in the skeleton; -1 for a root
    std::array<float, 3> translation{};   // local bind translation
    std::array<float, 4> rotation{};      // local bind rotation, quaternion x, y, z, w
    std::array<float, 9> scaleShear{};    // rest of the local 3x3 once the rotation is out, row by row
    std::array<float, 16> inverseBind{};  // inverse of the bone's bind matrix
};

// A skeleton: bones in parent-before-child order. Filled by its maker and
// handed to the container with KivaContainer::addSkeleton.
struct AnimSkeleton : qe::Counted {
    std::vector<AnimBone> bones;
};

}  // namespace tarn
