#include "tarn/kiva_container.h"

namespace tarn {

namespace {

template <class T>
T* append(std::vector<std::unique_ptr<T>>& list, std::unique_ptr<T> record) {
    list.push_back(std::move(record));
    return list.back().get();
}

}  // namespace

TextureRecord* KivaContainer::addTexture(std::string name, uint32_t format, uint32_t width, uint32_t height,
                                         uint32_t mipCount, bool srgb, size_t dataSize) {
    auto r = std::make_unique<TextureRecord>();
    r->name = std::move(name);
    r->format = format;
    r->width = width;
    r->height = height;
    r->mipCount = mipCount;
    r->srgb = srgb;
    r->data.resize(dataSize);
    return append(textures_, std::move(r));
}

BufferRecord* KivaContainer::addVertexBuffer(uint32_t format, uint32_t count, size_t dataSize) {
    auto r = std::make_unique<BufferRecord>();
    r->format = format;
    r->count = count;
    r->data.resize(dataSize);
    return append(vertexBuffers_, std::move(r));
}

BufferRecord* KivaContainer::addIndexBuffer(uint32_t format, uint32_t count, size_t dataSize) {
    auto r = std::make_unique<BufferRecord>();
    r->format = format;
    r->count = count;
    r->data.resize(dataSize);
    return append(indexBuffers_, std::move(r));
}

MaterialRecord* KivaContainer::addMaterial(std::string shaderName) {
    auto r = std::make_unique<MaterialRecord>();
    r->shaderName = std::move(shaderName);
    return append(materials_, std::move(r));
}

MeshRecord* KivaContainer::addMesh(const BufferRecord* vertexBuffer, const BufferRecord* indexBuffer,
                                   size_t groupCount) {
    auto r = std::make_unique<MeshRecord>();
    r->vertexBuffer = vertexBuffer;
    r->indexBuffer = indexBuffer;
    r->materialGroups.resize(groupCount);
    return append(meshes_, std::move(r));
}

SkeletonRecord* KivaContainer::addSkeleton(qe::Ref<AnimSkeleton> skeleton) {
    auto r = std::make_unique<SkeletonRecord>();
    r->skeleton = std::move(skeleton);
    return append(skeletons_, std::move(r));
}

ModelRecord* KivaContainer::addModel(std::string name, const Matrix16& matrix, const SkeletonRecord* skeleton) {
    auto r = std::make_unique<ModelRecord>();
    r->name = std::move(name);
    r->matrix = matrix;
    r->skeleton = skeleton;
    return append(models_, std::move(r));
}

AnimationRecord* KivaContainer::addAnimation(qe::Ref<Animation> animation) {
    auto r = std::make_unique<AnimationRecord>();
    r->animation = std::move(animation);
    return append(animations_, std::move(r));
}

void KivaContainer::clear() {
    textures_.clear();
    vertexBuffers_.clear();
    indexBuffers_.clear();
    materials_.clear();
    meshes_.clear();
    skeletons_.clear();
    models_.clear();
    animations_.clear();
}

}  // namespace tarn
