#include "tarn/kiva_builder.h"

#include <algorithm>
#include <vector>

#include "qe/fatal_error.h"
#include "tarn/kiva_builder_index_buffer.h"
#include "tarn/kiva_builder_mesh.h"
#include "tarn/kiva_builder_texture.h"
#include "tarn/kiva_builder_vertex_buffer.h"
#include "tarn/texture_format.h"

namespace tarn {

KivaBuilder::KivaBuilder(KivaContainer* container) : container_(container) {}

KivaBuilder::~KivaBuilder() {
    // Objects that outlive the builder become inert: no factory, no record.
    textures_.forEach([](KivaBuilderTexture& t) { t.unlinkFromBuilder(); });
    vertexBuffers_.forEach([](KivaBuilderVertexBuffer& b) { b.unlinkFromBuilder(); });
    indexBuffers_.forEach([](KivaBuilderIndexBuffer& b) { b.unlinkFromBuilder(); });
    meshes_.forEach([](KivaBuilderMesh& m) { m.unlinkFromBuilder(); });
}

qe::Ref<Texture> KivaBuilder::createTexture(TextureFormat format, int32_t width, int32_t height, int32_t mipCount,
                                            uint32_t /*usage*/, uint8_t srgb) {
    std::vector<KivaBuilderTexture::Level> levels(static_cast<size_t>(std::max(mipCount, 0)), {0, 0});
    uint64_t offset = 0;
    if (format != TextureFormat::Invalid) {
        const TextureFormatInfo& info = textureFormatInfo(format);
        for (size_t i = 0; i < levels.size(); ++i) {
            const int shift = static_cast<int>(std::min<size_t>(i, 31));
            const uint64_t w = static_cast<uint64_t>(std::max(1, width >> shift));
            const uint64_t h = static_cast<uint64_t>(std::max(1, height >> shift));
            const uint64_t pitch = (w + info.blockWidth - 1) / info.blockWidth * info.bytesPerBlock;
            const uint64_t rows = (h + info.blockHeight - 1) / info.blockHeight;
            levels[i] = {offset, pitch};
            offset += pitch * rows;
        }
    }
    TextureRecord* record =
        container_->addTexture(std::string(), static_cast<uint32_t>(format), static_cast<uint32_t>(width),
                               static_cast<uint32_t>(height), static_cast<uint32_t>(mipCount), srgb != 0, offset);
    auto* texture = new KivaBuilderTexture(this, record, std::move(levels));
    textures_.insertBack(*texture);
    return qe::Ref<Texture>(texture);
}

qe::Ref<Texture> KivaBuilder::createCubeTexture(TextureFormat, int32_t, int32_t, uint32_t, uint8_t) {
    qe::fatalError("KivaBuilder does not currently support cube textures");
}

qe::Ref<Texture> KivaBuilder::createVolumeTexture(TextureFormat, int32_t, int32_t, int32_t, int32_t, uint32_t,
                                                  uint8_t) {
    return {};
}

qe::Ref<VertexBuffer> KivaBuilder::createVertexBuffer(VertexFormat format, uint32_t count, uint32_t, uint32_t) {
    const size_t dataSize = static_cast<size_t>(vertexFormatInfo(format).stride) * count;
    BufferRecord* record = container_->addVertexBuffer(static_cast<uint32_t>(format), count, dataSize);
    auto* buffer = new KivaBuilderVertexBuffer(this, record);
    vertexBuffers_.insertBack(*buffer);
    return qe::Ref<VertexBuffer>(buffer);
}

qe::Ref<VertexBuffer> KivaBuilder::createDynamicVertexBuffer(VertexFormat, uint32_t, uint32_t, uint32_t) { return {}; }

qe::Ref<IndexBuffer> KivaBuilder::createIndexBuffer(IndexFormat format, uint32_t count, uint32_t, uint32_t) {
    const size_t dataSize = static_cast<size_t>(indexFormatInfo(format).indexSize) * count;
    BufferRecord* record = container_->addIndexBuffer(static_cast<uint32_t>(format), count, dataSize);
    auto* buffer = new KivaBuilderIndexBuffer(this, record);
    indexBuffers_.insertBack(*buffer);
    return qe::Ref<IndexBuffer>(buffer);
}

qe::Ref<Mesh> KivaBuilder::createMesh(const qe::Ref<VertexBuffer>& vertexBuffer,
                                      const qe::Ref<IndexBuffer>& indexBuffer, const MaterialGroup* groups,
                                      int32_t groupCount) {
    BufferRecord* indexRecord = indexBufferRecordOf(indexBuffer);
    BufferRecord* vertexRecord = vertexBufferRecordOf(vertexBuffer);
    const size_t count = static_cast<size_t>(std::max(groupCount, 0));
    MeshRecord* record = container_->addMesh(vertexRecord, indexRecord, count);
    for (size_t i = 0; i < count; ++i) {
        MaterialGroupRecord& g = record->materialGroups[i];
        g.name = groups[i].name;
        g.material = materialRecordOf(groups[i].material);
        g.firstIndex = groups[i].firstIndex;
        g.primitiveCount = groups[i].primitiveCount;
        g.primitive = groups[i].primitive;
    }
    auto* mesh = new KivaBuilderMesh(this, record, vertexBuffer, indexBuffer,
                                     std::vector<MaterialGroup>(groups, groups + count));
    meshes_.insertBack(*mesh);
    return qe::Ref<Mesh>(mesh);
}

TextureRecord* KivaBuilder::textureRecordOf(const qe::Ref<Texture>& texture) const {
    if (!texture) return nullptr;
    auto* t = dynamic_cast<KivaBuilderTexture*>(texture.get());
    if (!t || t->builder() != this) qe::fatalError("Texture not from this factory");
    return t->record();
}

BufferRecord* KivaBuilder::vertexBufferRecordOf(const qe::Ref<VertexBuffer>& buffer) const {
    if (!buffer) return nullptr;
    auto* b = dynamic_cast<KivaBuilderVertexBuffer*>(buffer.get());
    if (!b || b->builder() != this) qe::fatalError("Vertex buffer not from this factory");
    return b->record();
}

BufferRecord* KivaBuilder::indexBufferRecordOf(const qe::Ref<IndexBuffer>& buffer) const {
    if (!buffer) return nullptr;
    auto* b = dynamic_cast<KivaBuilderIndexBuffer*>(buffer.get());
    if (!b || b->builder() != this) qe::fatalError("Index buffer not from this factory");
    return b->record();
}

MeshRecord* KivaBuilder::meshRecordOf(const qe::Ref<Mesh>& mesh) const {
    if (!mesh) return nullptr;
    auto* m = dynamic_cast<KivaBuilderMesh*>(mesh.get());
    if (!m || m->builder() != this) qe::fatalError("Mesh not from this factory");
    return m->record();
}

MaterialRecord* KivaBuilder::materialRecordOf(const qe::Ref<MaterialData>& material) {
    if (!material) return nullptr;
    auto found = materialRecords_.find(material);
    if (found != materialRecords_.end()) return found->second;
    const MaterialParameters& p = material->parameters();
    MaterialRecord* record = container_->addMaterial(material->shaderName());
    record->vectorParameters.reserve(p.vectors.size());
    for (const auto& [name, value] : p.vectors) record->vectorParameters.push_back({name, value});
    record->textureParameters.reserve(p.textures.size());
    for (const auto& [name, texture] : p.textures)
        record->textureParameters.push_back({name, textureRecordOf(texture)});
    record->matrixParameters.reserve(p.matrices.size());
    for (const auto& [name, value] : p.matrices) record->matrixParameters.push_back({name, value});
    materialRecords_.emplace(material, record);
    return record;
}

}  // namespace tarn
