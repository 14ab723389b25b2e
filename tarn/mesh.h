#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "qe/counted.h"
#include "tarn/index_buffer.h"
#include "tarn/material_data.h"
#include "tarn/vertex_buffer.h"

namespace tarn {

// A range of an index buffer drawn with one material.
struct MaterialGroup {
    MaterialGroup() = default;
    MaterialGroup(qe::Ref<MaterialData> material, uint32_t firstIndex, uint32_t primitiveCount, uint32_t primitive)
        : material(std::move(material)), firstIndex(firstIndex), primitiveCount(primitiveCount), primitive(primitive) {}

    std::string name;
    qe::Ref<MaterialData> material;
    uint32_t firstIndex = 0;      // counted in indices
    uint32_t primitiveCount = 0;  // triangles, not indices, for a triangle list
    uint32_t primitive = 0;       // primitive type (kPrimitiveTriangleList)
};

struct BoundingBox {
    std::array<float, 3> min;
    std::array<float, 3> max;
};

struct BoundingSphere {
    std::array<float, 3> center;
    float radius;
};

// A vertex buffer and an index buffer split into material groups.
class Mesh : public qe::Counted {
public:
    virtual const qe::Ref<VertexBuffer>& vertexBuffer() const = 0;
    virtual const qe::Ref<IndexBuffer>& indexBuffer() const = 0;
    virtual const std::vector<MaterialGroup>& materialGroups() const = 0;
    virtual const BoundingBox& boundingBox() const = 0;
    virtual const BoundingSphere& boundingSphere() const = 0;
};

}  // namespace tarn
