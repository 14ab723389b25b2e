#include "tarn/kiva_builder.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tarn/copy_texture_data.h"
#include "tarn/kiva_builder_texture.h"
#include "tarn/material_cache.h"

namespace tarn {
namespace {

TEST(KivaBuilder, TextureLevelsFollowTheFormatsBlocksAndTheHalvingBySteps) {
    struct Case {
        TextureFormat format;
        int width, height, mips;
        std::vector<KivaBuilderTexture::Level> levels;  // offset, pitch
        size_t dataSize;
    };
    const Case cases[] = {
        {TextureFormat::DXT1, 5, 3, 3, {{0, 16}, {16, 8}, {24, 8}}, 32},  // 2x1 blocks, then 1x1, 1x1
        {TextureFormat::DXT3, 8, 8, 4, {{0, 32}, {64, 16}, {80, 16}, {96, 16}}, 112},
        {TextureFormat::A8R8G8B8, 1, 1, 3, {{0, 4}, {4, 4}, {8, 4}}, 12},  // 1x1 stays 1x1
        {TextureFormat::R8, 5, 3, 3, {{0, 5}, {15, 2}, {17, 1}}, 18},      // 5x3, 2x1, 1x1
        {TextureFormat::RGBA32F, 2, 2, 1, {{0, 32}}, 64},
        {TextureFormat::Invalid, 4, 4, 2, {{0, 0}, {0, 0}}, 0},
    };
    KivaContainer container;
    KivaBuilder builder(&container);
    for (const Case& c : cases) {
        auto texture = builder.createTexture(c.format, c.width, c.height, c.mips, 7, 0);
        const auto& levels = static_cast<KivaBuilderTexture*>(texture.get())->levels();
        ASSERT_EQ(levels.size(), c.levels.size());
        for (size_t i = 0; i < levels.size(); ++i) {
            EXPECT_EQ(levels[i].offset, c.levels[i].offset) << c.width << "x" << c.height << " level " << i;
            EXPECT_EQ(levels[i].pitch, c.levels[i].pitch) << c.width << "x" << c.height << " level " << i;
        }
        const TextureRecord* record = builder.textureRecordOf(texture);
        EXPECT_EQ(record->data.size(), c.dataSize);
        EXPECT_EQ(record->mipCount, uint32_t(c.mips));
        EXPECT_EQ(texture->width(), uint32_t(c.width));
    }
}

TEST(KivaBuilder, WriteLevelHonoursPitchesAndFaces) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::R8, 3, 2, 2, 7, 0);
    const TextureRecord* record = builder.textureRecordOf(texture);
    const uint8_t packed[6] = {1, 2, 3, 4, 5, 6};
    texture->writeLevel(0, packed, 0, 0);
    EXPECT_EQ(record->data, (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 0}));
    // Rows 5 bytes apart: the gaps of the source are skipped.
    const uint8_t spaced[10] = {10, 11, 12, 99, 99, 13, 14, 15, 99, 99};
    texture->writeLevel(0, spaced, 5, 0);
    EXPECT_EQ(record->data, (std::vector<uint8_t>{10, 11, 12, 13, 14, 15, 0}));
    const uint8_t one = 42;
    texture->writeLevel(1, &one, 0, 1);
    EXPECT_EQ(record->data[6], 0) << "face 1 does not exist";
    texture->writeLevel(1, &one, 0, 0);
    EXPECT_EQ(record->data[6], 42);

    // 8x8 DXT1 is two rows of two blocks (16 bytes a row); written 20 apart,
    // the gaps keep what they held.
    std::vector<uint8_t> source(2 * 16), destination(40, 0xAA);
    std::iota(source.begin(), source.end(), uint8_t{1});
    copyTextureData(destination.data(), 20, source.data(), 0, 8, 8, textureFormatInfo(TextureFormat::DXT1));
    EXPECT_TRUE(std::equal(source.begin(), source.begin() + 16, destination.begin()));
    EXPECT_TRUE(std::equal(source.begin() + 16, source.end(), destination.begin() + 20));
    EXPECT_EQ(destination[16], 0xAA);
}

TEST(KivaBuilder, BufferWritesStayInsideTheRecord) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto ib = builder.createIndexBuffer(IF_UInt32, 5, 0, 0);
    const BufferRecord* record = builder.indexBufferRecordOf(ib);
    EXPECT_EQ(record->data.size(), 20u);
    std::vector<uint8_t> bytes(32, 7);
    ib->writeData(bytes.data(), 8);
    EXPECT_EQ(record->data[7], 7);
    EXPECT_EQ(record->data[8], 0) << "a short write leaves the rest";
    ib->writeData(bytes.data(), bytes.size());
    EXPECT_EQ(record->data, std::vector<uint8_t>(20, 7)) << "the excess is dropped";
    auto vb = builder.createVertexBuffer(VertexFormat::Position3Weights4bBones4bNormal3TexCoord2, 3, 0, 0);
    EXPECT_EQ(builder.vertexBufferRecordOf(vb)->data.size(), 120u);
}

TEST(KivaBuilder, EmptyHandlesHaveNoRecordAndHandlesOutlivingTheBuilderAreCutLoose) {
    KivaContainer container;
    qe::Ref<Texture> texture;
    qe::Ref<Mesh> mesh;
    {
        KivaBuilder builder(&container);
        EXPECT_EQ(builder.textureRecordOf({}), nullptr);
        EXPECT_EQ(builder.meshRecordOf({}), nullptr);
        EXPECT_EQ(builder.materialRecordOf({}), nullptr);
        EXPECT_FALSE(builder.createVolumeTexture(TextureFormat::R8, 1, 1, 1, 1, 7, 0));
        EXPECT_FALSE(builder.createDynamicVertexBuffer(VertexFormat::Position3, 1, 0, 0));
        texture = builder.createTexture(TextureFormat::R8, 2, 2, 1, 7, 0);
        mesh = builder.createMesh(builder.createVertexBuffer(VertexFormat::Position3, 2, 0, 0), {}, nullptr, 0);
    }
    auto* t = static_cast<KivaBuilderTexture*>(texture.get());
    EXPECT_EQ(t->factory(), nullptr);
    EXPECT_EQ(t->record(), nullptr);
    EXPECT_FALSE(t->linked());
    EXPECT_TRUE(mesh->vertexBuffer()) << "the mesh keeps its buffer alive";
    EXPECT_EQ(container.textures().size(), 1u) << "records stay with the container";
}

// A texture of some other factory.
struct ForeignTexture : Texture {
    TextureFactory* factory() const override { return nullptr; }
    uint32_t width() const override { return 1; }
    uint32_t height() const override { return 1; }
    void writeLevel(int32_t, const void*, size_t, uint32_t) override {}
};

TEST(KivaBuilderDeathTest, BrokenInvariantsStopTheProgram) {
    KivaContainer container;
    KivaBuilder builder(&container), other(&container);
    auto texture = builder.createTexture(TextureFormat::A8R8G8B8, 4, 4, 1, 7, 0);
    const uint8_t pixels[64] = {};
    EXPECT_DEATH(texture->writeLevel(0, pixels, 15, 0), "pitch too small for copyTextureData");
    EXPECT_DEATH(texture->writeLevel(1, pixels, 0, 0), "texture level out of range");
    EXPECT_DEATH(builder.createCubeTexture(TextureFormat::DXT1, 4, 1, 7, 0),
                 "KivaBuilder does not currently support cube textures");

    auto foreign = other.createTexture(TextureFormat::R8, 1, 1, 1, 7, 0);
    auto vb = other.createVertexBuffer(VertexFormat::Position3, 1, 0, 0);
    auto ib = other.createIndexBuffer(IF_UInt16, 3, 0, 0);
    EXPECT_DEATH(builder.textureRecordOf(foreign), "Texture not from this factory");
    EXPECT_DEATH(builder.textureRecordOf(qe::Ref<Texture>(new ForeignTexture)), "Texture not from this factory");
    EXPECT_DEATH(builder.createMesh(vb, {}, nullptr, 0), "Vertex buffer not from this factory");
    EXPECT_DEATH(builder.createMesh({}, ib, nullptr, 0), "Index buffer not from this factory");
    EXPECT_DEATH(builder.meshRecordOf(other.createMesh({}, {}, nullptr, 0)), "Mesh not from this factory");
    MaterialCache cache;
    auto material = createMaterial(&cache, "lit");
    setTextureParameter(material, "Diffuse", foreign);
    MaterialGroup group(material, 0, 1, kPrimitiveTriangleList);
    EXPECT_DEATH(builder.createMesh({}, {}, &group, 1), "Texture not from this factory");

    qe::Ref<VertexBuffer> orphan;
    {
        KivaBuilder gone(&container);
        texture = gone.createTexture(TextureFormat::A8R8G8B8, 4, 4, 1, 7, 0);
        orphan = gone.createVertexBuffer(VertexFormat::Position3, 1, 0, 0);
    }
    EXPECT_DEATH(texture->writeLevel(0, pixels, 0, 0), "texture written after its builder is gone");
    EXPECT_DEATH(orphan->writeData(pixels, 12), "buffer written after its builder is gone");
}

}  // namespace
}  // namespace tarn
