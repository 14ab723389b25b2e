#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "qe/counted.h"

namespace tarn {

// A bone's local transform in one frame.
struct AnimTransform {
    std::array<float, 3> translation;
    std::array<float, 4> rotation;  // quaternion x, y, z, w
};

// A baked animation: one transform per bone per frame, frame-major. Bound to
// skeletons by bone name only.
struct Animation : qe::Counted {
    // Sizes transforms to frameCount * boneNames.size() elements, which the
    // caller then writes; they are not cleared.
    Animation(std::string name, std::vector<std::string> boneNames, int32_t frameCount,
              uint32_t framesPerSecondNumerator, uint32_t framesPerSecondDenominator);

    // The transform of bone `bone` in frame `frame`.
    AnimTransform& at(size_t frame, size_t bone) { return transforms[boneNames.size() * frame + bone]; }

    std::string name;
    std::vector<std::string> boneNames;  // a bone's position here is its channel number
    int32_t frameCount;
    uint32_t framesPerSecondNumerator;
    uint32_t framesPerSecondDenominator;
    std::vector<AnimTransform> transforms;
};

}  // namespace tarn
