#include "tarn/kivadump/kiva_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "tarn/kivadump/dump_format.h"

namespace tarn::kivaread {

namespace {

std::string hex(std::uint64_t value) { return formatHex(value); }

std::string num(std::uint64_t value) { return std::to_string(value); }

std::string row(Table table, std::size_t index) { return std::string(kTables[int(table)].name) + " " + num(index); }

std::string quoted(std::string_view text) { return quoteText(text); }

}  // namespace

KivaReader::KivaReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

KivaReader::~KivaReader() = default;

std::uint16_t KivaReader::u16(std::uint64_t at) const { return std::uint16_t(bytes_[at] | bytes_[at + 1] << 8); }

std::uint32_t KivaReader::u32(std::uint64_t at) const {
    return std::uint32_t(bytes_[at]) | std::uint32_t(bytes_[at + 1]) << 8 | std::uint32_t(bytes_[at + 2]) << 16 |
           std::uint32_t(bytes_[at + 3]) << 24;
}

std::uint64_t KivaReader::u64(std::uint64_t at) const { return u32(at) | std::uint64_t(u32(at + 4)) << 32; }

float KivaReader::f32(std::uint64_t at) const {
    std::uint32_t bits = u32(at);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

bool KivaReader::fail(const std::string& where, const char* field, const std::string& problem) {
    fault_ = where + ": " + field + ": " + problem;
    return false;
}

bool KivaReader::checkBlock(const std::string& where, const char* field, std::uint64_t offset, std::uint64_t count,
                            std::uint64_t elementSize) {
    std::uint64_t size = count * elementSize;
    if (size == 0) {
        if (offset != kNoOffset)
            return fail(where, field, "offset " + hex(offset) + " given for an empty list, expected " + hex(kNoOffset));
        return true;
    }
    if (offset == kNoOffset) return fail(where, field, "no offset given for " + num(size) + " bytes");
    if (offset % kAlignment != 0) return fail(where, field, "offset " + hex(offset) + " is not a multiple of 8");
    if (offset < kHeaderSize) return fail(where, field, "offset " + hex(offset) + " lies inside the header");
    if (offset > bytes_.size() || size > bytes_.size() - offset)
        return fail(where, field,
                    num(size) + " bytes at " + hex(offset) + " run past the end of the file (" + num(bytes_.size()) +
                        " bytes)");
    return claim(where, field, offset, size);
}

bool KivaReader::claim(const std::string& where, const char* field, std::uint64_t offset, std::uint64_t size) {
    // Blocks are padded to whole 8-byte units, so two blocks overlap exactly
    // when they share a unit.
    const std::uint64_t first = offset / kAlignment;
    const std::uint64_t last = (offset + size + kAlignment - 1) / kAlignment;
    auto mask = [&](std::uint64_t word) {
        const std::uint64_t from = std::max(first, word * 64), to = std::min(last, word * 64 + 64);
        const std::uint64_t bits = to - from == 64 ? ~std::uint64_t(0) : ((std::uint64_t(1) << (to - from)) - 1);
        return bits << (from - word * 64);
    };
    for (std::uint64_t word = first / 64; word * 64 < last; ++word) {
        const std::uint64_t taken = usedUnits_[word] & mask(word);
        if (taken == 0) continue;
        const std::uint64_t unit = word * 64 + std::uint64_t(std::countr_zero(taken));
        for (const Block& block : blocks_)
            if (block.offset / kAlignment <= unit && unit < (block.offset + block.size + kAlignment - 1) / kAlignment)
                return fail(where, field,
                            num(size) + " bytes at " + hex(offset) + " overlap the block of " + block.owner + " at " +
                                hex(block.offset));
        return fail(where, field, num(size) + " bytes at " + hex(offset) + " overlap another block");
    }
    for (std::uint64_t word = first / 64; word * 64 < last; ++word) usedUnits_[word] |= mask(word);
    blocks_.push_back({offset, size, where == "header" ? std::string(field) : where + ", " + field});
    return true;
}

bool KivaReader::checkStringIndex(const std::string& where, const char* field, std::uint16_t index) {
    if (index != kNoIndex && index >= file_->strings.size())
        return fail(where, field,
                    "string index " + num(index) + " is not below the string count " + num(file_->strings.size()));
    return true;
}

bool KivaReader::checkObjectIndex(const std::string& where, const char* field, std::uint16_t index, Table table) {
    std::uint16_t count = file_->header.counts[int(table)];
    if (index != kNoIndex && index >= count)
        return fail(where, field,
                    "index " + num(index) + " is not below the " + kTables[int(table)].name + " count " + num(count));
    return true;
}

bool KivaReader::checkReserved(const std::string& where, std::uint64_t offset, std::uint64_t size) {
    for (std::uint64_t i = 0; i < size; ++i)
        if (bytes_[offset + i] != 0)
            return fail(where, "reserved",
                        "byte " + num(i) + " of the reserved field is " + hex(bytes_[offset + i]) + ", not zero");
    return true;
}

bool KivaReader::read(KivaFile& file) {
    file = KivaFile();
    file.bytes = bytes_;
    file_ = &file;
    fault_.clear();
    blocks_.clear();
    usedUnits_.assign((bytes_.size() / kAlignment + 1 + 63) / 64, 0);
    indexValues_.clear();
    return readHeader() && readStrings() && readTextures() && readBuffers(Table::VertexBuffers) &&
           readBuffers(Table::IndexBuffers) && readMaterials() && readMeshes() && readSkeletons() && readModels() &&
           readAnimations() && checkSizeAlignment();
}

bool KivaReader::readHeader() {
    if (bytes_.size() < kHeaderSize)
        return fail(
            "header", "size",
            "the file has " + num(bytes_.size()) + " bytes, fewer than the " + num(kHeaderSize) + " of the header");
    KivaHeader& header = file_->header;
    header.magic = u32(0);
    if (header.magic != kMagic)
        return fail("header", "magic", hex(header.magic) + " is not " + hex(kMagic) + " (\"aviK\" on disk)");
    header.version = u32(4);
    if (header.version != kVersion)
        return fail("header", "version", hex(header.version) + " is not the supported version " + hex(kVersion));
    for (int t = 0; t < kTableCount; ++t) {
        header.counts[t] = u16(kHeaderCountsAt + 2 * t);
        header.offsets[t] = u64(kHeaderOffsetsAt + 8 * t);
    }
    if (!checkReserved("header", kHeaderReservedAt, 6) || !claim("header", "header", 0, kHeaderSize)) return false;
    for (int t = 0; t < kTableCount; ++t) {
        std::string field = std::string(kTables[t].name) + " table";
        if (!checkBlock("header", field.c_str(), header.offsets[t], header.counts[t], kTables[t].rowSize)) return false;
    }
    return true;
}

bool KivaReader::readStrings() {
    const std::uint64_t base = file_->header.offsets[int(Table::Strings)];
    const std::size_t count = file_->header.counts[int(Table::Strings)];
    file_->strings.resize(count);
    std::unordered_map<std::string_view, std::size_t> seen;
    seen.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kStringRowSize;
        const std::string where = row(Table::Strings, i);
        const std::uint32_t length = u32(at);
        const std::uint64_t offset = u64(at + 8);
        if (!checkReserved(where, at + 4, 4)) return false;
        if (length == 0) return fail(where, "length", "an empty string stands in the table; empty names are 0xFFFF");
        if (!checkBlock(where, "characters", offset, std::uint64_t(length) + 1, 1)) return false;
        if (u8(offset + length) != 0)
            return fail(where, "characters",
                        "no NUL terminator behind the " + num(length) + " bytes at " + hex(offset));
        std::string_view text(reinterpret_cast<const char*>(bytes_.data() + offset), length);
        auto [it, added] = seen.emplace(text, i);
        if (!added) return fail(where, "characters", quoted(text) + " repeats string " + num(it->second));
        file_->strings[i] = {offset, text};
    }
    return true;
}

bool KivaReader::readTextures() {
    const std::uint64_t base = file_->header.offsets[int(Table::Textures)];
    const std::size_t count = file_->header.counts[int(Table::Textures)];
    file_->textures.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kTextureRowSize;
        const std::string where = row(Table::Textures, i);
        KivaTexture& texture = file_->textures[i];
        texture.name = u16(at);
        if (!checkStringIndex(where, "name", texture.name)) return false;
        texture.format = u8(at + 2);
        if (texture.format >= kTextureFormatCount)
            return fail(where, "format", num(texture.format) + " is not a texture format");
        texture.mipCount = u8(at + 3) & kMipCountMask;
        texture.srgb = (u8(at + 3) & kSrgbBit) != 0;
        texture.width = u16(at + 4);
        texture.height = u16(at + 6);
        texture.dataSize = u64(at + 8);
        texture.dataOffset = u64(at + 16);
        const std::uint64_t expected = textureDataSize(texture.format, texture.width, texture.height, texture.mipCount);
        if (texture.dataSize != expected)
            return fail(where, "data size",
                        num(texture.dataSize) + " bytes, but " + kTextureFormats[texture.format].name + " " +
                            num(texture.width) + "x" + num(texture.height) + " with " + num(texture.mipCount) +
                            " mip levels takes " + num(expected));
        if (!checkBlock(where, "data offset", texture.dataOffset, texture.dataSize, 1)) return false;
    }
    return true;
}

bool KivaReader::readBuffers(Table table) {
    const bool vertices = table == Table::VertexBuffers;
    const std::uint64_t base = file_->header.offsets[int(table)];
    const std::size_t count = file_->header.counts[int(table)];
    std::vector<KivaBuffer>& buffers = vertices ? file_->vertexBuffers : file_->indexBuffers;
    buffers.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kBufferRowSize;
        const std::string where = row(table, i);
        KivaBuffer& buffer = buffers[i];
        buffer.format = u8(at);
        const std::uint32_t formatCount = vertices ? kVertexFormatCount : kIndexFormatCount;
        if (buffer.format >= formatCount)
            return fail(where, "format",
                        num(buffer.format) + " is not " + (vertices ? "a vertex format" : "an index format"));
        if (!checkReserved(where, at + 1, 3)) return false;
        buffer.count = u32(at + 4);
        buffer.dataSize = u64(at + 8);
        buffer.dataOffset = u64(at + 16);
        const std::uint32_t elementSize =
            vertices ? kVertexFormats[buffer.format].stride : kIndexFormats[buffer.format].size;
        const std::uint64_t expected = std::uint64_t(elementSize) * buffer.count;
        if (buffer.dataSize != expected)
            return fail(where, "data size",
                        num(buffer.dataSize) + " bytes, but " + num(buffer.count) + " " +
                            (vertices ? "vertices" : "indices") + " of " +
                            (vertices ? kVertexFormats[buffer.format].name : kIndexFormats[buffer.format].name) +
                            " take " + num(expected));
        if (!checkBlock(where, "data offset", buffer.dataOffset, buffer.dataSize, 1)) return false;
    }
    return true;
}

bool KivaReader::readMaterials() {
    const std::uint64_t base = file_->header.offsets[int(Table::Materials)];
    const std::size_t count = file_->header.counts[int(Table::Materials)];
    file_->materials.resize(count);
    // Parameters stand in strictly ascending byte order of their names.
    auto checkOrder = [&](const std::string& where, std::size_t index, std::uint16_t previous, std::uint16_t name) {
        if (index == 0) return true;
        std::string_view before = file_->string(previous), now = file_->string(name);
        if (before.compare(now) < 0) return true;
        return fail(
            where, "name",
            quoted(now) + " does not come after the previous parameter's name " + quoted(before) + " in byte order");
    };
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kMaterialRowSize;
        const std::string where = row(Table::Materials, i);
        KivaMaterial& material = file_->materials[i];
        material.shader = u16(at);
        if (!checkStringIndex(where, "shader", material.shader)) return false;
        const std::uint16_t vectorCount = u16(at + 2), textureCount = u16(at + 4), matrixCount = u16(at + 6);
        material.vectorOffset = u64(at + 8);
        material.textureOffset = u64(at + 16);
        material.matrixOffset = u64(at + 24);
        if (!checkBlock(where, "vector parameters", material.vectorOffset, vectorCount, kVectorParameterSize) ||
            !checkBlock(where, "texture parameters", material.textureOffset, textureCount, kTextureParameterSize) ||
            !checkBlock(where, "matrix parameters", material.matrixOffset, matrixCount, kMatrixParameterSize))
            return false;
        material.vectors.resize(vectorCount);
        for (std::size_t p = 0; p < vectorCount; ++p) {
            const std::uint64_t pat = material.vectorOffset + p * kVectorParameterSize;
            const std::string pwhere = where + ", vector parameter " + num(p);
            KivaVectorParameter& parameter = material.vectors[p];
            parameter.name = u16(pat);
            if (!checkStringIndex(pwhere, "name", parameter.name) || !checkReserved(pwhere, pat + 2, 2) ||
                !checkOrder(pwhere, p, p ? material.vectors[p - 1].name : 0, parameter.name))
                return false;
            floats(pat + 4, parameter.value);
        }
        material.textures.resize(textureCount);
        for (std::size_t p = 0; p < textureCount; ++p) {
            const std::uint64_t pat = material.textureOffset + p * kTextureParameterSize;
            const std::string pwhere = where + ", texture parameter " + num(p);
            KivaTextureParameter& parameter = material.textures[p];
            parameter.name = u16(pat);
            parameter.texture = u16(pat + 2);
            if (!checkStringIndex(pwhere, "name", parameter.name) ||
                !checkOrder(pwhere, p, p ? material.textures[p - 1].name : 0, parameter.name) ||
                !checkObjectIndex(pwhere, "texture", parameter.texture, Table::Textures))
                return false;
        }
        material.matrices.resize(matrixCount);
        for (std::size_t p = 0; p < matrixCount; ++p) {
            const std::uint64_t pat = material.matrixOffset + p * kMatrixParameterSize;
            const std::string pwhere = where + ", matrix parameter " + num(p);
            KivaMatrixParameter& parameter = material.matrices[p];
            parameter.name = u16(pat);
            if (!checkStringIndex(pwhere, "name", parameter.name) || !checkReserved(pwhere, pat + 2, 2) ||
                !checkOrder(pwhere, p, p ? material.matrices[p - 1].name : 0, parameter.name))
                return false;
            floats(pat + 4, parameter.value);
        }
    }
    return true;
}

bool KivaReader::readMeshes() {
    const std::uint64_t base = file_->header.offsets[int(Table::Meshes)];
    const std::size_t count = file_->header.counts[int(Table::Meshes)];
    file_->meshes.resize(count);
    indexValues_.clear();
    indexValues_.resize(file_->indexBuffers.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kMeshRowSize;
        const std::string where = row(Table::Meshes, i);
        KivaMesh& mesh = file_->meshes[i];
        mesh.vertexBuffer = u16(at);
        mesh.indexBuffer = u16(at + 2);
        const std::uint16_t groupCount = u16(at + 4);
        mesh.groupOffset = u64(at + 8);
        if (!checkObjectIndex(where, "vertex buffer", mesh.vertexBuffer, Table::VertexBuffers) ||
            !checkObjectIndex(where, "index buffer", mesh.indexBuffer, Table::IndexBuffers) ||
            !checkReserved(where, at + 6, 2) ||
            !checkBlock(where, "material groups", mesh.groupOffset, groupCount, kMaterialGroupSize))
            return false;
        mesh.groups.resize(groupCount);
        for (std::size_t g = 0; g < groupCount; ++g) {
            const std::uint64_t gat = mesh.groupOffset + g * kMaterialGroupSize;
            const std::string gwhere = where + ", group " + num(g);
            KivaMaterialGroup& group = mesh.groups[g];
            group.name = u16(gat);
            group.material = u16(gat + 2);
            group.firstIndex = u32(gat + 4);
            group.primitiveCount = u32(gat + 8);
            group.primitive = u8(gat + 12);
            if (!checkStringIndex(gwhere, "name", group.name) ||
                !checkObjectIndex(gwhere, "material", group.material, Table::Materials))
                return false;
            if (group.primitive != kTriangleList)
                return fail(gwhere, "primitive type",
                            num(group.primitive) + " is not a triangle list (" + num(kTriangleList) + ")");
            if (!checkReserved(gwhere, gat + 13, 3) || !checkMeshIndices(i, g, mesh, group)) return false;
        }
    }
    return true;
}

bool KivaReader::checkMeshIndices(std::size_t meshRow, std::size_t groupRow, const KivaMesh& mesh,
                                  const KivaMaterialGroup& group) {
    const std::string where = row(Table::Meshes, meshRow) + ", group " + num(groupRow);
    const KivaBuffer* indices = mesh.indexBuffer == kNoIndex ? nullptr : &file_->indexBuffers[mesh.indexBuffer];
    const std::uint64_t indexCount = indices ? indices->count : 0;
    const std::uint64_t first = group.firstIndex;
    const std::uint64_t end = first + 3 * std::uint64_t(group.primitiveCount);
    if (end > indexCount)
        return fail(where, "primitive count",
                    num(group.primitiveCount) + " triangles from index " + num(first) + " need " + num(end) +
                        " indices, the index buffer has " + num(indexCount));
    if (end == first) return true;
    const std::uint64_t vertexCount = mesh.vertexBuffer == kNoIndex ? 0 : file_->vertexBuffers[mesh.vertexBuffer].count;
    std::unique_ptr<IndexRangeMax>& values = indexValues_[mesh.indexBuffer];
    if (!values)
        values = std::make_unique<IndexRangeMax>(bytes_.data() + indices->dataOffset, indexCount, indices->format == 1);
    if (values->max(first, end) < vertexCount) return true;
    for (std::uint64_t i = first; i < end; ++i) {
        const std::uint32_t value = values->value(i);
        if (value >= vertexCount)
            return fail(where, "index data",
                        "index " + num(i) + " of index buffer " + num(mesh.indexBuffer) + " is " + num(value) +
                            ", not below the vertex count " + num(vertexCount));
    }
    return true;
}

bool KivaReader::readSkeletons() {
    const std::uint64_t base = file_->header.offsets[int(Table::Skeletons)];
    const std::size_t count = file_->header.counts[int(Table::Skeletons)];
    file_->skeletons.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kSkeletonRowSize;
        const std::string where = row(Table::Skeletons, i);
        KivaSkeleton& skeleton = file_->skeletons[i];
        const std::uint16_t boneCount = u16(at);
        skeleton.boneOffset = u64(at + 8);
        if (!checkReserved(where, at + 2, 6) || !checkBlock(where, "bones", skeleton.boneOffset, boneCount, kBoneSize))
            return false;
        skeleton.bones.resize(boneCount);
        for (std::size_t b = 0; b < boneCount; ++b) {
            const std::uint64_t bat = skeleton.boneOffset + b * kBoneSize;
            const std::string bwhere = where + ", bone " + num(b);
            KivaBone& bone = skeleton.bones[b];
            bone.name = u16(bat);
            bone.parent = u16(bat + 2);
            if (!checkStringIndex(bwhere, "name", bone.name)) return false;
            if (bone.parent != kNoIndex && bone.parent >= b)
                return fail(bwhere, "parent",
                            bone.parent >= boneCount
                                ? num(bone.parent) + " is not below the bone count " + num(boneCount)
                                : "bone " + num(bone.parent) + " does not come before its child " + num(b));
            floats(bat + 4, bone.translation);
            floats(bat + 16, bone.rotation);
            floats(bat + 32, bone.scaleShear);
            floats(bat + 68, bone.inverseBind);
        }
    }
    return true;
}

bool KivaReader::readModels() {
    const std::uint64_t base = file_->header.offsets[int(Table::Models)];
    const std::size_t count = file_->header.counts[int(Table::Models)];
    file_->models.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kModelRowSize;
        const std::string where = row(Table::Models, i);
        KivaModel& model = file_->models[i];
        model.name = u16(at);
        model.skeleton = u16(at + 2);
        const std::uint16_t bindingCount = u16(at + 4);
        model.bindingOffset = u64(at + 72);
        if (!checkStringIndex(where, "name", model.name) ||
            !checkObjectIndex(where, "skeleton", model.skeleton, Table::Skeletons) ||
            !checkReserved(where, at + 6, 2) ||
            !checkBlock(where, "mesh bindings", model.bindingOffset, bindingCount, kMeshBindingSize))
            return false;
        floats(at + 8, model.matrix);
        const std::size_t boneCount = model.skeleton == kNoIndex ? 0 : file_->skeletons[model.skeleton].bones.size();
        model.bindings.resize(bindingCount);
        for (std::size_t b = 0; b < bindingCount; ++b) {
            const std::uint64_t bat = model.bindingOffset + b * kMeshBindingSize;
            const std::string bwhere = where + ", binding " + num(b);
            KivaMeshBinding& binding = model.bindings[b];
            binding.name = u16(bat);
            binding.mesh = u16(bat + 2);
            const std::uint16_t mapCount = u16(bat + 4);
            binding.boneMapOffset = u64(bat + 72);
            if (!checkStringIndex(bwhere, "name", binding.name) ||
                !checkObjectIndex(bwhere, "mesh", binding.mesh, Table::Meshes) || !checkReserved(bwhere, bat + 6, 2) ||
                !checkBlock(bwhere, "bone map", binding.boneMapOffset, mapCount, 2))
                return false;
            floats(bat + 8, binding.matrix);
            binding.boneMap.resize(mapCount);
            for (std::size_t m = 0; m < mapCount; ++m) {
                binding.boneMap[m] = u16(binding.boneMapOffset + 2 * m);
                if (binding.boneMap[m] >= boneCount) {
                    const std::string field = "bone map entry " + num(m);
                    return fail(bwhere, field.c_str(),
                                model.skeleton == kNoIndex
                                    ? "bone " + num(binding.boneMap[m]) + " but the model has no skeleton"
                                    : "bone " + num(binding.boneMap[m]) + " is not below the bone count " +
                                          num(boneCount) + " of skeleton " + num(model.skeleton));
                }
            }
        }
    }
    return true;
}

bool KivaReader::readAnimations() {
    const std::uint64_t base = file_->header.offsets[int(Table::Animations)];
    const std::size_t count = file_->header.counts[int(Table::Animations)];
    file_->animations.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t at = base + i * kAnimationRowSize;
        const std::string where = row(Table::Animations, i);
        KivaAnimation& animation = file_->animations[i];
        animation.name = u16(at);
        const std::uint16_t boneCount = u16(at + 2);
        animation.frameCount = u32(at + 4);
        animation.framesPerSecondNumerator = u32(at + 8);
        animation.framesPerSecondDenominator = u32(at + 12);
        animation.boneNameOffset = u64(at + 16);
        animation.transformOffset = u64(at + 24);
        if (!checkStringIndex(where, "name", animation.name)) return false;
        if (animation.framesPerSecondDenominator == 0)
            return fail(where, "frames per second denominator", "0 gives no frame rate");
        if (!checkBlock(where, "bone names", animation.boneNameOffset, boneCount, 2) ||
            !checkBlock(where, "transforms", animation.transformOffset, std::uint64_t(animation.frameCount) * boneCount,
                        kTransformSize))
            return false;
        animation.boneNames.resize(boneCount);
        for (std::size_t b = 0; b < boneCount; ++b) {
            animation.boneNames[b] = u16(animation.boneNameOffset + 2 * b);
            const std::string field = "bone name " + num(b);
            if (!checkStringIndex(where, field.c_str(), animation.boneNames[b])) return false;
        }
    }
    return true;
}

bool KivaReader::checkSizeAlignment() {
    // Every block is padded to 8 bytes, the last string's too.
    if (bytes_.size() % kAlignment != 0)
        return fail("file", "size", num(bytes_.size()) + " bytes is not a multiple of 8");
    return true;
}

}  // namespace tarn::kivaread
