// Containers written by the writer read back without fault, with every field
// as it was put in: the reader is the second opinion on each file we write.

#include <gtest/gtest.h>

#include "tarn/kivadump/kiva_sample_testing.h"
#include "tarn/kivadump/texture_extractor.h"

namespace tarn::kivaread {
namespace {

using testing::readKiva;

// Serializes and reads back; the test fails on any fault.
void readBack(const KivaContainer& container, testing::ReadKiva& out) {
    out = readKiva(testing::writeKiva(container));
    ASSERT_EQ(out.fault, "");
}

TEST(KivaRoundTripTest, EmptyContainerIsTheBareHeader) {
    KivaContainer container;
    testing::ReadKiva back;
    readBack(container, back);
    EXPECT_EQ(back.bytes.size(), 104u);
}

TEST(KivaRoundTripTest, SceneWithEveryTableReadsBackFieldByField) {
    const testing::ReadKiva back = readKiva(testing::sampleKiva());
    ASSERT_EQ(back.fault, "");
    const KivaFile& file = back.file;

    // Reachability: named textures in order, the shared vertex buffer once,
    // the material built twice as one row, the unbound mesh and the unused
    // skeleton not at all.
    ASSERT_EQ(file.textures.size(), 3u);
    EXPECT_EQ(file.vertexBuffers.size(), 1u);
    EXPECT_EQ(file.indexBuffers.size(), 2u);
    ASSERT_EQ(file.materials.size(), 2u);
    ASSERT_EQ(file.meshes.size(), 2u);
    ASSERT_EQ(file.skeletons.size(), 1u);
    ASSERT_EQ(file.models.size(), 2u);
    ASSERT_EQ(file.animations.size(), 1u);

    const KivaTexture& wood = file.textures[0];
    EXPECT_EQ(file.string(wood.name), "tex/wood.png");
    EXPECT_TRUE(wood.srgb);
    EXPECT_EQ(wood.mipCount, 2);
    std::vector<std::uint8_t> rgba;
    ASSERT_TRUE(decodeTextureLevel(file, wood, 1, rgba));
    EXPECT_EQ(rgba, (std::vector<std::uint8_t>{17, 18, 19, 20}));
    EXPECT_EQ(file.textures[1].dataSize, 32u);  // DXT1 5x3: 16 + 8 + 8
    EXPECT_EQ(file.textures[2].format, kFormatInvalid);
    EXPECT_EQ(file.textures[2].dataOffset, kNoOffset);

    const KivaModel& body = file.models[0];
    EXPECT_EQ(file.string(body.name), "Body");
    EXPECT_EQ(body.matrix[12], 2.5f);
    ASSERT_EQ(body.bindings.size(), 2u);
    EXPECT_EQ(file.string(body.bindings[0].name), "BodyShape");
    EXPECT_EQ(body.bindings[0].boneMap, (std::vector<std::uint16_t>{0, 1, 2}));
    EXPECT_EQ(body.bindings[1].boneMapOffset, kNoOffset);
    EXPECT_EQ(file.models[1].skeleton, kNoIndex);
    EXPECT_EQ(file.models[1].bindingOffset, kNoOffset);

    const KivaMesh& first = file.meshes[body.bindings[0].mesh];
    const KivaMesh& second = file.meshes[body.bindings[1].mesh];
    EXPECT_EQ(first.vertexBuffer, second.vertexBuffer);
    EXPECT_EQ(file.vertexBuffers[first.vertexBuffer].count, 4u);
    EXPECT_EQ(file.indexBuffers[second.indexBuffer].format, 1);
    ASSERT_EQ(first.groups.size(), 2u);
    EXPECT_EQ(first.groups[0].name, kNoIndex);
    EXPECT_EQ(file.string(first.groups[1].name), "top");
    EXPECT_EQ(first.groups[1].firstIndex, 3u);
    EXPECT_EQ(first.groups[0].material, second.groups[0].material);

    const KivaMaterial& lambert = file.materials[first.groups[0].material];
    EXPECT_EQ(file.string(lambert.shader), "Lambert");
    ASSERT_EQ(lambert.vectors.size(), 2u);
    EXPECT_EQ(file.string(lambert.vectors[1].name), "DiffuseColor");  // name order
    EXPECT_EQ(lambert.vectors[1].value[2], 0.25f);
    ASSERT_EQ(lambert.textures.size(), 2u);
    EXPECT_EQ(lambert.textures[0].texture, 1);
    EXPECT_EQ(lambert.textures[1].texture, kNoIndex);
    ASSERT_EQ(lambert.matrices.size(), 1u);
    EXPECT_EQ(lambert.matrices[0].value[15], 1.0f);
    EXPECT_TRUE(file.materials[first.groups[1].material].vectors.empty());

    const KivaSkeleton& skeleton = file.skeletons[body.skeleton];
    ASSERT_EQ(skeleton.bones.size(), 3u);
    EXPECT_EQ(skeleton.bones[0].parent, kNoIndex);
    EXPECT_EQ(skeleton.bones[2].parent, 1);
    EXPECT_EQ(skeleton.bones[2].translation[2], 2.0f);
    EXPECT_EQ(skeleton.bones[2].rotation[3], 1.0f);

    const KivaAnimation& walk = file.animations[0];
    EXPECT_EQ(walk.frameCount, 3u);
    EXPECT_EQ(walk.framesPerSecondNumerator, 60u);
    // Bone names share string rows with the skeleton's bones.
    EXPECT_EQ(walk.boneNames[0], skeleton.bones[0].name);
    EXPECT_EQ(walk.boneNames[1], skeleton.bones[2].name);
    // Frame-major: bone 1 of frame 2 is the last record.
    EXPECT_EQ(file.transform(walk, 2, 1).translation[0], 50.0f);
    EXPECT_EQ(file.transform(walk, 2, 1).rotation[3], 56.0f);
}

}  // namespace
}  // namespace tarn::kivaread
