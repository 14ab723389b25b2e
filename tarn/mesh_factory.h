#pragma once

#include <cstdint>

#include "qe/counted.h"
#include "tarn/index_buffer.h"
#include "tarn/mesh.h"
#include "tarn/vertex_buffer.h"
#include "tarn/vertex_format.h"

namespace tarn {

// Creates geometry. Results carry one reference taken for the caller; the
// usage words are hints that a factory may ignore.
class MeshFactory {
public:
    virtual ~MeshFactory() = default;

    virtual qe::Ref<VertexBuffer> createVertexBuffer(VertexFormat format, uint32_t count, uint32_t usage,
                                                     uint32_t usage2) = 0;
    // A vertex buffer that is rewritten every frame.
    virtual qe::Ref<VertexBuffer> createDynamicVertexBuffer(VertexFormat format, uint32_t count, uint32_t usage,
                                                            uint32_t usage2) = 0;
    virtual qe::Ref<IndexBuffer> createIndexBuffer(IndexFormat format, uint32_t count, uint32_t usage,
                                                   uint32_t usage2) = 0;
    virtual qe::Ref<Mesh> createMesh(const qe::Ref<VertexBuffer>& vertexBuffer, const qe::Ref<IndexBuffer>& indexBuffer,
                                     const MaterialGroup* groups, int32_t groupCount) = 0;
};

}  // namespace tarn
