#include "tarn/kivadump/kiva_file_builder_testing.h"

#include <cstring>
#include <stdexcept>

namespace tarn::kivaread::testing {

namespace {

constexpr std::uint64_t kEmpty = 0xFFFFFFFFFFFFFFFFull;
constexpr std::size_t kRowSizes[9] = {16, 24, 24, 24, 32, 16, 16, 80, 32};

}  // namespace

void poke8(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint8_t value) { bytes.at(at) = value; }

void poke16(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint16_t value) {
    for (int i = 0; i < 2; ++i) bytes.at(at + i) = std::uint8_t(value >> (8 * i));
}

void poke32(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes.at(at + i) = std::uint8_t(value >> (8 * i));
}

void poke64(std::vector<std::uint8_t>& bytes, std::uint64_t at, std::uint64_t value) {
    for (int i = 0; i < 8; ++i) bytes.at(at + i) = std::uint8_t(value >> (8 * i));
}

void pokeFloat(std::vector<std::uint8_t>& bytes, std::uint64_t at, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    poke32(bytes, at, bits);
}

std::uint64_t TestLayout::row(int table, std::size_t index) const { return tables[table] + index * kRowSizes[table]; }

std::uint16_t KivaFileBuilder::intern(const std::string& text) {
    if (text.empty()) return kNone;
    for (std::size_t i = 0; i < table_.size(); ++i)
        if (table_[i] == text) return std::uint16_t(i);
    table_.push_back(text);
    return std::uint16_t(table_.size() - 1);
}

std::uint16_t KivaFileBuilder::stringIndex(const std::string& text) const {
    for (std::size_t i = 0; i < table_.size(); ++i)
        if (table_[i] == text) return std::uint16_t(i);
    return kNone;
}

std::uint64_t KivaFileBuilder::allocate(std::uint64_t size) {
    if (size == 0) return kEmpty;
    const std::uint64_t offset = bytes_.size();
    bytes_.resize(offset + (size + 7) / 8 * 8, 0);
    return offset;
}

std::vector<std::uint8_t> KivaFileBuilder::build() {
    bytes_.clear();
    table_.clear();
    layout_ = TestLayout();

    // Strings first, so that every table's names have their indices.
    for (const std::string& text : strings) intern(text);
    for (const TestTexture& texture : textures) intern(texture.name);
    for (const TestMaterial& material : materials) {
        intern(material.shader);
        for (const auto& parameter : material.vectors) intern(parameter.first);
        for (const auto& parameter : material.textures) intern(parameter.first);
        for (const auto& parameter : material.matrices) intern(parameter.first);
    }
    for (const TestMesh& mesh : meshes)
        for (const TestGroup& group : mesh.groups) intern(group.name);
    for (const TestSkeleton& skeleton : skeletons)
        for (const TestBone& bone : skeleton.bones) intern(bone.name);
    for (const TestModel& model : models) {
        intern(model.name);
        for (const TestBinding& binding : model.bindings) intern(binding.name);
    }
    for (const TestAnimation& animation : animations) {
        intern(animation.name);
        for (const std::string& name : animation.boneNames) intern(name);
    }

    const std::size_t counts[9] = {table_.size(),       textures.size(),  vertexBuffers.size(),
                                   indexBuffers.size(), materials.size(), meshes.size(),
                                   skeletons.size(),    models.size(),    animations.size()};
    allocate(104);
    poke32(bytes_, 0, 0x4B697661);
    poke32(bytes_, 4, 0x00030000);
    for (int t = 0; t < 9; ++t) {
        layout_.tables[t] = allocate(counts[t] * kRowSizes[t]);
        poke16(bytes_, 8 + 2 * t, std::uint16_t(counts[t]));
        poke64(bytes_, 32 + 8 * t, layout_.tables[t]);
    }

    for (std::size_t i = 0; i < textures.size(); ++i) {
        const TestTexture& texture = textures[i];
        const std::uint64_t row = layout_.row(1, i);
        const std::uint64_t data = allocate(texture.data.size());
        if (!texture.data.empty()) std::memcpy(&bytes_[data], texture.data.data(), texture.data.size());
        layout_.textureData.push_back(data);
        poke16(bytes_, row, intern(texture.name));
        poke8(bytes_, row + 2, texture.format);
        poke8(bytes_, row + 3, std::uint8_t(texture.mipCount | (texture.srgb ? 0x80 : 0)));
        poke16(bytes_, row + 4, texture.width);
        poke16(bytes_, row + 6, texture.height);
        poke64(bytes_, row + 8, texture.data.size());
        poke64(bytes_, row + 16, data);
    }
    for (int table = 2; table <= 3; ++table) {
        const std::vector<TestBuffer>& buffers = table == 2 ? vertexBuffers : indexBuffers;
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            const TestBuffer& buffer = buffers[i];
            const std::uint64_t row = layout_.row(table, i);
            const std::uint64_t data = allocate(buffer.data.size());
            if (!buffer.data.empty()) std::memcpy(&bytes_[data], buffer.data.data(), buffer.data.size());
            (table == 2 ? layout_.vertexData : layout_.indexData).push_back(data);
            poke8(bytes_, row, buffer.format);
            poke32(bytes_, row + 4, buffer.count);
            poke64(bytes_, row + 8, buffer.data.size());
            poke64(bytes_, row + 16, data);
        }
    }
    for (std::size_t i = 0; i < materials.size(); ++i) {
        const TestMaterial& material = materials[i];
        const std::uint64_t row = layout_.row(4, i);
        const std::uint64_t vectors = allocate(material.vectors.size() * 20);
        for (std::size_t p = 0; p < material.vectors.size(); ++p) {
            poke16(bytes_, vectors + 20 * p, intern(material.vectors[p].first));
            for (int c = 0; c < 4; ++c) pokeFloat(bytes_, vectors + 20 * p + 4 + 4 * c, material.vectors[p].second[c]);
        }
        const std::uint64_t texturesAt = allocate(material.textures.size() * 4);
        for (std::size_t p = 0; p < material.textures.size(); ++p) {
            poke16(bytes_, texturesAt + 4 * p, intern(material.textures[p].first));
            poke16(bytes_, texturesAt + 4 * p + 2, material.textures[p].second);
        }
        const std::uint64_t matrices = allocate(material.matrices.size() * 68);
        for (std::size_t p = 0; p < material.matrices.size(); ++p) {
            poke16(bytes_, matrices + 68 * p, intern(material.matrices[p].first));
            for (int c = 0; c < 16; ++c)
                pokeFloat(bytes_, matrices + 68 * p + 4 + 4 * c, material.matrices[p].second[c]);
        }
        layout_.materialParameters.push_back({vectors, texturesAt, matrices});
        poke16(bytes_, row, intern(material.shader));
        poke16(bytes_, row + 2, std::uint16_t(material.vectors.size()));
        poke16(bytes_, row + 4, std::uint16_t(material.textures.size()));
        poke16(bytes_, row + 6, std::uint16_t(material.matrices.size()));
        poke64(bytes_, row + 8, vectors);
        poke64(bytes_, row + 16, texturesAt);
        poke64(bytes_, row + 24, matrices);
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const TestMesh& mesh = meshes[i];
        const std::uint64_t row = layout_.row(5, i);
        const std::uint64_t groups = allocate(mesh.groups.size() * 16);
        for (std::size_t g = 0; g < mesh.groups.size(); ++g) {
            const TestGroup& group = mesh.groups[g];
            const std::uint64_t at = groups + 16 * g;
            poke16(bytes_, at, intern(group.name));
            poke16(bytes_, at + 2, group.material);
            poke32(bytes_, at + 4, group.firstIndex);
            poke32(bytes_, at + 8, group.primitiveCount);
            poke8(bytes_, at + 12, group.primitive);
        }
        layout_.meshGroups.push_back(groups);
        poke16(bytes_, row, mesh.vertexBuffer);
        poke16(bytes_, row + 2, mesh.indexBuffer);
        poke16(bytes_, row + 4, std::uint16_t(mesh.groups.size()));
        poke64(bytes_, row + 8, groups);
    }
    for (std::size_t i = 0; i < skeletons.size(); ++i) {
        const TestSkeleton& skeleton = skeletons[i];
        const std::uint64_t row = layout_.row(6, i);
        const std::uint64_t bones = allocate(skeleton.bones.size() * 132);
        for (std::size_t b = 0; b < skeleton.bones.size(); ++b) {
            const std::uint64_t at = bones + 132 * b;
            poke16(bytes_, at, intern(skeleton.bones[b].name));
            poke16(bytes_, at + 2, skeleton.bones[b].parent);
            for (int c = 0; c < 32; ++c) pokeFloat(bytes_, at + 4 + 4 * c, skeleton.bones[b].transform[c]);
        }
        layout_.skeletonBones.push_back(bones);
        poke16(bytes_, row, std::uint16_t(skeleton.bones.size()));
        poke64(bytes_, row + 8, bones);
    }
    for (std::size_t i = 0; i < models.size(); ++i) {
        const TestModel& model = models[i];
        const std::uint64_t row = layout_.row(7, i);
        const std::uint64_t bindings = allocate(model.bindings.size() * 80);
        layout_.bindingBoneMaps.emplace_back();
        for (std::size_t b = 0; b < model.bindings.size(); ++b) {
            const TestBinding& binding = model.bindings[b];
            const std::uint64_t at = bindings + 80 * b;
            const std::uint64_t map = allocate(binding.boneMap.size() * 2);
            for (std::size_t m = 0; m < binding.boneMap.size(); ++m) poke16(bytes_, map + 2 * m, binding.boneMap[m]);
            layout_.bindingBoneMaps.back().push_back(map);
            poke16(bytes_, at, intern(binding.name));
            poke16(bytes_, at + 2, binding.mesh);
            poke16(bytes_, at + 4, std::uint16_t(binding.boneMap.size()));
            for (int c = 0; c < 16; ++c) pokeFloat(bytes_, at + 8 + 4 * c, binding.matrix[c]);
            poke64(bytes_, at + 72, map);
        }
        layout_.modelBindings.push_back(bindings);
        poke16(bytes_, row, intern(model.name));
        poke16(bytes_, row + 2, model.skeleton);
        poke16(bytes_, row + 4, std::uint16_t(model.bindings.size()));
        for (int c = 0; c < 16; ++c) pokeFloat(bytes_, row + 8 + 4 * c, model.matrix[c]);
        poke64(bytes_, row + 72, bindings);
    }
    for (std::size_t i = 0; i < animations.size(); ++i) {
        const TestAnimation& animation = animations[i];
        const std::uint64_t row = layout_.row(8, i);
        const std::uint64_t names = allocate(animation.boneNames.size() * 2);
        for (std::size_t b = 0; b < animation.boneNames.size(); ++b)
            poke16(bytes_, names + 2 * b, intern(animation.boneNames[b]));
        const std::uint64_t transforms = allocate(animation.transforms.size() * 4);
        for (std::size_t c = 0; c < animation.transforms.size(); ++c)
            pokeFloat(bytes_, transforms + 4 * c, animation.transforms[c]);
        layout_.animationBoneNames.push_back(names);
        layout_.animationTransforms.push_back(transforms);
        poke16(bytes_, row, intern(animation.name));
        poke16(bytes_, row + 2, std::uint16_t(animation.boneNames.size()));
        poke32(bytes_, row + 4, animation.frameCount);
        poke32(bytes_, row + 8, animation.numerator);
        poke32(bytes_, row + 12, animation.denominator);
        poke64(bytes_, row + 16, names);
        poke64(bytes_, row + 24, transforms);
    }

    // The string table was sized before the tables were filled; every name was
    // entered in the first pass.
    if (table_.size() != counts[0]) throw std::logic_error("string entered after the string table was laid out");
    for (std::size_t i = 0; i < table_.size(); ++i) {
        const std::uint64_t row = layout_.row(0, i);
        const std::uint64_t characters = allocate(table_[i].size() + 1);
        std::memcpy(&bytes_[characters], table_[i].data(), table_[i].size());
        layout_.stringCharacters.push_back(characters);
        poke32(bytes_, row, std::uint32_t(table_[i].size()));
        poke64(bytes_, row + 8, characters);
    }
    return bytes_;
}

namespace {

std::array<float, 16> identity() {
    std::array<float, 16> matrix{};
    matrix[0] = matrix[5] = matrix[10] = matrix[15] = 1.0f;
    return matrix;
}

std::vector<std::uint8_t> sequence(std::size_t size, std::uint8_t start) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = std::uint8_t(start + i);
    return bytes;
}

template <typename T>
std::vector<std::uint8_t> littleEndian(std::initializer_list<T> values) {
    std::vector<std::uint8_t> bytes;
    for (T value : values)
        for (std::size_t i = 0; i < sizeof(T); ++i) bytes.push_back(std::uint8_t(std::uint64_t(value) >> (8 * i)));
    return bytes;
}

}  // namespace

KivaFileBuilder sampleKiva() {
    KivaFileBuilder kiva;
    kiva.textures.push_back({"tex/wood.png", 1, 2, true, 2, 2, sequence(20, 1)});
    kiva.textures.push_back({"tex/stone.png", 4, 3, false, 5, 3, sequence(32, 0x40)});
    kiva.textures.push_back({"other.kiva", 0, 0, false, 0, 0, {}});

    std::vector<float> positions = {0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1};
    std::vector<std::uint8_t> vertices(positions.size() * 4);
    std::memcpy(vertices.data(), positions.data(), vertices.size());
    kiva.vertexBuffers.push_back({4, 4, vertices});
    kiva.indexBuffers.push_back({0, 6, littleEndian<std::uint16_t>({0, 1, 2, 2, 1, 3})});
    kiva.indexBuffers.push_back({1, 3, littleEndian<std::uint32_t>({3, 2, 1})});

    TestMaterial lambert;
    lambert.shader = "Lambert";
    lambert.vectors = {{"AmbientColor", {0.25f, 0.5f, 1, 1}}, {"DiffuseColor", {1, 0.5f, 0.25f, 1}}};
    lambert.textures = {{"DiffuseTexture", 1}, {"NormalTexture", kNone}};
    lambert.matrices = {{"UvTransform", identity()}};
    kiva.materials.push_back(lambert);
    kiva.materials.push_back({"Phong", {}, {}, {}});

    kiva.meshes.push_back({0, 0, {{"", 0, 0, 1, 2}, {"top", 1, 3, 1, 2}}});
    kiva.meshes.push_back({0, 1, {{"", 0, 0, 1, 2}}});

    TestSkeleton skeleton;
    for (const char* name : {"root", "hip", "knee"}) {
        TestBone bone;
        bone.name = name;
        bone.parent = skeleton.bones.empty() ? kNone : std::uint16_t(skeleton.bones.size() - 1);
        bone.transform[2] = float(skeleton.bones.size());  // translation z
        bone.transform[6] = 1;                             // rotation w
        bone.transform[7] = bone.transform[11] = bone.transform[15] = 1;
        const std::array<float, 16> inverse = identity();
        for (int c = 0; c < 16; ++c) bone.transform[16 + c] = inverse[c];
        skeleton.bones.push_back(bone);
    }
    kiva.skeletons.push_back(skeleton);

    TestModel body;
    body.name = "Body";
    body.skeleton = 0;
    body.matrix = identity();
    body.matrix[12] = 2.5f;
    body.bindings.push_back({"BodyShape", 0, identity(), {0, 1, 2}});
    body.bindings.push_back({"", 1, identity(), {}});
    kiva.models.push_back(body);
    kiva.models.push_back({"Empty", kNone, identity(), {}});

    TestAnimation walk;
    walk.name = "walk";
    walk.boneNames = {"root", "knee"};
    walk.frameCount = 3;
    for (int record = 0; record < 6; ++record)
        for (int c = 0; c < 7; ++c) walk.transforms.push_back(float(record * 10 + c));
    kiva.animations.push_back(walk);
    return kiva;
}

}  // namespace tarn::kivaread::testing
