#include "tarn/kivadump/kiva_reader.h"

#include <gtest/gtest.h>

#include <functional>

#include "tarn/kivadump/kiva_sample_testing.h"

// What the reader reads from a valid file is checked by the round trip
// through the writer (kiva_round_trip_test.cpp); here every kind of damage.

namespace tarn::kivaread {
namespace {

using namespace testing;

constexpr std::uint16_t kNone = kNoIndex;

std::string faultOf(const std::vector<std::uint8_t>& bytes) {
    const std::string fault = readKiva(bytes).fault;
    return fault.empty() ? "(no fault)" : fault;
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
    std::function<void(std::vector<std::uint8_t>&, const ReadKiva&)> apply;
    std::string fault;
};

TEST(KivaReaderTest, EachDamageGivesItsOwnFaultLine) {
    const std::vector<Damage> damages = {
        {"bad magic", [](auto& b, auto&) { poke32(b, 0, 0x474E5089); },
         "header: magic: 0x474E5089 is not 0x4B697661 (\"aviK\" on disk)"},
        {"bad version", [](auto& b, auto&) { poke32(b, 4, 0x00020000); },
         "header: version: 0x20000 is not the supported version 0x30000"},
        {"header reserved", [](auto& b, auto&) { poke8(b, 28, 1); },
         "header: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"unaligned table", [](auto& b, auto& k) { poke64(b, 40, k.file.header.offsets[1] + 4); },
         "header: texture table: offset 0x* is not a multiple of 8"},
        {"table in header", [](auto& b, auto&) { poke64(b, 48, 8); },
         "header: vertex buffer table: offset 0x8 lies inside the header"},
        {"table past end", [](auto& b, auto&) { poke16(b, 18, 900); },
         "header: mesh table: 14400 bytes at 0x* run past the end of the file (* bytes)"},
        {"offset of empty table", [](auto& b, auto&) { poke16(b, 22, 0); },
         "header: model table: offset 0x* given for an empty list, expected 0xFFFFFFFFFFFFFFFF"},
        {"missing offset", [](auto& b, auto&) { poke64(b, 96, 0xFFFFFFFFFFFFFFFFull); },
         "header: animation table: no offset given for 32 bytes"},
        {"empty string", [](auto& b, auto& k) { poke32(b, k.row(Table::Strings, 1), 0); },
         "string 1: length: an empty string stands in the table; empty names are 0xFFFF"},
        {"string reserved", [](auto& b, auto& k) { poke8(b, k.row(Table::Strings, 0) + 5, 7); },
         "string 0: reserved: byte 1 of the reserved field is 0x7, not zero"},
        {"unterminated string", [](auto& b, auto& k) { poke8(b, k.file.strings[0].offset + 4, 'x'); },
         "string 0: characters: no NUL terminator behind the 4 bytes at 0x*"},
        {"string past end",
         [](auto& b, auto& k) {
             poke32(b, k.row(Table::Strings, 0), std::uint32_t(b.size() - k.file.strings[0].offset));
         },
         "string 0: characters: * bytes at 0x* run past the end of the file (* bytes)"},
        {"shared characters",
         [](auto& b, auto& k) {
             poke32(b, k.row(Table::Strings, 1), 4);
             poke64(b, k.row(Table::Strings, 1) + 8, k.file.strings[0].offset);
         },
         "string 1: characters: 5 bytes at 0x* overlap the block of string 0, characters at 0x*"},
        {"repeated text",
         [](auto& b, auto& k) {
             for (int i = 0; i < 3; ++i) poke8(b, k.file.strings[k.stringIndex("top")].offset + i, "hip"[i]);
         },
         "string *: characters: \"hip\" repeats string *"},
        {"texture name out of range", [](auto& b, auto& k) { poke16(b, k.row(Table::Textures, 2), 300); },
         "texture 2: name: string index 300 is not below the string count *"},
        {"texture format", [](auto& b, auto& k) { poke8(b, k.row(Table::Textures, 0) + 2, 33); },
         "texture 0: format: 33 is not a texture format"},
        {"wrong texel size", [](auto& b, auto& k) { poke64(b, k.row(Table::Textures, 1) + 8, 24); },
         "texture 1: data size: 24 bytes, but DXT1 5x3 with 3 mip levels takes 32"},
        {"mip count against data", [](auto& b, auto& k) { poke8(b, k.row(Table::Textures, 0) + 3, 0x81); },
         "texture 0: data size: 20 bytes, but A8R8G8B8 2x2 with 1 mip levels takes 16"},
        {"placeholder with data", [](auto& b, auto& k) { poke64(b, k.row(Table::Textures, 2) + 8, 8); },
         "texture 2: data size: 8 bytes, but Invalid 0x0 with 0 mip levels takes 0"},
        {"texels past end", [](auto& b, auto& k) { poke64(b, k.row(Table::Textures, 0) + 16, b.size() - 8); },
         "texture 0: data offset: 20 bytes at 0x* run past the end of the file (* bytes)"},
        {"unaligned texels",
         [](auto& b, auto& k) { poke64(b, k.row(Table::Textures, 1) + 16, k.file.textures[1].dataOffset + 2); },
         "texture 1: data offset: offset 0x* is not a multiple of 8"},
        {"vertex format", [](auto& b, auto& k) { poke8(b, k.row(Table::VertexBuffers, 0), 15); },
         "vertex buffer 0: format: 15 is not a vertex format"},
        {"vertex size", [](auto& b, auto& k) { poke32(b, k.row(Table::VertexBuffers, 0) + 4, 5); },
         "vertex buffer 0: data size: 96 bytes, but 5 vertices of Position3Normal3 take 120"},
        {"buffer reserved", [](auto& b, auto& k) { poke8(b, k.row(Table::IndexBuffers, 1) + 3, 1); },
         "index buffer 1: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"index format", [](auto& b, auto& k) { poke8(b, k.row(Table::IndexBuffers, 1), 2); },
         "index buffer 1: format: 2 is not an index format"},
        {"shader out of range", [](auto& b, auto& k) { poke16(b, k.row(Table::Materials, 1), 0xFFFE); },
         "material 1: shader: string index 65534 is not below the string count *"},
        {"parameters out of order",
         [](auto& b, auto& k) { poke16(b, k.file.materials[0].vectorOffset + 20, k.stringIndex("AmbientColor")); },
         "material 0, vector parameter 1: name: \"AmbientColor\" does not come after the previous parameter's name "
         "\"AmbientColor\" in byte order"},
        {"texture parameter out of range",
         [](auto& b, auto& k) { poke16(b, k.file.materials[0].textureOffset + 2, 3); },
         "material 0, texture parameter 0: texture: index 3 is not below the texture count 3"},
        {"matrix parameter reserved", [](auto& b, auto& k) { poke8(b, k.file.materials[0].matrixOffset + 3, 9); },
         "material 0, matrix parameter 0: reserved: byte 1 of the reserved field is 0x9, not zero"},
        {"parameters past end", [](auto& b, auto& k) { poke16(b, k.row(Table::Materials, 0) + 6, 0x7FFF); },
         "material 0: matrix parameters: 2228156 bytes at 0x* run past the end of the file (* bytes)"},
        {"vertex buffer index", [](auto& b, auto& k) { poke16(b, k.row(Table::Meshes, 0), 1); },
         "mesh 0: vertex buffer: index 1 is not below the vertex buffer count 1"},
        {"index buffer index", [](auto& b, auto& k) { poke16(b, k.row(Table::Meshes, 1) + 2, 2); },
         "mesh 1: index buffer: index 2 is not below the index buffer count 2"},
        {"mesh reserved", [](auto& b, auto& k) { poke8(b, k.row(Table::Meshes, 1) + 7, 1); },
         "mesh 1: reserved: byte 1 of the reserved field is 0x1, not zero"},
        {"group material", [](auto& b, auto& k) { poke16(b, k.file.meshes[0].groupOffset + 16 + 2, 2); },
         "mesh 0, group 1: material: index 2 is not below the material count 2"},
        {"group primitive", [](auto& b, auto& k) { poke8(b, k.file.meshes[0].groupOffset + 12, 4); },
         "mesh 0, group 0: primitive type: 4 is not a triangle list (2)"},
        {"group past index buffer", [](auto& b, auto& k) { poke32(b, k.file.meshes[0].groupOffset + 16 + 8, 2); },
         "mesh 0, group 1: primitive count: 2 triangles from index 3 need 9 indices, the index buffer has 6"},
        {"16-bit index value", [](auto& b, auto& k) { poke16(b, k.file.indexBuffers[0].dataOffset + 2 * 5, 4); },
         "mesh 0, group 1: index data: index 5 of index buffer 0 is 4, not below the vertex count 4"},
        {"32-bit index value", [](auto& b, auto& k) { poke32(b, k.file.indexBuffers[1].dataOffset, 0x10000); },
         "mesh 1, group 0: index data: index 0 of index buffer 1 is 65536, not below the vertex count 4"},
        {"indices without buffer", [](auto& b, auto& k) { poke16(b, k.row(Table::Meshes, 1) + 2, kNone); },
         "mesh 1, group 0: primitive count: 1 triangles from index 0 need 3 indices, the index buffer has 0"},
        {"vertices without buffer", [](auto& b, auto& k) { poke16(b, k.row(Table::Meshes, 1), kNone); },
         "mesh 1, group 0: index data: index 0 of index buffer 1 is 3, not below the vertex count 0"},
        {"skeleton reserved", [](auto& b, auto& k) { poke8(b, k.row(Table::Skeletons, 0) + 4, 1); },
         "skeleton 0: reserved: byte 2 of the reserved field is 0x1, not zero"},
        {"parent after child", [](auto& b, auto& k) { poke16(b, k.file.skeletons[0].boneOffset + 132 + 2, 2); },
         "skeleton 0, bone 1: parent: bone 2 does not come before its child 1"},
        {"own parent", [](auto& b, auto& k) { poke16(b, k.file.skeletons[0].boneOffset + 2, 0); },
         "skeleton 0, bone 0: parent: bone 0 does not come before its child 0"},
        {"parent out of range", [](auto& b, auto& k) { poke16(b, k.file.skeletons[0].boneOffset + 2 * 132 + 2, 9); },
         "skeleton 0, bone 2: parent: 9 is not below the bone count 3"},
        {"bone name", [](auto& b, auto& k) { poke16(b, k.file.skeletons[0].boneOffset, 999); },
         "skeleton 0, bone 0: name: string index 999 is not below the string count *"},
        {"model skeleton", [](auto& b, auto& k) { poke16(b, k.row(Table::Models, 1) + 2, 1); },
         "model 1: skeleton: index 1 is not below the skeleton count 1"},
        {"binding mesh", [](auto& b, auto& k) { poke16(b, k.file.models[0].bindingOffset + 80 + 2, 2); },
         "model 0, binding 1: mesh: index 2 is not below the mesh count 2"},
        {"bone map entry", [](auto& b, auto& k) { poke16(b, k.file.models[0].bindings[0].boneMapOffset + 2, 3); },
         "model 0, binding 0: bone map entry 1: bone 3 is not below the bone count 3 of skeleton 0"},
        {"bone map without skeleton", [](auto& b, auto& k) { poke16(b, k.row(Table::Models, 0) + 2, kNone); },
         "model 0, binding 0: bone map entry 0: bone 0 but the model has no skeleton"},
        {"binding reserved", [](auto& b, auto& k) { poke8(b, k.file.models[0].bindingOffset + 6, 1); },
         "model 0, binding 0: reserved: byte 0 of the reserved field is 0x1, not zero"},
        {"animation rate", [](auto& b, auto& k) { poke32(b, k.row(Table::Animations, 0) + 12, 0); },
         "animation 0: frames per second denominator: 0 gives no frame rate"},
        {"animation bone name", [](auto& b, auto& k) { poke16(b, k.file.animations[0].boneNameOffset + 2, 40); },
         "animation 0: bone name 1: string index 40 is not below the string count *"},
        {"transforms past end", [](auto& b, auto& k) { poke32(b, k.row(Table::Animations, 0) + 4, 1000000); },
         "animation 0: transforms: 56000000 bytes at 0x* run past the end of the file (* bytes)"},
        {"tables overlap", [](auto& b, auto& k) { poke64(b, 88, k.file.header.offsets[5]); },
         "header: model table: 160 bytes at 0x* overlap the block of mesh table at 0x*"},
        {"table in a payload", [](auto& b, auto& k) { poke64(b, 96, k.file.textures[0].dataOffset); },
         "texture 0: data offset: 20 bytes at 0x* overlap the block of animation table at 0x*"},
        {"shared texels",
         [](auto& b, auto& k) {
             poke64(b, k.row(Table::Textures, 1) + 8, 20);
             poke8(b, k.row(Table::Textures, 1) + 2, 1);
             poke16(b, k.row(Table::Textures, 1) + 4, 2);
             poke16(b, k.row(Table::Textures, 1) + 6, 2);
             poke8(b, k.row(Table::Textures, 1) + 3, 2);
             poke64(b, k.row(Table::Textures, 1) + 16, k.file.textures[0].dataOffset);
         },
         "texture 1: data offset: 20 bytes at 0x* overlap the block of texture 0, data offset at 0x*"},
        {"shared parameters",
         [](auto& b, auto& k) {
             poke16(b, k.row(Table::Materials, 1) + 6, 1);
             poke64(b, k.row(Table::Materials, 1) + 24, k.file.materials[0].matrixOffset);
         },
         "material 1: matrix parameters: 68 bytes at 0x* overlap the block of material 0, matrix parameters at 0x*"},
        {"bone map in the bones",
         [](auto& b, auto& k) { poke64(b, k.file.models[0].bindingOffset + 72, k.file.skeletons[0].boneOffset + 8); },
         "model 0, binding 0: bone map: 6 bytes at 0x* overlap the block of skeleton 0, bones at 0x*"},
        {"truncated", [](auto& b, auto&) { b.erase(b.end() - 16, b.end()); },
         "string *: characters: * bytes at 0x* run past the end of the file (* bytes)"},
        {"odd size", [](auto& b, auto&) { b.push_back(0); }, "file: size: * bytes is not a multiple of 8"},
    };
    const ReadKiva sample = readKiva(sampleKiva());
    ASSERT_EQ(sample.fault, "");
    for (const Damage& damage : damages) {
        std::vector<std::uint8_t> bytes = sample.bytes;
        damage.apply(bytes, sample);
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
    const std::vector<std::uint8_t> bytes = sampleKiva();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        std::vector<std::uint8_t> prefix(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
        EXPECT_NE(faultOf(prefix), "(no fault)") << size;
    }
}

}  // namespace
}  // namespace tarn::kivaread
