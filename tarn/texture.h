#pragma once

#include <cstddef>
#include <cstdint>

#include "qe/counted.h"

namespace tarn {

class TextureFactory;

// A texture of the engine library, made by a TextureFactory and held through
// counted references.
class Texture : public qe::Counted {
public:
    // The factory that made this texture; null once that factory is gone.
    virtual TextureFactory* factory() const = 0;
    virtual uint32_t width() const = 0;
    virtual uint32_t height() const = 0;

    // Copies mip level `level` (below the texture's mip count) from `source`,
    // whose rows lie `sourcePitch` bytes apart (0: tightly packed). For block
    // formats a row is one row of blocks. Only face 0 exists; any other face
    // makes the call do nothing.
    virtual void writeLevel(int32_t level, const void* source, size_t sourcePitch, uint32_t face) = 0;
};

}  // namespace tarn
