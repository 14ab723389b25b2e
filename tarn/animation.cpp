#include "tarn/animation.h"

namespace tarn {

Animation::Animation(std::string name, std::vector<std::string> boneNames, int32_t frameCount,
                     uint32_t framesPerSecondNumerator, uint32_t framesPerSecondDenominator)
    : name(std::move(name)),
      boneNames(std::move(boneNames)),
      frameCount(frameCount),
      framesPerSecondNumerator(framesPerSecondNumerator),
      framesPerSecondDenominator(framesPerSecondDenominator) {
    // The caller writes every element; they start as zeros so that a
    // forgotten one still gives the same bytes on every run.
    transforms.resize(static_cast<size_t>(frameCount > 0 ? frameCount : 0) * this->boneNames.size());
}

}  // namespace tarn
