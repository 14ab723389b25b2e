#pragma once

// Test-side builder of .kiva files, written byte by byte from the layout, so
// that reader tests control every field. Tests fill the public tables, call
// build(), and may then damage single fields of the bytes through poke*() at
// the offsets that layout() reports.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tarn::kivaread::testing {

inline constexpr std::uint16_t kNone = 0xFFFF;

struct TestTexture {
    std::string name;
    std::uint8_t format = 1;
    std::uint8_t mipCount = 1;
    bool srgb = false;
    std::uint16_t width = 1;
    std::uint16_t height = 1;
    std::vector<std::uint8_t> data;
};

struct TestBuffer {
    std::uint8_t format = 0;
    std::uint32_t count = 0;
    std::vector<std::uint8_t> data;
};

struct TestMaterial {
    std::string shader;
    std::vector<std::pair<std::string, std::array<float, 4>>> vectors;
    std::vector<std::pair<std::string, std::uint16_t>> textures;
    std::vector<std::pair<std::string, std::array<float, 16>>> matrices;
};

struct TestGroup {
    std::string name;
    std::uint16_t material = kNone;
    std::uint32_t firstIndex = 0;
    std::uint32_t primitiveCount = 0;
    std::uint8_t primitive = 2;
};

struct TestMesh {
    std::uint16_t vertexBuffer = kNone;
    std::uint16_t indexBuffer = kNone;
    std::vector<TestGroup> groups;
};

struct TestBone {
    std::string name;
    std::uint16_t parent = kNone;
    std::array<float, 32> transform{};  // translation, rotation, scale/shear, inverse bind
};

struct TestSkeleton {
    std::vector<TestBone> bones;
};

struct TestBinding {
    std::string name;
    std::uint16_t mesh = kNone;
    std::array<float, 16> matrix{};
    std::vector<std::uint16_t> boneMap;
};

struct TestModel {
    std::string name;
    std::uint16_t skeleton = kNone;
    std::array<float, 16> matrix{};
    std::vector<TestBinding> bindings;
};

struct TestAnimation {
    std::string name;
    std::vector<std::string> boneNames;
    std::uint32_t frameCount = 1;
    std::uint32_t numerator = 60;
    std::uint32_t denominator = 1;
    std::vector<float> transforms;  // 7 floats per record, frame-major
};

// Where the blocks of the last build() landed.
struct TestLayout {
    std::array<std::uint64_t, 9> tables{};  // row 0 of each table, header order
    std::vector<std::uint64_t> stringCharacters;
    std::vector<std::uint64_t> textureData;
    std::vector<std::uint64_t> vertexData;
    std::vector<std::uint64_t> indexData;
    std::vector<std::array<std::uint64_t, 3>> materialParameters;  // vectors, textures, matrices
    std::vector<std::uint64_t> meshGroups;
    std::vector<std::uint64_t> skeletonBones;
    std::vector<std::uint64_t> modelBindings;
    std::vector<std::vector<std::uint64_t>> bindingBoneMaps;
    std::vector<std::uint64_t> animationBoneNames;
    std::vector<std::uint64_t> animationTransforms;

    // Offset of row `index` of table `table` (header order, 0 = strings).
    std::uint64_t row(int table, std::size_t index) const;
};

class KivaFileBuilder {
public:
    // Strings are entered in this order before any found in the tables.
    std::vector<std::string> strings;
    std::vector<TestTexture> textures;
    std::vector<TestBuffer> vertexBuffers;
    std::vector<TestBuffer> indexBuffers;
    std::vector<TestMaterial> materials;
    std::vector<TestMesh> meshes;
    std::vector<TestSkeleton> skeletons;
    std::vector<TestModel> models;
    std::vector<TestAnimation> animations;

    // Lays the file out: header, the nine tables in header order, their
    // payloads, the characters of the strings last. Names are entered in the
    // string table by content on first use; "" is 0xFFFF.
    std::vector<std::uint8_t> build();
    const TestLayout& layout() const { return layout_; }
    // String index that build() gave a text.
    std::uint16_t stringIndex(const std::string& text) const;

private:
    std::uint16_t intern(const std::string& text);
    std::uint64_t allocate(std::uint64_t size);

    std::vector<std::uint8_t> bytes_;
    std::vector<std::string> table_;
    TestLayout layout_;
};

// A valid file with rows in every table: two named textures (A8R8G8B8 2x2 with
// 2 mip levels in sRGB, DXT1 5x3 with 3 levels) and a placeholder
// ("other.kiva", Invalid); a Position3Normal3 buffer of 4 vertices; an
// IF_UInt16 buffer of 6 indices and an IF_UInt32 one of 3; a material
// "Lambert" with two vectors, a texture and an empty texture parameter and a
// matrix; a material "Phong" without parameters; two meshes; a skeleton
// "root" <- "hip" <- "knee"; a model "Body" with a binding and a model without
// skeleton or bindings; an animation over "root" and "knee" with 3 frames.
KivaFileBuilder sampleKiva();

void poke8(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint8_t value);
void poke16(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint16_t value);
void poke32(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint32_t value);
void poke64(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint64_t value);
void pokeFloat(std::vector<std::uint8_t>& bytes, std::uint64_t at, float value);

}  // namespace tarn::kivaread::testing
