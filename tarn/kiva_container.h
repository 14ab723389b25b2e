#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qe/counted.h"
#include "tarn/anim_skeleton.h"
#include "tarn/animation.h"

namespace tarn {

using Matrix16 = std::array<float, 16>;

struct TextureRecord {
    std::string name;  // a texture without a name is written only when a material uses it
    uint32_t format = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t mipCount = 0;
    bool srgb = false;
    std::vector<uint8_t> data;  // all mip levels, level 0 first, in file form
};

// A vertex or index buffer.
struct BufferRecord {
    uint32_t format = 0;
    uint32_t count = 0;
    std::vector<uint8_t> data;
};

struct VectorParameterRecord {
    std::string name;
    std::array<float, 4> value;
};

struct TextureParameterRecord {
    std::string name;
    const TextureRecord* texture;  // may be null
};

struct MatrixParameterRecord {
    std::string name;
    Matrix16 value;
};

struct MaterialRecord {
    std::string shaderName;
    std::vector<VectorParameterRecord> vectorParameters;
    std::vector<TextureParameterRecord> textureParameters;
    std::vector<MatrixParameterRecord> matrixParameters;
};

struct MaterialGroupRecord {
    std::string name;
    const MaterialRecord* material = nullptr;
    uint32_t firstIndex = 0;
    uint32_t primitiveCount = 0;
    uint32_t primitive = 0;
};

struct MeshRecord {
    const BufferRecord* vertexBuffer = nullptr;
    const BufferRecord* indexBuffer = nullptr;
    std::vector<MaterialGroupRecord> materialGroups;
};

// Holds the container's reference to a skeleton.
struct SkeletonRecord {
    qe::Ref<AnimSkeleton> skeleton;
};

// Holds the container's reference to an animation.
struct AnimationRecord {
    qe::Ref<Animation> animation;
};

// Places one mesh in a model.
struct MeshBinding {
    std::string name;
    const MeshRecord* mesh = nullptr;
    Matrix16 matrix{};
    std::vector<uint32_t> boneMap;  // written as 16-bit skeleton positions
};

struct ModelRecord {
    std::string name;
    Matrix16 matrix{};
    const SkeletonRecord* skeleton = nullptr;
    std::vector<MeshBinding> meshBindings;
};

// The records of one output file. Records never move once added, since other
// records point at them; they are freed when the container is cleared or
// destroyed.
class KivaContainer {
public:
    KivaContainer() = default;
    KivaContainer(const KivaContainer&) = delete;
    KivaContainer& operator=(const KivaContainer&) = delete;
    ~KivaContainer() { clear(); }

    // New records; data arrays are dataSize zero bytes.
    TextureRecord* addTexture(std::string name, uint32_t format, uint32_t width, uint32_t height, uint32_t mipCount,
                              bool srgb, size_t dataSize);
    BufferRecord* addVertexBuffer(uint32_t format, uint32_t count, size_t dataSize);
    BufferRecord* addIndexBuffer(uint32_t format, uint32_t count, size_t dataSize);
    MaterialRecord* addMaterial(std::string shaderName);
    MeshRecord* addMesh(const BufferRecord* vertexBuffer, const BufferRecord* indexBuffer, size_t groupCount);
    SkeletonRecord* addSkeleton(qe::Ref<AnimSkeleton> skeleton);
    ModelRecord* addModel(std::string name, const Matrix16& matrix, const SkeletonRecord* skeleton);
    AnimationRecord* addAnimation(qe::Ref<Animation> animation);

    // Frees all records, list by list in the order of the lists below.
    void clear();

    const std::vector<std::unique_ptr<TextureRecord>>& textures() const { return textures_; }
    const std::vector<std::unique_ptr<BufferRecord>>& vertexBuffers() const { return vertexBuffers_; }
    const std::vector<std::unique_ptr<BufferRecord>>& indexBuffers() const { return indexBuffers_; }
    const std::vector<std::unique_ptr<MaterialRecord>>& materials() const { return materials_; }
    const std::vector<std::unique_ptr<MeshRecord>>& meshes() const { return meshes_; }
    const std::vector<std::unique_ptr<SkeletonRecord>>& skeletons() const { return skeletons_; }
    const std::vector<std::unique_ptr<ModelRecord>>& models() const { return models_; }
    const std::vector<std::unique_ptr<AnimationRecord>>& animations() const { return animations_; }

private:
    std::vector<std::unique_ptr<TextureRecord>> textures_;
    std::vector<std::unique_ptr<BufferRecord>> vertexBuffers_;
    std::vector<std::unique_ptr<BufferRecord>> indexBuffers_;
    std::vector<std::unique_ptr<MaterialRecord>> materials_;
    std::vector<std::unique_ptr<MeshRecord>> meshes_;
    std::vector<std::unique_ptr<SkeletonRecord>> skeletons_;
    std::vector<std::unique_ptr<ModelRecord>> models_;
    std::vector<std::unique_ptr<AnimationRecord>> animations_;
};

}  // namespace tarn
