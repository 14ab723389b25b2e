#include "tarn/kivadump/kiva_sample_testing.h"

#include <cstring>

#include "qe/fatal_error.h"

#include "tarn/kiva_builder.h"
#include "tarn/kiva_writer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/material_cache.h"

namespace tarn::kivaread::testing {

namespace {

Matrix16 identity() {
    Matrix16 m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

std::vector<std::uint8_t> sequence(std::size_t size, std::uint8_t start) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = std::uint8_t(start + i);
    return bytes;
}

template <class T>
void poke(std::vector<std::uint8_t>& bytes, std::uint64_t at, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) bytes.at(at + i) = std::uint8_t(std::uint64_t(value) >> (8 * i));
}

}  // namespace

void poke8(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint8_t value) { poke(bytes, at, value); }
void poke16(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint16_t value) { poke(bytes, at, value); }
void poke32(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint32_t value) { poke(bytes, at, value); }
void poke64(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint64_t value) { poke(bytes, at, value); }

std::uint64_t ReadKiva::row(Table table, std::size_t index) const {
    const int t = static_cast<int>(table);
    return file.header.offsets[t] + index * kTables[t].rowSize;
}

std::uint16_t ReadKiva::stringIndex(std::string_view text) const {
    for (std::size_t i = 0; i < file.strings.size(); ++i)
        if (file.strings[i].text == text) return std::uint16_t(i);
    return kNoIndex;
}

ReadKiva readKiva(std::vector<std::uint8_t> bytes) {
    ReadKiva result{std::move(bytes), {}, {}};
    KivaReader reader(result.bytes);
    if (!reader.read(result.file)) result.fault = reader.fault();
    return result;
}

std::vector<std::uint8_t> writeKiva(const KivaContainer& container) {
    SerializedKiva file = serializeKiva(container);
    if (file.limit) qe::fatalError(file.limit.passed.c_str());
    return std::move(file.bytes);
}

void fillSampleKiva(KivaContainer& container) {
    MaterialCache cache;
    KivaBuilder builder(&container);
    auto wood = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 1);
    const std::vector<std::uint8_t> woodTexels = sequence(20, 1);
    wood->writeLevel(0, woodTexels.data(), 0, 0);
    wood->writeLevel(1, woodTexels.data() + 16, 0, 0);
    builder.textureRecordOf(wood)->name = "tex/wood.png";
    auto stone = builder.createTexture(TextureFormat::DXT1, 5, 3, 3, 7, 0);
    builder.textureRecordOf(stone)->data = sequence(32, 0x40);
    builder.textureRecordOf(stone)->name = "tex/stone.png";
    builder.textureRecordOf(builder.createTexture(TextureFormat::Invalid, 0, 0, 0, 7, 0))->name = "other.kiva";

    auto vertices = builder.createVertexBuffer(VertexFormat::Position3Normal3, 4, 0, 0);
    const float positions[24] = {0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1};
    vertices->writeData(positions, sizeof positions);
    auto narrow = builder.createIndexBuffer(IF_UInt16, 6, 0, 0);
    const std::uint16_t narrowIndices[6] = {0, 1, 2, 2, 1, 3};
    narrow->writeData(narrowIndices, sizeof narrowIndices);
    auto wide = builder.createIndexBuffer(IF_UInt32, 3, 0, 0);
    const std::uint32_t wideIndices[3] = {3, 2, 1};
    wide->writeData(wideIndices, sizeof wideIndices);

    auto lambert = [&] {
        auto m = createMaterial(&cache, "Lambert");
        setVectorParameter(m, "DiffuseColor", {1, 0.5f, 0.25f, 1});
        setVectorParameter(m, "AmbientColor", {0.25f, 0.5f, 1, 1});
        setTextureParameter(m, "NormalTexture", {});
        setTextureParameter(m, "DiffuseTexture", stone);
        return m;
    };
    MaterialGroup top(createMaterial(&cache, "Phong"), 3, 1, kPrimitiveTriangleList);
    top.name = "top";
    const MaterialGroup bodyGroups[2] = {MaterialGroup(lambert(), 0, 1, kPrimitiveTriangleList), top};
    auto body = builder.createMesh(vertices, narrow, bodyGroups, 2);
    const MaterialGroup capGroup(lambert(), 0, 1, kPrimitiveTriangleList);
    auto cap = builder.createMesh(vertices, wide, &capGroup, 1);
    builder.createMesh(vertices, narrow, &capGroup, 1);  // bound by no model
    builder.materialRecordOf(bodyGroups[0].material)->matrixParameters.push_back({"UvTransform", identity()});

    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    const std::array<float, 9> unit3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    for (const char* name : {"root", "hip", "knee"}) {
        const auto bone = std::int32_t(skeleton->bones.size());
        skeleton->bones.emplace_back(name, bone - 1, std::array<float, 3>{0, 0, float(bone)},
                                     std::array<float, 4>{0, 0, 0, 1}, unit3, identity());
    }
    Matrix16 placed = identity();
    placed[12] = 2.5f;
    ModelRecord* model = container.addModel("Body", placed, container.addSkeleton(skeleton));
    container.addSkeleton(qe::Ref<AnimSkeleton>(new AnimSkeleton));  // used by no model
    model->meshBindings.push_back({"BodyShape", builder.meshRecordOf(body), identity(), {0, 1, 2}});
    model->meshBindings.push_back({"", builder.meshRecordOf(cap), identity(), {}});
    container.addModel("Empty", identity(), nullptr);

    auto walk = qe::Ref<Animation>(new Animation("walk", {"root", "knee"}, 3, 60, 1));
    for (std::size_t record = 0; record < walk->transforms.size(); ++record) {
        float values[7];
        for (int c = 0; c < 7; ++c) values[c] = float(record * 10 + c);
        std::memcpy(&walk->transforms[record], values, sizeof values);
    }
    container.addAnimation(walk);
}

std::vector<std::uint8_t> sampleKiva() {
    KivaContainer container;
    fillSampleKiva(container);
    return writeKiva(container);
}

std::vector<std::uint8_t> oneTextureKiva(std::uint8_t format, std::uint16_t width, std::uint16_t height,
                                         std::uint8_t mipCount, const std::vector<std::uint8_t>& data) {
    KivaContainer container;
    container.addTexture("t", format, width, height, mipCount, false, 0)->data = data;
    return writeKiva(container);
}

}  // namespace tarn::kivaread::testing
