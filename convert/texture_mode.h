#pragma once

#include <cstdint>

// What happens to textures, chosen by --texture-mode.
enum class TextureMode : uint8_t {
    Include = 0,    // decoded, encoded and stored in the container
    Strip = 1,      // left out of the container
    Reference = 2,  // empty records that only name another .kiva file
};
