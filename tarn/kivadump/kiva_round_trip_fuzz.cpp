// Containers of any shape within the format's limits, built from the input
// bytes: whatever the writer is given, the reader accepts what it writes.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tarn/kiva_builder.h"
#include "tarn/kiva_writer.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/material_cache.h"

namespace {

using namespace tarn;

Matrix16 identity() {
    Matrix16 matrix{};
    matrix[0] = matrix[5] = matrix[10] = matrix[15] = 1.0f;
    return matrix;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Each choice takes the next input byte; past the end every choice is 0.
    std::size_t next = 0;
    auto pick = [&](std::uint32_t below) { return next < size ? std::uint32_t(data[next++] % below) : 0u; };
    MaterialCache cache;
    KivaContainer container;
    KivaBuilder builder(&container);
    std::vector<qe::Ref<Texture>> textures;
    for (std::uint32_t t = pick(4); t > 0; --t) {
        const TextureFormat format = TextureFormat(pick(kTextureFormatCount));
        const std::int32_t mips = format == TextureFormat::Invalid ? 0 : std::int32_t(1 + pick(5));
        textures.push_back(builder.createTexture(format, std::int32_t(1 + pick(40)), std::int32_t(1 + pick(40)), mips,
                                                 7, std::uint8_t(pick(2))));
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
            groups.emplace_back(pick(4) ? materials[pick(std::uint32_t(materials.size()))] : qe::Ref<MaterialData>(),
                                first * 3, count, kPrimitiveTriangleList);
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

    const SerializedKiva file = serializeKiva(container);
    kivaread::KivaReader reader(file.bytes);
    kivaread::KivaFile read;
    if (file.limit || !reader.read(read)) {
        std::fprintf(stderr, "written file does not read back: %s%s\n", file.limit.passed.c_str(),
                     reader.fault().c_str());
        std::abort();
    }
    return 0;
}
