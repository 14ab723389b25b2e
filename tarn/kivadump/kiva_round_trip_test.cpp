// Containers written by the writer read back without fault, with every field
// as it was put in: the reader is the second opinion on each file we write.

#include <gtest/gtest.h>

#include <random>

#include "tarn/kiva_builder.h"
#include "tarn/kiva_writer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/kivadump/texture_extractor.h"
#include "tarn/material_cache.h"

namespace tarn::kivaread {
namespace {

Matrix16 identity() {
    Matrix16 matrix{};
    matrix[0] = matrix[5] = matrix[10] = matrix[15] = 1.0f;
    return matrix;
}

struct ReadBack {
    std::vector<std::uint8_t> bytes;
    KivaFile file;
};

// Serializes and reads back; the test fails on any fault.
void readBack(const KivaContainer& container, ReadBack& out) {
    out.bytes = serializeKiva(container);
    KivaReader reader(out.bytes);
    ASSERT_TRUE(reader.read(out.file)) << reader.fault();
}

TEST(KivaRoundTripTest, EmptyContainerReadsBack) {
    KivaContainer container;
    ReadBack back;
    readBack(container, back);
    EXPECT_EQ(back.bytes.size(), 104u);
}

TEST(KivaRoundTripTest, StandAloneTexturesAndPlaceholdersReadBack) {
    KivaContainer container;
    KivaBuilder builder(&container);
    qe::Ref<Texture> crate = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 1);
    const std::uint8_t level0[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const std::uint8_t level1[4] = {200, 100, 50, 255};
    crate->writeLevel(0, level0, 0, 0);
    crate->writeLevel(1, level1, 0, 0);
    builder.textureRecordOf(crate)->name = "crate.png";
    qe::Ref<Texture> stone = builder.createTexture(TextureFormat::DXT5, 5, 3, 3, 7, 0);
    builder.textureRecordOf(stone)->name = "stone.png";
    qe::Ref<Texture> reference = builder.createTexture(TextureFormat::Invalid, 0, 0, 0, 7, 0);
    builder.textureRecordOf(reference)->name = "other/wall.kiva";

    ReadBack back;
    readBack(container, back);
    ASSERT_EQ(back.file.textures.size(), 3u);
    const KivaTexture& texture = back.file.textures[0];
    EXPECT_EQ(back.file.string(texture.name), "crate.png");
    EXPECT_TRUE(texture.srgb);
    EXPECT_EQ(texture.mipCount, 2);
    std::vector<std::uint8_t> rgba;
    ASSERT_TRUE(decodeTextureLevel(back.file, texture, 1, rgba));
    EXPECT_EQ(rgba, (std::vector<std::uint8_t>{200, 100, 50, 255}));
    EXPECT_EQ(back.file.textures[1].dataSize, 64u);  // 32 + 16 + 16
    EXPECT_EQ(back.file.textures[2].format, kFormatInvalid);
    EXPECT_EQ(back.file.textures[2].dataOffset, kNoOffset);
}

// A scene as extraction builds it: two meshes sharing a vertex buffer,
// materials interned from separate builds, a skinned model and an animation.
TEST(KivaRoundTripTest, SceneWithEveryTableReadsBackFieldByField) {
    MaterialCache cache;
    KivaContainer container;
    KivaBuilder builder(&container);

    qe::Ref<Texture> diffuse = builder.createTexture(TextureFormat::DXT1, 8, 8, 4, 7, 1);  // unnamed, reached
    qe::Ref<VertexBuffer> vertices =
        builder.createVertexBuffer(VertexFormat::Position3Weights4bBones4bNormal3TexCoord2, 5, 0, 0);
    std::vector<std::uint8_t> vertexBytes(5 * 40, 0x3F);
    vertices->writeData(vertexBytes.data(), vertexBytes.size());
    qe::Ref<IndexBuffer> indices = builder.createIndexBuffer(IF_UInt16, 9, 0, 0);
    const std::uint16_t indexValues[9] = {0, 1, 2, 2, 3, 4, 4, 3, 0};
    indices->writeData(indexValues, sizeof indexValues);
    qe::Ref<IndexBuffer> wide = builder.createIndexBuffer(IF_UInt32, 3, 0, 0);
    const std::uint32_t wideValues[3] = {4, 2, 0};
    wide->writeData(wideValues, sizeof wideValues);

    auto makeMaterial = [&](const char* shader, float red, bool textured) {
        qe::Ref<MaterialData> material = createMaterial(&cache, shader);
        setVectorParameter(material, "SpecularColor", {0.5f, 0.5f, 0.5f, 1});
        setVectorParameter(material, "DiffuseColor", {red, 0, 0, 1});
        if (textured) setTextureParameter(material, "DiffuseTexture", diffuse);
        setTextureParameter(material, "BumpTexture", qe::Ref<Texture>());
        internMaterial(material);
        return material;
    };
    qe::Ref<MaterialData> red = makeMaterial("Lambert", 1, true);
    qe::Ref<MaterialData> redAgain = makeMaterial("Lambert", 1, true);
    qe::Ref<MaterialData> plain = makeMaterial("Phong", 0.25f, false);

    const MaterialGroup bodyGroups[2] = {MaterialGroup(red, 0, 2, kPrimitiveTriangleList),
                                         MaterialGroup(plain, 6, 1, kPrimitiveTriangleList)};
    qe::Ref<Mesh> body = builder.createMesh(vertices, indices, bodyGroups, 2);
    const MaterialGroup capGroups[1] = {MaterialGroup(redAgain, 0, 1, kPrimitiveTriangleList)};
    qe::Ref<Mesh> cap = builder.createMesh(vertices, wide, capGroups, 1);
    qe::Ref<Mesh> unused = builder.createMesh(vertices, indices, capGroups, 1);

    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    const std::array<float, 9> unit3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    skeleton->bones.emplace_back("root", -1, std::array<float, 3>{0, 0, 1}, std::array<float, 4>{0, 0, 0, 1}, unit3,
                                 identity());
    skeleton->bones.emplace_back("spine", 0, std::array<float, 3>{0, 0, 2}, std::array<float, 4>{0, 0.5f, 0, 0.5f},
                                 unit3, identity());
    skeleton->bones.emplace_back("", 1, std::array<float, 3>{}, std::array<float, 4>{0, 0, 0, 1}, unit3, identity());
    SkeletonRecord* skeletonRecord = builder.addSkeleton(skeleton);
    builder.addSkeleton(qe::Ref<AnimSkeleton>(new AnimSkeleton));  // unreachable

    Matrix16 placed = identity();
    placed[13] = -4.0f;
    ModelRecord* model = container.addModel("Hero", placed, skeletonRecord);
    model->meshBindings.push_back({"HeroBody", builder.meshRecordOf(body), identity(), {0, 1, 2}});
    model->meshBindings.push_back({"HeroCap", builder.meshRecordOf(cap), placed, {}});
    container.addModel("", identity(), nullptr);

    auto walk = qe::Ref<Animation>(new Animation("", {"spine", "root"}, 4, 60, 1));
    for (int frame = 0; frame < 4; ++frame)
        for (int bone = 0; bone < 2; ++bone) walk->at(frame, bone) = {{float(frame), float(bone), 0}, {0, 0, 0, 1}};
    container.addAnimation(walk);

    ReadBack back;
    readBack(container, back);
    const KivaFile& file = back.file;

    // Reachability: the unnamed texture comes in through the material, the
    // shared vertex buffer once, equal materials as one row, the unused mesh
    // and the unreferenced skeleton not at all.
    ASSERT_EQ(file.textures.size(), 1u);
    EXPECT_EQ(file.textures[0].name, kNoIndex);
    EXPECT_TRUE(file.textures[0].srgb);
    EXPECT_EQ(file.vertexBuffers.size(), 1u);
    EXPECT_EQ(file.indexBuffers.size(), 2u);
    ASSERT_EQ(file.materials.size(), 2u);
    ASSERT_EQ(file.meshes.size(), 2u);
    ASSERT_EQ(file.skeletons.size(), 1u);
    ASSERT_EQ(file.models.size(), 2u);
    ASSERT_EQ(file.animations.size(), 1u);

    const KivaModel& hero = file.models[0];
    EXPECT_EQ(file.string(hero.name), "Hero");
    EXPECT_EQ(hero.matrix[13], -4.0f);
    ASSERT_EQ(hero.bindings.size(), 2u);
    EXPECT_EQ(file.string(hero.bindings[1].name), "HeroCap");
    EXPECT_EQ(hero.bindings[0].boneMap, (std::vector<std::uint16_t>{0, 1, 2}));
    EXPECT_EQ(file.models[1].skeleton, kNoIndex);
    EXPECT_EQ(file.models[1].name, kNoIndex);

    const KivaMesh& bodyRow = file.meshes[hero.bindings[0].mesh];
    const KivaMesh& capRow = file.meshes[hero.bindings[1].mesh];
    EXPECT_EQ(bodyRow.vertexBuffer, capRow.vertexBuffer);
    EXPECT_EQ(file.vertexBuffers[bodyRow.vertexBuffer].format, 8);
    EXPECT_EQ(file.indexBuffers[capRow.indexBuffer].format, 1);
    ASSERT_EQ(bodyRow.groups.size(), 2u);
    EXPECT_EQ(bodyRow.groups[1].firstIndex, 6u);
    EXPECT_EQ(bodyRow.groups[0].material, capRow.groups[0].material);
    EXPECT_NE(bodyRow.groups[0].material, bodyRow.groups[1].material);

    const KivaMaterial& lambert = file.materials[bodyRow.groups[0].material];
    EXPECT_EQ(file.string(lambert.shader), "Lambert");
    ASSERT_EQ(lambert.vectors.size(), 2u);
    EXPECT_EQ(file.string(lambert.vectors[0].name), "DiffuseColor");  // name order
    EXPECT_EQ(lambert.vectors[0].value[0], 1.0f);
    ASSERT_EQ(lambert.textures.size(), 2u);
    EXPECT_EQ(file.string(lambert.textures[0].name), "BumpTexture");
    EXPECT_EQ(lambert.textures[0].texture, kNoIndex);
    EXPECT_EQ(lambert.textures[1].texture, 0);
    EXPECT_TRUE(lambert.matrices.empty());

    const KivaSkeleton& bones = file.skeletons[hero.skeleton];
    ASSERT_EQ(bones.bones.size(), 3u);
    EXPECT_EQ(bones.bones[0].parent, kNoIndex);
    EXPECT_EQ(bones.bones[2].parent, 1);
    EXPECT_EQ(bones.bones[2].name, kNoIndex);
    EXPECT_EQ(bones.bones[1].rotation[1], 0.5f);

    const KivaAnimation& animation = file.animations[0];
    EXPECT_EQ(animation.frameCount, 4u);
    EXPECT_EQ(animation.framesPerSecondNumerator, 60u);
    // Bone names share string rows with the skeleton's bones.
    EXPECT_EQ(animation.boneNames[0], bones.bones[1].name);
    EXPECT_EQ(animation.boneNames[1], bones.bones[0].name);
    EXPECT_EQ(file.transform(animation, 3, 1).translation[0], 3.0f);
    EXPECT_EQ(file.transform(animation, 3, 1).translation[1], 1.0f);
}

// Containers of random shape: whatever the writer is given within the
// format's limits, the reader accepts the result.
TEST(KivaRoundTripTest, RandomContainersReadBackWithoutFault) {
    std::mt19937 random(77);
    auto pick = [&](std::uint32_t below) { return std::uint32_t(random() % below); };
    for (int round = 0; round < 40; ++round) {
        MaterialCache cache;
        KivaContainer container;
        KivaBuilder builder(&container);
        std::vector<qe::Ref<Texture>> textures;
        for (std::uint32_t t = pick(4); t > 0; --t) {
            const TextureFormat format = TextureFormat(pick(kTextureFormatCount));
            const std::int32_t mips = format == TextureFormat::Invalid ? 0 : std::int32_t(1 + pick(5));
            textures.push_back(builder.createTexture(format, std::int32_t(1 + pick(40)), std::int32_t(1 + pick(40)),
                                                     mips, 7, std::uint8_t(pick(2))));
            if (pick(2)) builder.textureRecordOf(textures.back())->name = "t" + std::to_string(pick(3));
        }
        std::vector<qe::Ref<MaterialData>> materials;
        for (std::uint32_t m = 1 + pick(4); m > 0; --m) {
            qe::Ref<MaterialData> material = createMaterial(&cache, "s" + std::to_string(pick(3)));
            for (std::uint32_t p = pick(4); p > 0; --p)
                setVectorParameter(material, "v" + std::to_string(pick(6)), {float(pick(3)), 0, 0, 1});
            for (std::uint32_t p = textures.empty() ? 0 : pick(3); p > 0; --p)
                setTextureParameter(material, "t" + std::to_string(pick(6)),
                                    textures[pick(std::uint32_t(textures.size()))]);
            if (pick(2)) internMaterial(material);
            materials.push_back(material);
        }
        std::vector<qe::Ref<Mesh>> meshes;
        for (std::uint32_t m = pick(4); m > 0; --m) {
            const std::uint32_t vertexCount = 1 + pick(50), triangles = pick(20);
            qe::Ref<VertexBuffer> vb =
                builder.createVertexBuffer(VertexFormat(pick(kVertexFormatCount)), vertexCount, 0, 0);
            const IndexFormat indexFormat = pick(2) ? IF_UInt32 : IF_UInt16;
            qe::Ref<IndexBuffer> ib = builder.createIndexBuffer(indexFormat, triangles * 3, 0, 0);
            std::vector<std::uint32_t> values(triangles * 3);
            for (auto& value : values) value = pick(vertexCount);
            if (indexFormat == IF_UInt32) {
                ib->writeData(values.data(), values.size() * 4);
            } else {
                std::vector<std::uint16_t> narrow(values.begin(), values.end());
                ib->writeData(narrow.data(), narrow.size() * 2);
            }
            std::vector<MaterialGroup> groups;
            for (std::uint32_t first = 0; first < triangles;) {
                const std::uint32_t count = 1 + pick(triangles - first);
                groups.emplace_back(
                    pick(4) ? materials[pick(std::uint32_t(materials.size()))] : qe::Ref<MaterialData>(), first * 3,
                    count, kPrimitiveTriangleList);
                first += count;
            }
            meshes.push_back(builder.createMesh(vb, ib, groups.data(), std::int32_t(groups.size())));
        }
        auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
        for (std::uint32_t b = pick(6); b > 0; --b) {
            const std::int32_t parent =
                skeleton->bones.empty() ? -1 : std::int32_t(pick(std::uint32_t(skeleton->bones.size())));
            skeleton->bones.emplace_back("b" + std::to_string(pick(8)), parent, std::array<float, 3>{},
                                         std::array<float, 4>{}, std::array<float, 9>{}, identity());
        }
        SkeletonRecord* skeletonRecord = builder.addSkeleton(skeleton);
        for (std::uint32_t m = pick(3); m > 0; --m) {
            const bool skinned = pick(2) != 0;
            ModelRecord* model =
                container.addModel("m" + std::to_string(pick(4)), identity(), skinned ? skeletonRecord : nullptr);
            for (const qe::Ref<Mesh>& mesh : meshes) {
                std::vector<std::uint32_t> boneMap;
                if (skinned)
                    for (std::size_t b = 0; b < skeleton->bones.size(); ++b) boneMap.push_back(std::uint32_t(b));
                if (pick(2)) model->meshBindings.push_back({"", builder.meshRecordOf(mesh), identity(), boneMap});
            }
        }
        std::vector<std::string> boneNames;
        for (std::uint32_t b = pick(4); b > 0; --b) boneNames.push_back(pick(4) ? "b" + std::to_string(pick(8)) : "");
        auto animation =
            qe::Ref<Animation>(new Animation(pick(2) ? "take" : "", boneNames, std::int32_t(1 + pick(5)), 60, 1));
        for (AnimTransform& transform : animation->transforms) transform = {{1, 2, 3}, {0, 0, 0, 1}};
        if (pick(2)) container.addAnimation(animation);

        ReadBack back;
        readBack(container, back);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace tarn::kivaread
