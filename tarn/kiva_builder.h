#pragma once

#include <cstdint>
#include <unordered_map>

#include "qe/counted.h"
#include "qe/dlist_item.h"
#include "tarn/kiva_container.h"
#include "tarn/material_data.h"
#include "tarn/mesh_factory.h"
#include "tarn/texture_factory.h"

namespace tarn {

class KivaBuilderTexture;
class KivaBuilderVertexBuffer;
class KivaBuilderIndexBuffer;
class KivaBuilderMesh;

// Creates textures, buffers and meshes as records of one KivaContainer. The
// container must outlive the builder. Objects that outlive the builder are
// cut loose from it and must not be written any more.
class KivaBuilder : public TextureFactory, public MeshFactory {
public:
    explicit KivaBuilder(KivaContainer* container);
    KivaBuilder(const KivaBuilder&) = delete;
    KivaBuilder& operator=(const KivaBuilder&) = delete;
    ~KivaBuilder() override;

    KivaContainer* container() const { return container_; }

    qe::Ref<Texture> createTexture(TextureFormat format, int32_t width, int32_t height, int32_t mipCount,
                                   uint32_t usage, uint8_t srgb) override;
    // Not supported: stops the program.
    qe::Ref<Texture> createCubeTexture(TextureFormat format, int32_t size, int32_t mipCount, uint32_t usage,
                                       uint8_t srgb) override;
    // Not supported: gives an empty handle.
    qe::Ref<Texture> createVolumeTexture(TextureFormat format, int32_t width, int32_t height, int32_t depth,
                                         int32_t mipCount, uint32_t usage, uint8_t srgb) override;

    qe::Ref<VertexBuffer> createVertexBuffer(VertexFormat format, uint32_t count, uint32_t usage,
                                             uint32_t usage2) override;
    // Not supported: gives an empty handle.
    qe::Ref<VertexBuffer> createDynamicVertexBuffer(VertexFormat format, uint32_t count, uint32_t usage,
                                                    uint32_t usage2) override;
    qe::Ref<IndexBuffer> createIndexBuffer(IndexFormat format, uint32_t count, uint32_t usage,
                                           uint32_t usage2) override;
    qe::Ref<Mesh> createMesh(const qe::Ref<VertexBuffer>& vertexBuffer, const qe::Ref<IndexBuffer>& indexBuffer,
                             const MaterialGroup* groups, int32_t groupCount) override;

    // The record behind a handle of this builder; null for an empty handle.
    // A handle of another builder or class stops the program.
    TextureRecord* textureRecordOf(const qe::Ref<Texture>& texture) const;
    BufferRecord* vertexBufferRecordOf(const qe::Ref<VertexBuffer>& buffer) const;
    BufferRecord* indexBufferRecordOf(const qe::Ref<IndexBuffer>& buffer) const;
    MeshRecord* meshRecordOf(const qe::Ref<Mesh>& mesh) const;

    // The one record of all materials equal to this one; null for an empty
    // handle.
    MaterialRecord* materialRecordOf(const qe::Ref<MaterialData>& material);

    // Shorthands for the container's own.
    SkeletonRecord* addSkeleton(qe::Ref<AnimSkeleton> skeleton) { return container_->addSkeleton(std::move(skeleton)); }
    AnimationRecord* addAnimation(qe::Ref<Animation> animation) {
        return container_->addAnimation(std::move(animation));
    }

private:
    struct MaterialHash {
        size_t operator()(const qe::Ref<MaterialData>& m) const { return static_cast<size_t>(m->valueHash()); }
    };
    struct MaterialEqual {
        bool operator()(const qe::Ref<MaterialData>& a, const qe::Ref<MaterialData>& b) const {
            return sameMaterial(a.get(), b.get());
        }
    };

    KivaContainer* container_;
    qe::DListItem<KivaBuilderTexture> textures_;
    qe::DListItem<KivaBuilderVertexBuffer> vertexBuffers_;
    qe::DListItem<KivaBuilderIndexBuffer> indexBuffers_;
    qe::DListItem<KivaBuilderMesh> meshes_;
    std::unordered_map<qe::Ref<MaterialData>, MaterialRecord*, MaterialHash, MaterialEqual> materialRecords_;
};

}  // namespace tarn
