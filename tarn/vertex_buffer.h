#pragma once

#include <cstddef>

#include "qe/counted.h"

namespace tarn {

// A buffer of vertices of one format, made by a MeshFactory.
class VertexBuffer : public qe::Counted {
public:
    // Copies into the start of the buffer; bytes beyond its size are dropped.
    virtual void writeData(const void* bytes, size_t size) = 0;
};

}  // namespace tarn
