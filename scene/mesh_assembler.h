#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "qe/counted.h"
#include "tarn/material_data.h"
#include "tarn/mesh.h"
#include "tarn/mesh_factory.h"
#include "tarn/vertex_format.h"

// Buffers are filled with the vertices' and indices' bytes as they lie in
// memory, which is the file's byte order only on a little-endian machine.
static_assert(std::endian::native == std::endian::little);

// A hash of a vertex's bytes, salted once per process so that no file can be
// made to collide in the weld table on every run. Nothing in the output
// depends on it: vertices are numbered in the order first met.
uint64_t hashVertexBytes(const void* bytes, size_t size);

// Collects the triangles of one vertex format into meshes of a MeshFactory:
// welds vertices that are equal byte for byte (so +0 and -0 stay apart),
// numbers them in the order first met, keeps 16-bit indices and material
// groups, and completes a mesh whenever another triangle would take the
// index count past 65535. The mesh that follows goes on with the same
// material, from index 0, with a fresh weld table.
//
// Use: setMaterial, then triangles, any number of times; then finish.
template <class Vertex>
class MeshAssembler {
public:
    static constexpr size_t kMaxIndices = 0xFFFF;

    // With multipleGroups false, a change of material or primitive type
    // completes the mesh instead of opening another group.
    MeshAssembler(tarn::MeshFactory* factory, bool multipleGroups)
        : factory_(factory), multipleGroups_(multipleGroups) {}

    // Further triangles are drawn with this material (interned first; an
    // empty one stays empty). A group that has no triangle yet takes it
    // over; so does the current group when the material is the same and not empty.
    void setMaterial(qe::Ref<tarn::MaterialData> material) {
        tarn::internMaterial(material);
        if (groups_.empty()) {
            groups_.emplace_back(std::move(material), 0, 0, tarn::kPrimitiveTriangleList);
            return;
        }
        // Empty materials (materials switched off) stand for slots whose
        // material was left out: each keeps a group of its own.
        const tarn::MaterialGroup& last = groups_.back();
        if (last.primitiveCount != 0 && (!material || !tarn::sameMaterial(last.material.get(), material.get()))) {
            if (multipleGroups_) {
                const uint32_t primitive = last.primitive;
                groups_.emplace_back(std::move(material), indexCount(), 0, primitive);
                return;
            }
            flush();
        }
        groups_.back().material = std::move(material);
    }

    void addTriangle(const Vertex& a, const Vertex& b, const Vertex& c) {
        if (indices_.size() + 3 > kMaxIndices + 1) flush();
        // Triangles before any material are drawn without one.
        if (groups_.empty()) groups_.emplace_back(qe::Ref<tarn::MaterialData>(), 0, 0, tarn::kPrimitiveTriangleList);
        setPrimitiveType(tarn::kPrimitiveTriangleList);
        indices_.push_back(addVertex(a));
        indices_.push_back(addVertex(b));
        indices_.push_back(addVertex(c));
        groups_.back().primitiveCount += 1;
    }

    // Completes the mesh under construction, unless nothing was collected.
    void flush() {
        if (groups_.empty() || (groups_.size() == 1 && groups_[0].primitiveCount == 0)) return;
        qe::Ref<tarn::MaterialData> material = groups_.back().material;
        qe::Ref<tarn::VertexBuffer> vertexBuffer = factory_->createVertexBuffer(
            Vertex::kFormat, static_cast<uint32_t>(vertices_.size()), kUsage[0], kUsage[1]);
        vertexBuffer->writeData(vertices_.data(), vertices_.size() * sizeof(Vertex));
        qe::Ref<tarn::IndexBuffer> indexBuffer =
            factory_->createIndexBuffer(tarn::IF_UInt16, static_cast<uint32_t>(indices_.size()), kUsage[0], kUsage[1]);
        indexBuffer->writeData(indices_.data(), indices_.size() * sizeof(uint16_t));
        meshes_.push_back(
            factory_->createMesh(vertexBuffer, indexBuffer, groups_.data(), static_cast<int32_t>(groups_.size())));
        vertices_.clear();
        weld_.clear();
        indices_.clear();
        groups_.clear();
        groups_.emplace_back(std::move(material), 0, 0, tarn::kPrimitiveTriangleList);
    }

    // Completes the mesh under construction and appends every mesh made, in
    // order, to `out`.
    void finish(std::vector<qe::Ref<tarn::Mesh>>& out) {
        flush();
        for (qe::Ref<tarn::Mesh>& mesh : meshes_) out.push_back(std::move(mesh));
        meshes_.clear();
    }

private:
    // The usage words of every buffer made here.
    static constexpr uint32_t kUsage[2] = {0, 0};

    // Open addressing over the positions in `vertices_`: a slot holds the
    // position in its low 16 bits and 16 more bits of the hash above them,
    // so that most misses need no comparison of whole vertices. At most
    // half the slots are used.
    class WeldTable {
    public:
        // The position of the vertex equal to `v`, or `next` after entering
        // `v` there (the caller then appends it).
        uint16_t find(const Vertex& v, const std::vector<Vertex>& vertices, uint16_t next) {
            if ((size_t(next) + 1) * 2 > slots_.size()) grow(vertices);
            const uint64_t hash = hashVertexBytes(&v, sizeof(Vertex));
            const uint32_t tag = static_cast<uint32_t>(hash >> 48) << 16;
            const size_t mask = slots_.size() - 1;
            for (size_t i = static_cast<size_t>(hash) & mask;; i = (i + 1) & mask) {
                const uint32_t slot = slots_[i];
                if (slot == kEmpty) {
                    slots_[i] = tag | next;
                    return next;
                }
                if ((slot & 0xFFFF0000u) == tag && std::memcmp(&vertices[slot & 0xFFFFu], &v, sizeof(Vertex)) == 0)
                    return static_cast<uint16_t>(slot & 0xFFFFu);
            }
        }
        void clear() { std::fill(slots_.begin(), slots_.end(), kEmpty); }

    private:
        // Positions stay below 0xFFFF, so no used slot equals this.
        static constexpr uint32_t kEmpty = 0xFFFFFFFFu;

        void grow(const std::vector<Vertex>& vertices) {
            slots_.assign(slots_.empty() ? 64 : slots_.size() * 2, kEmpty);
            const size_t mask = slots_.size() - 1;
            for (size_t n = 0; n < vertices.size(); ++n) {
                const uint64_t hash = hashVertexBytes(&vertices[n], sizeof(Vertex));
                size_t i = static_cast<size_t>(hash) & mask;
                while (slots_[i] != kEmpty) i = (i + 1) & mask;
                slots_[i] = (static_cast<uint32_t>(hash >> 48) << 16) | static_cast<uint32_t>(n);
            }
        }

        std::vector<uint32_t> slots_;
    };

    uint32_t indexCount() const { return static_cast<uint32_t>(indices_.size()); }

    uint16_t addVertex(const Vertex& v) {
        const uint16_t next = static_cast<uint16_t>(vertices_.size());
        const uint16_t found = weld_.find(v, vertices_, next);
        if (found == next) vertices_.push_back(v);
        return found;
    }

    void setPrimitiveType(uint32_t type) {
        tarn::MaterialGroup& last = groups_.back();
        if (last.primitive == type) return;
        if (last.primitiveCount == 0) {
            last.primitive = type;
        } else if (multipleGroups_) {
            qe::Ref<tarn::MaterialData> material = last.material;
            groups_.emplace_back(std::move(material), indexCount(), 0, type);
        } else {
            flush();
            groups_.back().primitive = type;
        }
    }

    tarn::MeshFactory* factory_;
    bool multipleGroups_;
    std::vector<Vertex> vertices_;  // welded, in the order first met
    WeldTable weld_;
    std::vector<uint16_t> indices_;
    std::vector<tarn::MaterialGroup> groups_;  // the last one is being filled
    std::vector<qe::Ref<tarn::Mesh>> meshes_;  // completed, in order
};
