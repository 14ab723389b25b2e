#pragma once

#include <limits>
#include <vector>

#include "qe/dlist_item.h"
#include "tarn/kiva_container.h"
#include "tarn/mesh.h"

namespace tarn {

class KivaBuilder;

// A mesh of a KivaBuilder. Keeps its buffers and its groups' materials alive.
class KivaBuilderMesh final : public Mesh, public qe::DListItem<KivaBuilderMesh> {
public:
    KivaBuilderMesh(KivaBuilder* factory, MeshRecord* record, qe::Ref<VertexBuffer> vertexBuffer,
                    qe::Ref<IndexBuffer> indexBuffer, std::vector<MaterialGroup> materialGroups)
        : factory_(factory),
          record_(record),
          vertexBuffer_(std::move(vertexBuffer)),
          indexBuffer_(std::move(indexBuffer)),
          materialGroups_(std::move(materialGroups)) {}

    const qe::Ref<VertexBuffer>& vertexBuffer() const override { return vertexBuffer_; }
    const qe::Ref<IndexBuffer>& indexBuffer() const override { return indexBuffer_; }
    const std::vector<MaterialGroup>& materialGroups() const override { return materialGroups_; }
    const BoundingBox& boundingBox() const override { return boundingBox_; }
    const BoundingSphere& boundingSphere() const override { return boundingSphere_; }

    KivaBuilder* builder() const { return factory_; }
    MeshRecord* record() const { return record_; }
    void unlinkFromBuilder() {
        this->unlink();
        factory_ = nullptr;
        record_ = nullptr;
    }

private:
    static constexpr float kInf = std::numeric_limits<float>::infinity();

    KivaBuilder* factory_;
    MeshRecord* record_;
    qe::Ref<VertexBuffer> vertexBuffer_;
    qe::Ref<IndexBuffer> indexBuffer_;
    std::vector<MaterialGroup> materialGroups_;
    // Empty until something sets them; nothing in the file depends on them.
    BoundingBox boundingBox_{{kInf, kInf, kInf}, {-kInf, -kInf, -kInf}};
    BoundingSphere boundingSphere_{{0, 0, 0}, -1.0f};
};

}  // namespace tarn
