#include "tarn/kivadump/kiva_reader.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "tarn/kivadump/kiva_file_builder_testing.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

std::string faultOf(const std::vector<std::uint8_t>& bytes) {
    KivaReader reader(bytes);
    KivaFile file;
    if (reader.read(file)) return "(no fault)";
    return reader.fault();
}

TEST(KivaReaderTest, ReadsEveryTableOfAValidFile) {
    KivaFileBuilder builder = sampleKiva();
    const std::vector<std::uint8_t> bytes = builder.build();
    KivaReader reader(bytes);
    KivaFile file;
    ASSERT_TRUE(reader.read(file)) << reader.fault();

    EXPECT_EQ(file.header.magic, kMagic);
    EXPECT_EQ(file.header.version, kVersion);
    ASSERT_EQ(file.textures.size(), 3u);
    const KivaTexture& wood = file.textures[0];
    EXPECT_EQ(file.string(wood.name), "tex/wood.png");
    EXPECT_EQ(wood.format, kFormatA8R8G8B8);
    EXPECT_EQ(wood.mipCount, 2);
    EXPECT_TRUE(wood.srgb);
    EXPECT_EQ(wood.dataSize, 20u);
    EXPECT_EQ(file.texelData(wood)[0], 1);
    EXPECT_EQ(file.textures[1].format, kFormatDxt1);
    EXPECT_FALSE(file.textures[1].srgb);
    EXPECT_EQ(file.textures[2].dataOffset, kNoOffset);

    ASSERT_EQ(file.vertexBuffers.size(), 1u);
    EXPECT_EQ(file.vertexBuffers[0].count, 4u);
    ASSERT_EQ(file.indexBuffers.size(), 2u);
    EXPECT_EQ(file.indexBuffers[1].format, 1);

    ASSERT_EQ(file.materials.size(), 2u);
    const KivaMaterial& lambert = file.materials[0];
    EXPECT_EQ(file.string(lambert.shader), "Lambert");
    ASSERT_EQ(lambert.vectors.size(), 2u);
    EXPECT_EQ(file.string(lambert.vectors[1].name), "DiffuseColor");
    EXPECT_EQ(lambert.vectors[1].value[2], 0.25f);
    ASSERT_EQ(lambert.textures.size(), 2u);
    EXPECT_EQ(lambert.textures[0].texture, 1);
    EXPECT_EQ(lambert.textures[1].texture, kNoIndex);
    ASSERT_EQ(lambert.matrices.size(), 1u);
    EXPECT_EQ(lambert.matrices[0].value[15], 1.0f);
    EXPECT_TRUE(file.materials[1].vectors.empty());
    EXPECT_EQ(file.materials[1].vectorOffset, kNoOffset);

    ASSERT_EQ(file.meshes.size(), 2u);
    ASSERT_EQ(file.meshes[0].groups.size(), 2u);
    EXPECT_EQ(file.string(file.meshes[0].groups[1].name), "top");
    EXPECT_EQ(file.meshes[0].groups[1].firstIndex, 3u);
    EXPECT_EQ(file.meshes[0].groups[0].name, kNoIndex);

    ASSERT_EQ(file.skeletons.size(), 1u);
    ASSERT_EQ(file.skeletons[0].bones.size(), 3u);
    EXPECT_EQ(file.skeletons[0].bones[0].parent, kNoIndex);
    EXPECT_EQ(file.skeletons[0].bones[2].parent, 1);
    EXPECT_EQ(file.skeletons[0].bones[2].translation[2], 2.0f);
    EXPECT_EQ(file.skeletons[0].bones[2].rotation[3], 1.0f);

    ASSERT_EQ(file.models.size(), 2u);
    EXPECT_EQ(file.models[0].matrix[12], 2.5f);
    ASSERT_EQ(file.models[0].bindings.size(), 2u);
    EXPECT_EQ(file.models[0].bindings[0].boneMap, (std::vector<std::uint16_t>{0, 1, 2}));
    EXPECT_EQ(file.models[0].bindings[1].boneMapOffset, kNoOffset);
    EXPECT_EQ(file.models[1].skeleton, kNoIndex);
    EXPECT_EQ(file.models[1].bindingOffset, kNoOffset);

    ASSERT_EQ(file.animations.size(), 1u);
    const KivaAnimation& walk = file.animations[0];
    EXPECT_EQ(walk.frameCount, 3u);
    EXPECT_EQ(walk.framesPerSecondNumerator, 60u);
    // Bone names share the string rows of the skeleton's bones.
    EXPECT_EQ(walk.boneNames[0], file.skeletons[0].bones[0].name);
    EXPECT_EQ(walk.boneNames[1], file.skeletons[0].bones[2].name);
    // Frame-major: bone 1 of frame 2 is the last record.
    const KivaTransform last = file.transform(walk, 2, 1);
    EXPECT_EQ(last.translation[0], 50.0f);
    EXPECT_EQ(last.rotation[3], 56.0f);
}

TEST(KivaReaderTest, EmptyContainerIsTheBareHeader) {
    std::vector<std::uint8_t> bytes = KivaFileBuilder().build();
    ASSERT_EQ(bytes.size(), 104u);
    KivaReader reader(bytes);
    KivaFile file;
    ASSERT_TRUE(reader.read(file)) << reader.fault();
    for (int t = 0; t < kTableCount; ++t) EXPECT_EQ(file.header.offsets[t], kNoOffset);
}

TEST(KivaReaderTest, TextureSizesFollowTheMipChain) {
    EXPECT_EQ(textureDataSize(kFormatDxt1, 5, 3, 3), 32u);  // 16 + 8 + 8
    EXPECT_EQ(textureDataSize(kFormatA8R8G8B8, 1, 1, 3), 12u);
    EXPECT_EQ(textureDataSize(kFormatA8R8G8B8, 2, 2, 2), 20u);
    EXPECT_EQ(textureDataSize(kFormatInvalid, 64, 64, 7), 0u);
    EXPECT_EQ(textureDataSize(15 /* D0 */, 64, 64, 1), 0u);
    EXPECT_EQ(textureDataSize(17 /* D24 */, 3, 1, 1), 9u);
    // Level numbers past the width of the shift stay 1x1.
    EXPECT_EQ(textureLevelSize(kFormatDxt5, 65535, 65535, 126), 16u);
}

// Whole-text match where '*' stands for any run of characters.
bool matches(std::string_view pattern, std::string_view text) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] == '*') {
        for (std::size_t skip = 0; skip <= text.size(); ++skip)
            if (matches(pattern.substr(1), text.substr(skip))) return true;
        return false;
    }
    return !text.empty() && pattern[0] == text[0] && matches(pattern.substr(1), text.substr(1));
}

struct Damage {
    const char* what;
    std::function<void(std::vector<std::uint8_t>&, const TestLayout&, const KivaFileBuilder&)> apply;
    std::string fault;
};

TEST(KivaReaderTest, EachDamageGivesItsOwnFaultLine) {
    const std::vector<Damage> damages = {
        {"bad magic", [](auto& b, auto&, auto&) { poke32(b, 0, 0x474E5089); },
         "header: magic: 0x474E5089 is not 0x4B697661 (\"aviK\" on disk)"},
        {"bad version", [](auto& b, auto&, auto&) { poke32(b, 4, 0x00020000); },
         "header: version: 0x20000 is not the supported version 0x30000"},
        {"header reserved", [](auto& b, auto&, auto&) { poke8(b, 28, 1); },
         "header: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"unaligned table", [](auto& b, auto& l, auto&) { poke64(b, 40, l.tables[1] + 4); },
         "header: texture table: offset 0x* is not a multiple of 8"},
        {"table in header", [](auto& b, auto&, auto&) { poke64(b, 48, 8); },
         "header: vertex buffer table: offset 0x8 lies inside the header"},
        {"table past end", [](auto& b, auto&, auto&) { poke16(b, 18, 900); },
         "header: mesh table: 14400 bytes at 0x* run past the end of the file (* bytes)"},
        {"offset of empty table", [](auto& b, auto&, auto&) { poke16(b, 22, 0); },
         "header: model table: offset 0x* given for an empty list, expected 0xFFFFFFFFFFFFFFFF"},
        {"missing offset", [](auto& b, auto&, auto&) { poke64(b, 96, 0xFFFFFFFFFFFFFFFFull); },
         "header: animation table: no offset given for 32 bytes"},
        {"empty string", [](auto& b, auto& l, auto&) { poke32(b, l.row(0, 1), 0); },
         "string 1: length: an empty string stands in the table; empty names are 0xFFFF"},
        {"string reserved", [](auto& b, auto& l, auto&) { poke8(b, l.row(0, 0) + 5, 7); },
         "string 0: reserved: byte 1 of the reserved field is 0x7, not zero"},
        {"unterminated string", [](auto& b, auto& l, auto&) { poke8(b, l.stringCharacters[0] + 12, 'x'); },
         "string 0: characters: no NUL terminator behind the 12 bytes at 0x*"},
        {"string past end",
         [](auto& b, auto& l, auto&) { poke32(b, l.row(0, 0), std::uint32_t(b.size() - l.stringCharacters[0])); },
         "string 0: characters: * bytes at 0x* run past the end of the file (* bytes)"},
        {"shared characters",
         [](auto& b, auto& l, auto&) {
             poke32(b, l.row(0, 1), 12);
             poke64(b, l.row(0, 1) + 8, l.stringCharacters[0]);
         },
         "string 1: characters: 13 bytes at 0x* overlap the block of string 0, characters at 0x*"},
        {"repeated text",
         [](auto& b, auto& l, auto& k) {
             for (int i = 0; i < 3; ++i) poke8(b, l.stringCharacters[k.stringIndex("top")] + i, "hip"[i]);
         },
         "string *: characters: \"hip\" repeats string *"},
        {"texture name out of range", [](auto& b, auto& l, auto&) { poke16(b, l.row(1, 2), 300); },
         "texture 2: name: string index 300 is not below the string count *"},
        {"texture format", [](auto& b, auto& l, auto&) { poke8(b, l.row(1, 0) + 2, 33); },
         "texture 0: format: 33 is not a texture format"},
        {"wrong texel size", [](auto& b, auto& l, auto&) { poke64(b, l.row(1, 1) + 8, 24); },
         "texture 1: data size: 24 bytes, but DXT1 5x3 with 3 mip levels takes 32"},
        {"mip count against data", [](auto& b, auto& l, auto&) { poke8(b, l.row(1, 0) + 3, 0x81); },
         "texture 0: data size: 20 bytes, but A8R8G8B8 2x2 with 1 mip levels takes 16"},
        {"placeholder with data", [](auto& b, auto& l, auto&) { poke64(b, l.row(1, 2) + 8, 8); },
         "texture 2: data size: 8 bytes, but Invalid 0x0 with 0 mip levels takes 0"},
        {"texels past end", [](auto& b, auto& l, auto&) { poke64(b, l.row(1, 0) + 16, b.size() - 8); },
         "texture 0: data offset: 20 bytes at 0x* run past the end of the file (* bytes)"},
        {"unaligned texels", [](auto& b, auto& l, auto&) { poke64(b, l.row(1, 1) + 16, l.textureData[1] + 2); },
         "texture 1: data offset: offset 0x* is not a multiple of 8"},
        {"vertex format", [](auto& b, auto& l, auto&) { poke8(b, l.row(2, 0), 15); },
         "vertex buffer 0: format: 15 is not a vertex format"},
        {"vertex size", [](auto& b, auto& l, auto&) { poke32(b, l.row(2, 0) + 4, 5); },
         "vertex buffer 0: data size: 96 bytes, but 5 vertices of Position3Normal3 take 120"},
        {"buffer reserved", [](auto& b, auto& l, auto&) { poke8(b, l.row(3, 1) + 3, 1); },
         "index buffer 1: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"index format", [](auto& b, auto& l, auto&) { poke8(b, l.row(3, 1), 2); },
         "index buffer 1: format: 2 is not an index format"},
        {"shader out of range", [](auto& b, auto& l, auto&) { poke16(b, l.row(4, 1), 0xFFFE); },
         "material 1: shader: string index 65534 is not below the string count *"},
        {"parameters out of order",
         [](auto& b, auto& l, auto& k) { poke16(b, l.materialParameters[0][0] + 20, k.stringIndex("AmbientColor")); },
         "material 0, vector parameter 1: name: \"AmbientColor\" does not come after the previous parameter's name "
         "\"AmbientColor\" in byte order"},
        {"texture parameter out of range",
         [](auto& b, auto& l, auto&) { poke16(b, l.materialParameters[0][1] + 2, 3); },
         "material 0, texture parameter 0: texture: index 3 is not below the texture count 3"},
        {"matrix parameter reserved", [](auto& b, auto& l, auto&) { poke8(b, l.materialParameters[0][2] + 3, 9); },
         "material 0, matrix parameter 0: reserved: byte 1 of the reserved field is 0x9, not zero"},
        {"parameters past end", [](auto& b, auto& l, auto&) { poke16(b, l.row(4, 0) + 6, 0x7FFF); },
         "material 0: matrix parameters: 2228156 bytes at 0x* run past the end of the file (* bytes)"},
        {"vertex buffer index", [](auto& b, auto& l, auto&) { poke16(b, l.row(5, 0), 1); },
         "mesh 0: vertex buffer: index 1 is not below the vertex buffer count 1"},
        {"index buffer index", [](auto& b, auto& l, auto&) { poke16(b, l.row(5, 1) + 2, 2); },
         "mesh 1: index buffer: index 2 is not below the index buffer count 2"},
        {"mesh reserved", [](auto& b, auto& l, auto&) { poke8(b, l.row(5, 1) + 7, 1); },
         "mesh 1: reserved: byte 1 of the reserved field is 0x1, not zero"},
        {"group material", [](auto& b, auto& l, auto&) { poke16(b, l.meshGroups[0] + 16 + 2, 2); },
         "mesh 0, group 1: material: index 2 is not below the material count 2"},
        {"group primitive", [](auto& b, auto& l, auto&) { poke8(b, l.meshGroups[0] + 12, 4); },
         "mesh 0, group 0: primitive type: 4 is not a triangle list (2)"},
        {"group past index buffer", [](auto& b, auto& l, auto&) { poke32(b, l.meshGroups[0] + 16 + 8, 2); },
         "mesh 0, group 1: primitive count: 2 triangles from index 3 need 9 indices, the index buffer has 6"},
        {"16-bit index value", [](auto& b, auto& l, auto&) { poke16(b, l.indexData[0] + 2 * 5, 4); },
         "mesh 0, group 1: index data: index 5 of index buffer 0 is 4, not below the vertex count 4"},
        {"32-bit index value", [](auto& b, auto& l, auto&) { poke32(b, l.indexData[1], 0x10000); },
         "mesh 1, group 0: index data: index 0 of index buffer 1 is 65536, not below the vertex count 4"},
        {"indices without buffer", [](auto& b, auto& l, auto&) { poke16(b, l.row(5, 1) + 2, kNone); },
         "mesh 1, group 0: primitive count: 1 triangles from index 0 need 3 indices, the index buffer has 0"},
        {"vertices without buffer", [](auto& b, auto& l, auto&) { poke16(b, l.row(5, 1), kNone); },
         "mesh 1, group 0: index data: index 0 of index buffer 1 is 3, not below the vertex count 0"},
        {"skeleton reserved", [](auto& b, auto& l, auto&) { poke8(b, l.row(6, 0) + 4, 1); },
         "skeleton 0: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"parent after child", [](auto& b, auto& l, auto&) { poke16(b, l.skeletonBones[0] + 132 + 2, 2); },
         "skeleton 0, bone 1: parent: bone 2 does not come before its child 1"},
        {"own parent", [](auto& b, auto& l, auto&) { poke16(b, l.skeletonBones[0] + 2, 0); },
         "skeleton 0, bone 0: parent: bone 0 does not come before its child 0"},
        {"parent out of range", [](auto& b, auto& l, auto&) { poke16(b, l.skeletonBones[0] + 2 * 132 + 2, 9); },
         "skeleton 0, bone 2: parent: 9 is not below the bone count 3"},
        {"bone name", [](auto& b, auto& l, auto&) { poke16(b, l.skeletonBones[0], 999); },
         "skeleton 0, bone 0: name: string index 999 is not below the string count *"},
        {"model skeleton", [](auto& b, auto& l, auto&) { poke16(b, l.row(7, 1) + 2, 1); },
         "model 1: skeleton: index 1 is not below the skeleton count 1"},
        {"binding mesh", [](auto& b, auto& l, auto&) { poke16(b, l.modelBindings[0] + 80 + 2, 2); },
         "model 0, binding 1: mesh: index 2 is not below the mesh count 2"},
        {"bone map entry", [](auto& b, auto& l, auto&) { poke16(b, l.bindingBoneMaps[0][0] + 2, 3); },
         "model 0, binding 0: bone map entry 1: bone 3 is not below the bone count 3 of skeleton 0"},
        {"bone map without skeleton", [](auto& b, auto& l, auto&) { poke16(b, l.row(7, 0) + 2, kNone); },
         "model 0, binding 0: bone map entry 0: bone 0 but the model has no skeleton"},
        {"binding reserved", [](auto& b, auto& l, auto&) { poke8(b, l.modelBindings[0] + 6, 1); },
         "model 0, binding 0: reserved: byte 0 of the reserved field is 0x1, not zero"},
        {"animation rate", [](auto& b, auto& l, auto&) { poke32(b, l.row(8, 0) + 12, 0); },
         "animation 0: frames per second denominator: 0 gives no frame rate"},
        {"animation bone name", [](auto& b, auto& l, auto&) { poke16(b, l.animationBoneNames[0] + 2, 40); },
         "animation 0: bone name 1: string index 40 is not below the string count *"},
        {"transforms past end", [](auto& b, auto& l, auto&) { poke32(b, l.row(8, 0) + 4, 1000000); },
         "animation 0: transforms: 56000000 bytes at 0x* run past the end of the file (* bytes)"},
        {"tables overlap", [](auto& b, auto& l, auto&) { poke64(b, 88, l.tables[5]); },
         "header: model table: 160 bytes at 0x* overlap the block of mesh table at 0x*"},
        {"table in a payload", [](auto& b, auto& l, auto&) { poke64(b, 96, l.textureData[0]); },
         "texture 0: data offset: 20 bytes at 0x* overlap the block of animation table at 0x*"},
        {"shared texels",
         [](auto& b, auto& l, auto&) {
             poke64(b, l.row(1, 1) + 8, 20);
             poke8(b, l.row(1, 1) + 2, 1);
             poke16(b, l.row(1, 1) + 4, 2);
             poke16(b, l.row(1, 1) + 6, 2);
             poke8(b, l.row(1, 1) + 3, 2);
             poke64(b, l.row(1, 1) + 16, l.textureData[0]);
         },
         "texture 1: data offset: 20 bytes at 0x* overlap the block of texture 0, data offset at 0x*"},
        {"shared parameters",
         [](auto& b, auto& l, auto&) {
             poke16(b, l.row(4, 1) + 6, 1);
             poke64(b, l.row(4, 1) + 24, l.materialParameters[0][2]);
         },
         "material 1: matrix parameters: 68 bytes at 0x* overlap the block of material 0, matrix parameters at 0x*"},
        {"bone map in the bones",
         [](auto& b, auto& l, auto&) { poke64(b, l.modelBindings[0] + 72, l.skeletonBones[0] + 8); },
         "model 0, binding 0: bone map: 6 bytes at 0x* overlap the block of skeleton 0, bones at 0x*"},
        {"truncated", [](auto& b, auto&, auto&) { b.erase(b.end() - 16, b.end()); },
         "string *: characters: * bytes at 0x* run past the end of the file (* bytes)"},
        {"odd size", [](auto& b, auto&, auto&) { b.push_back(0); }, "file: size: * bytes is not a multiple of 8"},
    };
    for (const Damage& damage : damages) {
        KivaFileBuilder builder = sampleKiva();
        std::vector<std::uint8_t> bytes = builder.build();
        ASSERT_EQ(faultOf(bytes), "(no fault)");
        damage.apply(bytes, builder.layout(), builder);
        const std::string fault = faultOf(bytes);
        EXPECT_TRUE(matches(damage.fault, fault)) << damage.what << ": " << fault;
        EXPECT_EQ(fault.find('\n'), std::string::npos) << damage.what;
    }
}

TEST(KivaReaderTest, ShortAndForeignFilesFailOnTheHeader) {
    EXPECT_EQ(faultOf({}), "header: size: the file has 0 bytes, fewer than the 104 of the header");
    std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    EXPECT_EQ(faultOf(png), "header: size: the file has 8 bytes, fewer than the 104 of the header");
    png.resize(200, 0);
    EXPECT_EQ(faultOf(png), "header: magic: 0x474E5089 is not 0x4B697661 (\"aviK\" on disk)");
}

TEST(KivaReaderTest, EveryTruncationIsAFault) {
    const std::vector<std::uint8_t> bytes = sampleKiva().build();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        std::vector<std::uint8_t> prefix(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
        EXPECT_NE(faultOf(prefix), "(no fault)") << size;
    }
}

// Random bytes and random damage to a valid file never read outside the
// input (the sanitizer build checks) and either read or give one fault line.
TEST(KivaReaderTest, SurvivesRandomBytesAndRandomDamage) {
    std::mt19937 random(1234);
    const std::vector<std::uint8_t> valid = sampleKiva().build();
    for (int round = 0; round < 3000; ++round) {
        std::vector<std::uint8_t> bytes;
        if (round % 3 == 0) {
            bytes.resize(random() % 400);
            for (auto& byte : bytes) byte = std::uint8_t(random());
            if (bytes.size() >= 8 && round % 2) {
                poke32(bytes, 0, kMagic);
                poke32(bytes, 4, kVersion);
            }
        } else {
            bytes = valid;
            const int flips = 1 + int(random() % 4);
            for (int i = 0; i < flips; ++i) bytes[random() % bytes.size()] = std::uint8_t(random());
        }
        KivaReader reader(bytes);
        KivaFile file;
        if (!reader.read(file)) {
            EXPECT_FALSE(reader.fault().empty());
            EXPECT_EQ(reader.fault().find('\n'), std::string::npos);
        }
    }
}

}  // namespace
}  // namespace tarn::kivaread
