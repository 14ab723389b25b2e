#include "tarn/kiva_writer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tarn/kiva_builder.h"
#include "tarn/kiva_bytes_testing.h"
#include "tarn/material_cache.h"

namespace tarn {
namespace {

using testing::KivaBytes;
using T = KivaBytes::Table;

constexpr uint64_t kNone = 0xFFFFFFFFFFFFFFFFull;

Matrix16 identity() {
    Matrix16 m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

TEST(KivaWriter, EmptyContainerIsTheBareHeader) {
    KivaContainer container;
    KivaBytes file(serializeKiva(container));
    ASSERT_EQ(file.size(), 104u);
    EXPECT_EQ(std::string(file.bytes().begin(), file.bytes().begin() + 4), "aviK");
    EXPECT_EQ(file.u32(4), 0x00030000u);
    for (int t = 0; t < 9; ++t) {
        EXPECT_EQ(file.count(T(t)), 0) << t;
        EXPECT_EQ(file.table(T(t)), kNone) << t;
    }
    for (int i = 26; i < 32; ++i) EXPECT_EQ(file.u8(i), 0) << i;
}

TEST(KivaWriter, TwoByTwoTextureWithTwoLevelsByteForByte) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 0);
    uint8_t level0[16], level1[4] = {0xF0, 0xF1, 0xF2, 0xF3};
    for (int i = 0; i < 16; ++i) level0[i] = static_cast<uint8_t>(0xE0 + i);
    texture->writeLevel(0, level0, 0, 0);
    texture->writeLevel(1, level1, 0, 0);
    builder.textureRecordOf(texture)->name = "crate";

    const std::vector<uint8_t> expected = {
        // header: magic, version, counts (1 string, 1 texture), reserved
        0x61, 0x76, 0x69, 0x4B, 0x00, 0x00, 0x03, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        // string table at 152, texture table at 104, the other seven tables absent
        0x98, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x68, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        // 104: texture row: name 0, format 1, 2 levels, 2 x 2, 20 bytes at 128
        0x00, 0x00, 0x01, 0x02, 0x02, 0x00, 0x02, 0x00, 0x14, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        // 128: texels of both levels, padded to 152
        0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA, 0xEB, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1,
        0xF2, 0xF3, 0x00, 0x00, 0x00, 0x00,
        // 152: string row: length 5, characters at 168
        0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xA8, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        // 168: "crate", terminator, padding
        'c', 'r', 'a', 't', 'e', 0x00, 0x00, 0x00};
    EXPECT_EQ(serializeKiva(container), expected);

    auto srgb = builder.createTexture(TextureFormat::A8R8G8B8, 2, 2, 2, 7, 2);
    container.textures().front()->name.clear();
    builder.textureRecordOf(srgb)->name = "crate";
    KivaBytes file(serializeKiva(container));
    EXPECT_EQ(file.count(T::Textures), 1);
    EXPECT_EQ(file.u8(file.table(T::Textures) + 3), 0x82) << "any non-zero sRGB byte sets the high bit";
}

TEST(KivaWriter, UnnamedTextureThatNothingUsesStaysOut) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::DXT1, 64, 64, 7, 7, 0);  // held while writing
    EXPECT_EQ(serializeKiva(container).size(), 104u);
}

TEST(KivaWriter, PlaceholderTextureHasNoData) {
    KivaContainer container;
    KivaBuilder builder(&container);
    auto texture = builder.createTexture(TextureFormat::Invalid, 0, 0, 0, 7, 0);
    EXPECT_TRUE(builder.textureRecordOf(texture)->data.empty());
    builder.textureRecordOf(texture)->name = "art/crate/skin.kiva";
    KivaBytes file(serializeKiva(container));
    const uint64_t row = file.table(T::Textures);
    EXPECT_EQ(file.stringAt(row), "art/crate/skin.kiva");
    EXPECT_EQ(file.u8(row + 2), 0);
    EXPECT_EQ(file.u8(row + 3), 0);
    EXPECT_EQ(file.u32(row + 4), 0u);
    EXPECT_EQ(file.u64(row + 8), 0u);
    EXPECT_EQ(file.u64(row + 16), kNone);
    EXPECT_EQ(file.table(T::Strings), row + 24) << "no payload between the row and the strings";
}

TEST(KivaWriter, StringPayloadsHoldTheTerminatorAndArePadded) {
    KivaContainer container;
    for (const char* name : {"a", "abcdefg", "abcdefgh"}) container.addTexture(name, 0, 0, 0, 0, false, 0);
    KivaBytes file(serializeKiva(container));
    const uint64_t strings = file.table(T::Strings);
    ASSERT_EQ(file.count(T::Strings), 3);
    EXPECT_EQ(file.u64(strings + 8), strings + 48);
    EXPECT_EQ(file.u64(strings + 16 + 8), strings + 56);
    EXPECT_EQ(file.u64(strings + 32 + 8), strings + 64);
    EXPECT_EQ(file.size(), strings + 80) << "the file ends with the last string";
    EXPECT_EQ(file.string(2), "abcdefgh");
    EXPECT_EQ(file.u8(strings + 64 + 8), 0);
}

TEST(KivaWriter, EqualTextsShareOneStringRowAcrossTables) {
    KivaContainer container;
    container.addTexture("joint", 0, 0, 0, 0, false, 0);
    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    skeleton->bones.push_back(AnimBone("joint", -1, {}, {0, 0, 0, 1}, {}, {}));
    ModelRecord* model = container.addModel("joint", identity(), container.addSkeleton(skeleton));
    model->meshBindings.push_back({"", nullptr, identity(), {}});
    container.addAnimation(qe::Ref<Animation>(new Animation("", {"joint"}, 1, 60, 1)));
    container.addAnimation(qe::Ref<Animation>(new Animation("", {"joint"}, 1, 60, 1)));
    KivaBytes file(serializeKiva(container));
    EXPECT_EQ(file.count(T::Strings), 1);
    EXPECT_EQ(file.u16(file.table(T::Models)), 0);
    const uint64_t bindings = file.u64(file.table(T::Models) + 72);
    EXPECT_EQ(file.u16(bindings), 0xFFFF) << "an empty name is no string";
    EXPECT_EQ(file.u16(file.u64(file.table(T::Skeletons) + 8)), 0);
    const uint64_t animations = file.table(T::Animations);
    const uint64_t names0 = file.u64(animations + 16), names1 = file.u64(animations + 32 + 16);
    EXPECT_NE(names0, names1) << "each animation has its own array of indices";
    EXPECT_EQ(file.u16(names0), 0);
    EXPECT_EQ(file.u16(names1), 0);
}

TEST(KivaWriter, StringTableHoldsAtMost65535Entries) {
    std::vector<std::string> names;
    for (int i = 0; i < 65535; ++i) names.push_back("b" + std::to_string(i));
    {
        KivaContainer container;
        container.addAnimation(qe::Ref<Animation>(new Animation("", names, 0, 60, 1)));
        KivaBytes file(serializeKiva(container));
        EXPECT_EQ(file.count(T::Strings), 65535);
        EXPECT_EQ(file.string(65534), "b65534");
    }
    KivaContainer container;
    container.addAnimation(qe::Ref<Animation>(new Animation("walk", names, 0, 60, 1)));
    try {
        serializeKiva(container);
        FAIL() << "no error";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "too many strings");
    }
}

TEST(KivaWriter, ObjectTablesHoldAtMost65535Rows) {
    KivaContainer container;
    for (int i = 0; i < 65535; ++i) container.addModel("", identity(), nullptr);
    EXPECT_EQ(KivaBytes(serializeKiva(container)).count(T::Models), 65535);
    container.addModel("", identity(), nullptr);
    try {
        serializeKiva(container);
        FAIL() << "no error";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "too many");
    }
}

TEST(KivaWriter, ListsInsideRowsAndTextureSidesMustFitSixteenBits) {
    auto expectError = [](const KivaContainer& container, const char* text) {
        try {
            serializeKiva(container);
            ADD_FAILURE() << "no error";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), text);
        }
    };
    {
        KivaContainer container;
        auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
        skeleton->bones.resize(65536);
        container.addModel("", identity(), container.addSkeleton(skeleton));
        expectError(container, "too many");
        skeleton->bones.resize(65535);
        KivaBytes file(serializeKiva(container));
        EXPECT_EQ(file.u16(file.table(T::Skeletons)), 65535);
        EXPECT_EQ(file.size(), file.table(T::Skeletons) + 16 + 65535 * 132 + 4) << "no strings, 4 bytes padding";
    }
    {
        KivaContainer container;
        container.addModel("", identity(), nullptr)->meshBindings.resize(65536);
        expectError(container, "too many");
    }
    KivaContainer container;
    container.addTexture("wide", 0, 65536, 1, 0, false, 0);
    expectError(container, "texture too large");
}

// A model with one binding of a mesh with two groups over one material.
struct SceneFixture : ::testing::Test {
    KivaContainer container;
    KivaBuilder builder{&container};
    MaterialCache cache;

    qe::Ref<MaterialData> material(const char* shader, float r) {
        auto m = createMaterial(&cache, shader);
        setVectorParameter(m, "Colour", {r, 0, 0, 1});
        return m;
    }

    qe::Ref<Mesh> mesh(const qe::Ref<VertexBuffer>& vb, const qe::Ref<IndexBuffer>& ib,
                       std::vector<MaterialGroup> groups) {
        return builder.createMesh(vb, ib, groups.data(), static_cast<int32_t>(groups.size()));
    }

    ModelRecord* model(const char* name, std::initializer_list<qe::Ref<Mesh>> meshes) {
        ModelRecord* m = container.addModel(name, identity(), nullptr);
        for (const auto& me : meshes) m->meshBindings.push_back({name, builder.meshRecordOf(me), identity(), {}});
        return m;
    }
};

TEST_F(SceneFixture, OnlyWhatAModelReachesIsWritten) {
    auto vb = builder.createVertexBuffer(VertexFormat::Position3, 3, 0, 0);
    auto ib = builder.createIndexBuffer(IF_UInt16, 3, 0, 0);
    auto unusedVb = builder.createVertexBuffer(VertexFormat::Position3, 3, 0, 0);
    auto texture = builder.createTexture(TextureFormat::R8, 4, 4, 1, 7, 0);  // unnamed, reached by a material
    auto unusedTexture = builder.createTexture(TextureFormat::R8, 4, 4, 1, 7, 0);
    auto m = material("lit", 1);
    setTextureParameter(m, "DiffuseTexture", texture);
    auto used = mesh(vb, ib, {MaterialGroup(m, 0, 1, kPrimitiveTriangleList)});
    auto unused = mesh(unusedVb, ib, {MaterialGroup(material("other", 2), 0, 1, kPrimitiveTriangleList)});
    container.addSkeleton(qe::Ref<AnimSkeleton>(new AnimSkeleton));  // no model refers to it
    model("crate", {used});

    KivaBytes file(serializeKiva(container));
    EXPECT_EQ(file.count(T::Models), 1);
    EXPECT_EQ(file.count(T::Meshes), 1);
    EXPECT_EQ(file.count(T::VertexBuffers), 1);
    EXPECT_EQ(file.count(T::IndexBuffers), 1);
    EXPECT_EQ(file.count(T::Materials), 1);
    EXPECT_EQ(file.count(T::Textures), 1);
    EXPECT_EQ(file.count(T::Skeletons), 0);
    EXPECT_EQ(file.table(T::Skeletons), kNone);
    EXPECT_EQ(file.stringAt(file.table(T::Materials)), "lit");
    EXPECT_EQ(file.u16(file.u64(file.table(T::Materials) + 16) + 2), 0) << "the texture's row";
}

TEST_F(SceneFixture, SharedBufferAndEqualMaterialsAreWrittenOnce) {
    auto vb = builder.createVertexBuffer(VertexFormat::Position3Normal3, 4, 0, 0);
    auto ib1 = builder.createIndexBuffer(IF_UInt16, 6, 0, 0);
    auto ib2 = builder.createIndexBuffer(IF_UInt16, 3, 0, 0);
    // Equal by value, built apart and never interned.
    auto a = mesh(vb, ib1, {MaterialGroup(material("lit", 1), 0, 1, 2), MaterialGroup(material("lit", 1), 3, 1, 2)});
    auto b = mesh(vb, ib2, {MaterialGroup(material("lit", 1), 0, 1, 2), MaterialGroup({}, 0, 1, 2)});
    model("left", {a, b});
    model("right", {b});

    KivaBytes file(serializeKiva(container));
    EXPECT_EQ(file.count(T::Meshes), 2);
    EXPECT_EQ(file.count(T::VertexBuffers), 1);
    EXPECT_EQ(file.count(T::IndexBuffers), 2);
    EXPECT_EQ(file.count(T::Materials), 1);
    const uint64_t meshes = file.table(T::Meshes);
    EXPECT_EQ(file.u16(meshes), 0);
    EXPECT_EQ(file.u16(meshes + 16), 0);
    EXPECT_EQ(file.u16(meshes + 16 + 2), 1);
    const uint64_t groupsB = file.u64(meshes + 16 + 8);
    EXPECT_EQ(file.u16(groupsB + 2), 0);
    EXPECT_EQ(file.u16(groupsB + 16 + 2), 0xFFFF) << "a group without material";
}

TEST_F(SceneFixture, MeshAndGroupRowsAreSixteenBytes) {
    auto vb = builder.createVertexBuffer(VertexFormat::Position3, 3, 0, 0);
    auto ib = builder.createIndexBuffer(IF_UInt16, 5, 0, 0);
    MaterialGroup group(material("lit", 1), 7, 9, kPrimitiveTriangleList);
    group.name = "hull";
    auto withGroups = mesh(vb, ib, {group});
    auto bare = mesh({}, {}, {});
    model("m", {withGroups, bare});

    KivaBytes file(serializeKiva(container));
    const uint64_t meshes = file.table(T::Meshes);
    ASSERT_EQ(file.count(T::Meshes), 2);
    EXPECT_EQ(file.u16(meshes + 0), 0);
    EXPECT_EQ(file.u16(meshes + 2), 0);
    EXPECT_EQ(file.u16(meshes + 4), 1);
    EXPECT_EQ(file.u16(meshes + 6), 0);
    const uint64_t groups = file.u64(meshes + 8);
    EXPECT_EQ(groups % 8, 0u);
    EXPECT_EQ(file.stringAt(groups), "hull");
    EXPECT_EQ(file.u16(groups + 2), 0);
    EXPECT_EQ(file.u32(groups + 4), 7u);
    EXPECT_EQ(file.u32(groups + 8), 9u);
    EXPECT_EQ(file.u8(groups + 12), 2);
    EXPECT_EQ(file.u8(groups + 13) | file.u8(groups + 14) | file.u8(groups + 15), 0);
    EXPECT_EQ(groups + 16, file.table(T::Materials)) << "material table follows the last group";
    // The mesh without buffers and groups.
    EXPECT_EQ(file.u16(meshes + 16), 0xFFFF);
    EXPECT_EQ(file.u16(meshes + 18), 0xFFFF);
    EXPECT_EQ(file.u16(meshes + 20), 0);
    EXPECT_EQ(file.u64(meshes + 24), kNone);
}

TEST_F(SceneFixture, ModelsWriteMatricesBindingsAndBoneMaps) {
    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    skeleton->bones.push_back(AnimBone("root", -1, {}, {0, 0, 0, 1}, {}, {}));
    skeleton->bones.push_back(AnimBone("arm", 0, {}, {0, 0, 0, 1}, {}, {}));
    SkeletonRecord* holder = container.addSkeleton(skeleton);
    auto m = mesh(builder.createVertexBuffer(VertexFormat::Position3Weights4bBones4bNormal3TexCoord2, 1, 0, 0), {}, {});
    Matrix16 placement = identity();
    placement[12] = 2.5f;
    ModelRecord* skinned = container.addModel("body", identity(), holder);
    skinned->meshBindings.push_back({"skin", builder.meshRecordOf(m), placement, {0, 1}});
    skinned->meshBindings.push_back({"other", builder.meshRecordOf(m), identity(), {}});
    container.addModel("empty", identity(), nullptr);

    KivaBytes file(serializeKiva(container));
    const uint64_t models = file.table(T::Models);
    EXPECT_EQ(models, 104u) << "models come first";
    EXPECT_EQ(file.u16(models + 2), 0);
    EXPECT_EQ(file.u16(models + 4), 2);
    EXPECT_EQ(file.f32(models + 8), 1.0f);
    const uint64_t bindings = file.u64(models + 72);
    EXPECT_EQ(file.stringAt(bindings), "skin");
    EXPECT_EQ(file.u16(bindings + 2), 0);
    EXPECT_EQ(file.u16(bindings + 4), 2);
    EXPECT_EQ(file.f32(bindings + 8 + 4 * 12), 2.5f);
    const uint64_t boneMap = file.u64(bindings + 72);
    EXPECT_EQ(file.u16(boneMap), 0);
    EXPECT_EQ(file.u16(boneMap + 2), 1);
    EXPECT_EQ(file.u16(bindings + 80 + 2), 0) << "the same mesh twice is one row";
    EXPECT_EQ(file.u64(bindings + 80 + 72), kNone);
    EXPECT_EQ(file.u16(models + 80 + 2), 0xFFFF) << "no skeleton";
    EXPECT_EQ(file.u16(models + 80 + 4), 0);
    EXPECT_EQ(file.u64(models + 80 + 72), kNone);
    EXPECT_EQ(file.count(T::Skeletons), 1);
}

TEST(KivaWriter, BonesAre132BytesWithTheirTransforms) {
    KivaContainer container;
    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    std::array<float, 16> inverse{};
    for (int i = 0; i < 16; ++i) inverse[i] = 100.0f + i;
    skeleton->bones.push_back(AnimBone("", -1, {1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14, 15, 16}, inverse));
    skeleton->bones.push_back(AnimBone("tip", 0, {}, {0, 0, 0, 1}, {}, {}));
    container.addModel("rig", identity(), container.addSkeleton(skeleton));

    KivaBytes file(serializeKiva(container));
    const uint64_t row = file.table(T::Skeletons);
    EXPECT_EQ(file.u16(row), 2);
    const uint64_t bones = file.u64(row + 8);
    EXPECT_EQ(file.u16(bones), 0xFFFF) << "empty name";
    EXPECT_EQ(file.u16(bones + 2), 0xFFFF) << "root";
    for (int i = 0; i < 3; ++i) EXPECT_EQ(file.f32(bones + 4 + 4 * i), 1.0f + i);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(file.f32(bones + 16 + 4 * i), 4.0f + i);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(file.f32(bones + 32 + 4 * i), 8.0f + i);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(file.f32(bones + 68 + 4 * i), 100.0f + i);
    EXPECT_EQ(file.stringAt(bones + 132), "tip");
    EXPECT_EQ(file.u16(bones + 132 + 2), 0);
    EXPECT_EQ(bones + 264, file.table(T::Strings)) << "264 bytes are already a multiple of 8";
}

TEST(KivaWriter, AnimationTransformsAreFrameMajor) {
    KivaContainer container;
    auto animation = qe::Ref<Animation>(new Animation("", {"hip", "knee"}, 3, 60, 1));
    ASSERT_EQ(animation->transforms.size(), 6u);
    for (int f = 0; f < 3; ++f)
        for (int b = 0; b < 2; ++b) animation->at(f, b) = {{float(f), float(b), 0}, {0, 0, 0, 1}};
    container.addAnimation(animation);
    container.addAnimation(qe::Ref<Animation>(new Animation("", {}, 1, 60, 1)));

    KivaBytes file(serializeKiva(container));
    const uint64_t row = file.table(T::Animations);
    ASSERT_EQ(file.count(T::Animations), 2);
    EXPECT_EQ(file.u16(row), 0xFFFF);
    EXPECT_EQ(file.u16(row + 2), 2);
    EXPECT_EQ(file.u32(row + 4), 3u);
    EXPECT_EQ(file.u32(row + 8), 60u);
    EXPECT_EQ(file.u32(row + 12), 1u);
    const uint64_t names = file.u64(row + 16);
    EXPECT_EQ(file.string(file.u16(names)), "hip");
    EXPECT_EQ(file.string(file.u16(names + 2)), "knee");
    const uint64_t transforms = file.u64(row + 24);
    EXPECT_EQ(transforms, names + 8);
    const uint64_t last = transforms + 5 * 28;  // bone 1 of frame 2
    EXPECT_EQ(file.f32(last), 2.0f);
    EXPECT_EQ(file.f32(last + 4), 1.0f);
    EXPECT_EQ(file.f32(last + 24), 1.0f);
    EXPECT_EQ(file.f32(transforms + 28), 0.0f) << "bone 1 of frame 0 follows bone 0";
    EXPECT_EQ(file.f32(transforms + 28 + 4), 1.0f);
    // No bone names: neither names nor transforms.
    EXPECT_EQ(file.u16(row + 32 + 2), 0);
    EXPECT_EQ(file.u64(row + 32 + 16), kNone);
    EXPECT_EQ(file.u64(row + 32 + 24), kNone);
}

TEST_F(SceneFixture, MaterialParametersStandInNameOrder) {
    auto texture = builder.createTexture(TextureFormat::DXT1, 4, 4, 1, 7, 0);
    builder.textureRecordOf(texture)->name = "t";
    auto m = createMaterial(&cache, "lit");
    setVectorParameter(m, "B", {2, 2, 2, 2});
    setVectorParameter(m, "A", {1, 1, 1, 1});
    setVectorParameter(m, "a", {3, 3, 3, 3});
    setTextureParameter(m, "Normal", {});
    setTextureParameter(m, "Diffuse", texture);
    auto vb = builder.createVertexBuffer(VertexFormat::Position3, 3, 0, 0);
    model("m", {mesh(vb, {}, {MaterialGroup(m, 0, 1, 2)})});

    KivaBytes file(serializeKiva(container));
    const uint64_t row = file.table(T::Materials);
    EXPECT_EQ(file.stringAt(row), "lit");
    EXPECT_EQ(file.u16(row + 2), 3);
    EXPECT_EQ(file.u16(row + 4), 2);
    EXPECT_EQ(file.u16(row + 6), 0);
    const uint64_t vectors = file.u64(row + 8);
    EXPECT_EQ(file.stringAt(vectors), "A");
    EXPECT_EQ(file.stringAt(vectors + 20), "B");
    EXPECT_EQ(file.stringAt(vectors + 40), "a");
    EXPECT_EQ(file.f32(vectors + 20 + 4), 2.0f);
    EXPECT_EQ(file.u16(vectors + 2), 0) << "reserved";
    const uint64_t textures = file.u64(row + 16);
    EXPECT_EQ(textures, vectors + 64) << "60 bytes of vectors padded to 64";
    EXPECT_EQ(file.stringAt(textures), "Diffuse");
    EXPECT_EQ(file.u16(textures + 2), 0);
    EXPECT_EQ(file.stringAt(textures + 4), "Normal");
    EXPECT_EQ(file.u16(textures + 6), 0xFFFF);
    EXPECT_EQ(file.u64(row + 24), kNone);
}

TEST_F(SceneFixture, BlocksFollowInTheirOrderAndAreAligned) {
    auto texture = builder.createTexture(TextureFormat::DXT5, 5, 5, 2, 7, 0);
    auto m = material("lit", 1);
    setTextureParameter(m, "Diffuse", texture);
    auto skeleton = qe::Ref<AnimSkeleton>(new AnimSkeleton);
    skeleton->bones.push_back(AnimBone("root", -1, {}, {0, 0, 0, 1}, {}, {}));
    auto vb = builder.createVertexBuffer(VertexFormat::Position3Normal3Color4TexCoord4, 5, 0, 0);
    auto ib = builder.createIndexBuffer(IF_UInt16, 3, 0, 0);
    ModelRecord* mr = model("m", {mesh(vb, ib, {MaterialGroup(m, 0, 1, 2)})});
    mr->skeleton = container.addSkeleton(skeleton);
    container.addAnimation(qe::Ref<Animation>(new Animation("", {"root"}, 2, 60, 1)));

    KivaBytes file(serializeKiva(container));
    const T order[] = {T::Models,       T::Meshes,    T::Materials,  T::Textures, T::VertexBuffers,
                       T::IndexBuffers, T::Skeletons, T::Animations, T::Strings};
    uint64_t previous = 0;
    for (T t : order) {
        EXPECT_GT(file.table(t), previous) << t;
        EXPECT_EQ(file.table(t) % 8, 0u) << t;
        EXPECT_EQ(file.count(t), t == T::Strings ? 5 : 1) << t;  // m, lit, Colour, Diffuse, root
        previous = file.table(t);
    }
    const uint64_t vbRow = file.table(T::VertexBuffers);
    EXPECT_EQ(file.u8(vbRow), 7);
    EXPECT_EQ(file.u32(vbRow + 4), 5u);
    EXPECT_EQ(file.u64(vbRow + 8), 220u);
    EXPECT_EQ(file.u64(vbRow + 16), vbRow + 24);
    EXPECT_EQ(file.table(T::IndexBuffers), vbRow + 24 + 224);
    EXPECT_FALSE(file.outOfRange());
}

}  // namespace
}  // namespace tarn
