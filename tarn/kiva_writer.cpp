#include "tarn/kiva_writer.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "tarn/kiva_arena.h"

namespace tarn {

static_assert(std::endian::native == std::endian::little, "the writer stores numbers in host byte order");
static_assert(sizeof(AnimTransform) == 28, "transforms are copied as they lie in memory");

namespace {

// Positions of the tables in the header's count and offset arrays.
enum HeaderSlot {
    kStrings,
    kTextures,
    kVertexBuffers,
    kIndexBuffers,
    kMaterials,
    kMeshes,
    kSkeletons,
    kModels,
    kAnimations
};

constexpr uint64_t kHeaderSize = 104;

void put8(uint8_t* p, uint8_t v) { *p = v; }
void put16(uint8_t* p, uint16_t v) { std::memcpy(p, &v, 2); }
void put32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }
void put64(uint8_t* p, uint64_t v) { std::memcpy(p, &v, 8); }
void putBytes(uint8_t* p, const void* data, size_t size) {
    if (size > 0) std::memcpy(p, data, size);
}

// A sub-list's 16-bit count; each row's lists were checked with kivaLimitOf
// before it is written.
uint16_t count16(size_t count) { return static_cast<uint16_t>(count); }

// Record address to row index, with the records in index order.
template <class T>
struct IndexMap {
    explicit IndexMap(const char* what) : what(what) {}
    const char* what;  // the table's rows, for the limit's message
    std::unordered_map<const T*, uint16_t> index;
    std::vector<const T*> rows;
};

class KivaWriter {
public:
    explicit KivaWriter(const KivaContainer& container) : container_(container) {}

    SerializedKiva run() {
        for (const auto& t : container_.textures())
            if (!t->name.empty()) objectIndex(t.get(), textures_);
        for (const auto& m : container_.models()) objectIndex(m.get(), models_);
        for (const auto& a : container_.animations()) objectIndex(a.get(), animations_);

        header_ = arena_.allocate(kHeaderSize);
        put32(arena_.at(header_), kKivaMagic);
        put32(arena_.at(header_) + 4, kKivaVersion);
        // A step that passes a limit ends the run; what it wrote is dropped.
        if (!limit_) writeModels();
        if (!limit_) writeMeshes();
        if (!limit_) writeMaterials();
        if (!limit_) writeTextures();
        if (!limit_) writeBuffers(vertexBuffers_, kVertexBuffers);
        if (!limit_) writeBuffers(indexBuffers_, kIndexBuffers);
        if (!limit_) writeSkeletons();
        if (!limit_) writeAnimations();
        if (!limit_) writeStrings();
        if (limit_) return {{}, std::move(limit_)};
        return {arena_.bytes(), {}};
    }

private:
    // Keeps the first limit passed; false.
    bool fail(KivaLimit limit) {
        if (!limit_) limit_ = std::move(limit);
        return false;
    }
    // Whether a row is within the limits; keeps the limit when it is not.
    bool fits(KivaLimit limit) { return limit ? fail(std::move(limit)) : true; }

    template <class T>
    uint16_t objectIndex(const T* record, IndexMap<T>& map) {
        if (!record) return kKivaNoIndex;
        auto found = map.index.find(record);
        if (found != map.index.end()) return found->second;
        if (map.rows.size() >= kKivaMaxRows) {
            fail(tooMany(std::string(map.what) + " in one container"));
            return kKivaNoIndex;
        }
        const auto index = static_cast<uint16_t>(map.rows.size());
        map.index.emplace(record, index);
        map.rows.push_back(record);
        return index;
    }

    uint16_t stringIndex(const std::string& text) {
        if (text.empty()) return kKivaNoIndex;
        auto found = stringIndex_.find(text);
        if (found != stringIndex_.end()) return found->second;
        if (strings_.size() >= kKivaMaxRows) {
            fail(tooMany("distinct names in one container"));
            return kKivaNoIndex;
        }
        if (text.size() > kKivaMaxStringBytes) {
            fail({"a name of " + std::to_string(text.size()) + " bytes is too long (at most " +
                  std::to_string(kKivaMaxStringBytes) + ")"});
            return kKivaNoIndex;
        }
        const auto index = static_cast<uint16_t>(strings_.size());
        stringIndex_.emplace(text, index);
        strings_.push_back(text);
        return index;
    }

    // Allocates a table of count rows and enters it in the header; 0 rows
    // allocate nothing and leave the offset at "none".
    uint64_t table(HeaderSlot slot, size_t count, uint64_t rowSize) {
        uint8_t* header = arena_.at(header_);
        put16(header + 8 + 2 * slot, static_cast<uint16_t>(count));
        if (count == 0) {
            put64(header + 32 + 8 * slot, kKivaNoOffset);
            return kKivaNoOffset;
        }
        const uint64_t offset = arena_.allocate(count * rowSize);
        put64(header + 32 + 8 * slot, offset);
        return offset;
    }

    // A payload of size bytes, or "none" when empty.
    uint64_t payload(uint64_t size) { return size == 0 ? kKivaNoOffset : arena_.allocate(size); }

    void writeModels() {
        const size_t count = models_.rows.size();
        const uint64_t base = table(kModels, count, 80);
        for (size_t i = 0; i < count; ++i) {
            const ModelRecord& model = *models_.rows[i];
            if (!fits(kivaLimitOf(model))) return;
            uint8_t* row = arena_.at(base + 80 * i);
            put16(row, stringIndex(model.name));
            put16(row + 2, objectIndex(model.skeleton, skeletons_));
            put16(row + 4, count16(model.meshBindings.size()));
            putBytes(row + 8, model.matrix.data(), 64);
            const uint64_t bindings = payload(80 * model.meshBindings.size());
            put64(row + 72, bindings);
            for (size_t b = 0; b < model.meshBindings.size(); ++b) {
                const MeshBinding& binding = model.meshBindings[b];
                uint8_t* entry = arena_.at(bindings + 80 * b);
                put16(entry, stringIndex(binding.name));
                put16(entry + 2, objectIndex(binding.mesh, meshes_));
                put16(entry + 4, count16(binding.boneMap.size()));
                putBytes(entry + 8, binding.matrix.data(), 64);
                const uint64_t map = payload(2 * binding.boneMap.size());
                put64(entry + 72, map);
                if (map == kKivaNoOffset) continue;
                uint8_t* out = arena_.at(map);
                for (size_t k = 0; k < binding.boneMap.size(); ++k)
                    put16(out + 2 * k, static_cast<uint16_t>(binding.boneMap[k]));
            }
        }
    }

    void writeMeshes() {
        const size_t count = meshes_.rows.size();
        const uint64_t base = table(kMeshes, count, 16);
        for (size_t i = 0; i < count; ++i) {
            const MeshRecord& mesh = *meshes_.rows[i];
            if (!fits(kivaLimitOf(mesh))) return;
            uint8_t* row = arena_.at(base + 16 * i);
            put16(row, objectIndex(mesh.vertexBuffer, vertexBuffers_));
            put16(row + 2, objectIndex(mesh.indexBuffer, indexBuffers_));
            put16(row + 4, count16(mesh.materialGroups.size()));
            const uint64_t groups = payload(16 * mesh.materialGroups.size());
            put64(row + 8, groups);
            for (size_t g = 0; g < mesh.materialGroups.size(); ++g) {
                const MaterialGroupRecord& group = mesh.materialGroups[g];
                uint8_t* entry = arena_.at(groups + 16 * g);
                put16(entry, stringIndex(group.name));
                put16(entry + 2, objectIndex(group.material, materials_));
                put32(entry + 4, group.firstIndex);
                put32(entry + 8, group.primitiveCount);
                put8(entry + 12, static_cast<uint8_t>(group.primitive));
            }
        }
    }

    void writeMaterials() {
        const size_t count = materials_.rows.size();
        const uint64_t base = table(kMaterials, count, 32);
        for (size_t i = 0; i < count; ++i) {
            const MaterialRecord& material = *materials_.rows[i];
            if (!fits(kivaLimitOf(material))) return;
            uint8_t* row = arena_.at(base + 32 * i);
            put16(row, stringIndex(material.shaderName));
            put16(row + 2, count16(material.vectorParameters.size()));
            put16(row + 4, count16(material.textureParameters.size()));
            put16(row + 6, count16(material.matrixParameters.size()));

            const uint64_t vectors = payload(20 * material.vectorParameters.size());
            put64(row + 8, vectors);
            for (size_t k = 0; k < material.vectorParameters.size(); ++k) {
                uint8_t* entry = arena_.at(vectors + 20 * k);
                put16(entry, stringIndex(material.vectorParameters[k].name));
                putBytes(entry + 4, material.vectorParameters[k].value.data(), 16);
            }
            const uint64_t textures = payload(4 * material.textureParameters.size());
            put64(row + 16, textures);
            for (size_t k = 0; k < material.textureParameters.size(); ++k) {
                uint8_t* entry = arena_.at(textures + 4 * k);
                put16(entry, stringIndex(material.textureParameters[k].name));
                put16(entry + 2, objectIndex(material.textureParameters[k].texture, textures_));
            }
            const uint64_t matrices = payload(68 * material.matrixParameters.size());
            put64(row + 24, matrices);
            for (size_t k = 0; k < material.matrixParameters.size(); ++k) {
                uint8_t* entry = arena_.at(matrices + 68 * k);
                put16(entry, stringIndex(material.matrixParameters[k].name));
                putBytes(entry + 4, material.matrixParameters[k].value.data(), 64);
            }
        }
    }

    void writeTextures() {
        const size_t count = textures_.rows.size();
        const uint64_t base = table(kTextures, count, 24);
        for (size_t i = 0; i < count; ++i) {
            const TextureRecord& texture = *textures_.rows[i];
            if (!fits(kivaLimitOf(texture))) return;
            uint8_t* row = arena_.at(base + 24 * i);
            put16(row, stringIndex(texture.name));
            put8(row + 2, static_cast<uint8_t>(texture.format));
            put8(row + 3, static_cast<uint8_t>((texture.mipCount & 0x7F) | (texture.srgb ? 0x80 : 0)));
            put16(row + 4, static_cast<uint16_t>(texture.width));
            put16(row + 6, static_cast<uint16_t>(texture.height));
            put64(row + 8, texture.data.size());
            const uint64_t data = payload(texture.data.size());
            put64(row + 16, data);
            if (data != kKivaNoOffset) putBytes(arena_.at(data), texture.data.data(), texture.data.size());
        }
    }

    void writeBuffers(const IndexMap<BufferRecord>& buffers, HeaderSlot slot) {
        const size_t count = buffers.rows.size();
        const uint64_t base = table(slot, count, 24);
        for (size_t i = 0; i < count; ++i) {
            const BufferRecord& buffer = *buffers.rows[i];
            uint8_t* row = arena_.at(base + 24 * i);
            put8(row, static_cast<uint8_t>(buffer.format));
            put32(row + 4, buffer.count);
            put64(row + 8, buffer.data.size());
            const uint64_t data = payload(buffer.data.size());
            put64(row + 16, data);
            if (data != kKivaNoOffset) putBytes(arena_.at(data), buffer.data.data(), buffer.data.size());
        }
    }

    void writeSkeletons() {
        const size_t count = skeletons_.rows.size();
        const uint64_t base = table(kSkeletons, count, 16);
        for (size_t i = 0; i < count; ++i) {
            static const AnimSkeleton kNoBones;
            const SkeletonRecord& holder = *skeletons_.rows[i];
            const AnimSkeleton& skeleton = holder.skeleton ? *holder.skeleton : kNoBones;
            if (!fits(kivaLimitOf(skeleton))) return;
            uint8_t* row = arena_.at(base + 16 * i);
            put16(row, count16(skeleton.bones.size()));
            const uint64_t bones = payload(132 * skeleton.bones.size());
            put64(row + 8, bones);
            for (size_t b = 0; b < skeleton.bones.size(); ++b) {
                const AnimBone& bone = skeleton.bones[b];
                uint8_t* entry = arena_.at(bones + 132 * b);
                put16(entry, stringIndex(bone.name));
                put16(entry + 2, static_cast<uint16_t>(bone.parent));
                putBytes(entry + 4, bone.translation.data(), 12);
                putBytes(entry + 16, bone.rotation.data(), 16);
                putBytes(entry + 32, bone.scaleShear.data(), 36);
                putBytes(entry + 68, bone.inverseBind.data(), 64);
            }
        }
    }

    void writeAnimations() {
        const size_t count = animations_.rows.size();
        const uint64_t base = table(kAnimations, count, 32);
        for (size_t i = 0; i < count; ++i) {
            const AnimationRecord& holder = *animations_.rows[i];
            uint8_t* row = arena_.at(base + 32 * i);
            if (!holder.animation) {
                put16(row, kKivaNoIndex);
                put64(row + 16, kKivaNoOffset);
                put64(row + 24, kKivaNoOffset);
                continue;
            }
            const Animation& animation = *holder.animation;
            if (!fits(kivaLimitOf(animation))) return;
            const size_t boneCount = animation.boneNames.size();
            put16(row, stringIndex(animation.name));
            put16(row + 2, count16(boneCount));
            const uint64_t names = payload(2 * boneCount);
            put64(row + 16, names);
            for (size_t b = 0; b < boneCount; ++b) put16(arena_.at(names + 2 * b), stringIndex(animation.boneNames[b]));
            put32(row + 4, static_cast<uint32_t>(animation.frameCount));
            put32(row + 8, animation.framesPerSecondNumerator);
            put32(row + 12, animation.framesPerSecondDenominator);
            const size_t frames = animation.frameCount > 0 ? static_cast<size_t>(animation.frameCount) : 0;
            const uint64_t transforms = payload(28 * frames * boneCount);
            put64(row + 24, transforms);
            if (transforms != kKivaNoOffset)
                putBytes(arena_.at(transforms), animation.transforms.data(),
                         28 * std::min(frames * boneCount, animation.transforms.size()));
        }
    }

    void writeStrings() {
        const size_t count = strings_.size();
        const uint64_t base = table(kStrings, count, 16);
        for (size_t i = 0; i < count; ++i) {
            const std::string_view text = strings_[i];
            // The arena's zero after the characters is the terminator.
            const uint64_t chars = arena_.allocate(text.size() + 1);
            putBytes(arena_.at(chars), text.data(), text.size());
            uint8_t* row = arena_.at(base + 16 * i);
            put32(row, static_cast<uint32_t>(text.size()));
            put64(row + 8, chars);
        }
    }

    const KivaContainer& container_;
    KivaArena arena_;
    uint64_t header_ = 0;
    KivaLimit limit_;
    IndexMap<ModelRecord> models_{"models"};
    IndexMap<MeshRecord> meshes_{"meshes"};
    IndexMap<MaterialRecord> materials_{"materials"};
    IndexMap<TextureRecord> textures_{"textures"};
    IndexMap<BufferRecord> vertexBuffers_{"vertex buffers"};
    IndexMap<BufferRecord> indexBuffers_{"index buffers"};
    IndexMap<SkeletonRecord> skeletons_{"skeletons"};
    IndexMap<AnimationRecord> animations_{"animations"};
    std::unordered_map<std::string_view, uint16_t> stringIndex_;
    std::vector<std::string_view> strings_;  // views into the container's records, in index order
};

}  // namespace

SerializedKiva serializeKiva(const KivaContainer& container) { return KivaWriter(container).run(); }

}  // namespace tarn
