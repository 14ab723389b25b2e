#pragma once

#include <cstddef>

#include "qe/counted.h"

namespace tarn {

// A buffer of 16- or 32-bit indices, made by a MeshFactory.
class IndexBuffer : public qe::Counted {
public:
    // Copies into the start of the buffer; bytes beyond its size are dropped.
    virtual void writeData(const void* bytes, size_t size) = 0;
};

}  // namespace tarn
