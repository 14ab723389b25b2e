#include "scene/convert_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "convert/settings_store.h"
#include "qe/scratch_dir_testing.h"
#include "scene/matrix4.h"
#include "tarn/kiva_builder.h"
#include "tarn/kiva_container.h"
#include "tarn/kiva_writer.h"
#include "tarn/material_cache.h"
#include "tarn/vertex_format.h"

namespace {

using Vec3 = std::array<double, 3>;

const std::string kDemo = std::string(KIVA_SOURCE_DIR) + "/examples/scene/demo.fbx";
const std::string kData = std::string(KIVA_SOURCE_DIR) + "/testdata/scene/";

// One conversion with everything it needs, and what it reported.
struct Conversion {
    std::ostringstream err;
    std::ostringstream messages;  // standard error, where skin warnings go
    ErrorReporter errors{err};
    DependencySet dependencies;
    SettingsStore settings{dependencies, errors};
    tarn::MaterialCache materialCache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};

    explicit Conversion(const std::string& path, SceneOptions options = {}) {
        std::streambuf* old = std::cerr.rdbuf(messages.rdbuf());
        convertScene(path, options, builder, materialCache, settings, dependencies, errors);
        std::cerr.rdbuf(old);
    }
    const tarn::ModelRecord* model(const std::string& name) const {
        for (const auto& m : container.models())
            if (m->name == name) return m.get();
        return nullptr;
    }
};

// What Blender says about the demo scene: "key: values" lines.
std::multimap<std::string, std::vector<double>> readFacts(const std::string& path) {
    std::multimap<std::string, std::vector<double>> facts;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        size_t colon = line.find(": ");
        std::istringstream values(line.substr(colon + 2));
        std::vector<double> v;
        for (double x; values >> x;) v.push_back(x);
        facts.emplace(line.substr(0, colon), v);
    }
    return facts;
}

// Blender's matrices are written row by row; ours are column-major.
Matrix4 fromRows(const std::vector<double>& rows, double scale = 1.0) {
    Matrix4 m{};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) m[c * 4 + r] = static_cast<float>(rows[r * 4 + c] * (r < 3 ? scale : 1.0));
    return m;
}

Vec3 transformPoint(const Matrix4& m, const float* p) {
    Vec3 out;
    for (int r = 0; r < 3; ++r) out[r] = m[r] * p[0] + m[4 + r] * p[1] + m[8 + r] * p[2] + m[12 + r];
    return out;
}

// A normal through the inverse transpose of the upper 3 by 3 part.
Vec3 transformNormal(const Matrix4& m, const float* n) {
    Matrix4 inv = inverse(m);
    Vec3 out;
    for (int r = 0; r < 3; ++r) out[r] = inv[r * 4] * n[0] + inv[r * 4 + 1] * n[1] + inv[r * 4 + 2] * n[2];
    double length = std::sqrt(out[0] * out[0] + out[1] * out[1] + out[2] * out[2]);
    for (double& x : out) x /= length;
    return out;
}

double distance(const Vec3& a, const Vec3& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) + (a[2] - b[2]) * (a[2] - b[2]));
}

// One vertex of a model's meshes in world space.
struct WorldCorner {
    Vec3 position, normal;
    std::array<float, 2> uv;
};

std::vector<WorldCorner> worldCorners(const tarn::ModelRecord& model, size_t& triangles) {
    std::vector<WorldCorner> corners;
    triangles = 0;
    for (const tarn::MeshBinding& binding : model.meshBindings) {
        const tarn::BufferRecord& vb = *binding.mesh->vertexBuffer;
        const tarn::VertexFormatInfo& info = tarn::vertexFormatInfo(static_cast<tarn::VertexFormat>(vb.format));
        const Matrix4 world = multiply(model.matrix, binding.matrix);
        for (uint32_t v = 0; v < vb.count; ++v) {
            const uint8_t* bytes = vb.data.data() + static_cast<size_t>(v) * info.stride;
            float p[3], n[3];
            WorldCorner c;
            std::memcpy(p, bytes + info.position, sizeof p);
            std::memcpy(n, bytes + info.normal, sizeof n);
            std::memcpy(c.uv.data(), bytes + info.texCoord[0], sizeof c.uv);
            c.position = transformPoint(world, p);
            c.normal = transformNormal(world, n);
            corners.push_back(c);
        }
        for (const tarn::MaterialGroupRecord& g : binding.mesh->materialGroups) triangles += g.primitiveCount;
    }
    return corners;
}

// Every corner Blender has is a vertex of ours and every vertex of ours is a
// corner of Blender's, within 1e-4 of the scene's size for positions and
// normals and 1e-5 for UVs (V flipped).
void expectSameCorners(const Conversion& c, const std::multimap<std::string, std::vector<double>>& facts,
                       const std::string& name, double scale) {
    SCOPED_TRACE(name);
    const tarn::ModelRecord* model = c.model(name);
    ASSERT_NE(model, nullptr);
    size_t triangles = 0;
    std::vector<WorldCorner> ours = worldCorners(*model, triangles);
    const std::vector<double>& counts = facts.find("mesh " + name)->second;
    EXPECT_EQ(triangles, static_cast<size_t>(counts[1] - 2 * counts[0]));  // every polygon once, fanned
    std::vector<bool> matched(ours.size());
    auto [first, last] = facts.equal_range("corner " + name);
    ASSERT_NE(first, last);
    for (auto it = first; it != last; ++it) {
        const std::vector<double>& f = it->second;
        Vec3 position{f[0] * scale, f[1] * scale, f[2] * scale}, normal{f[3], f[4], f[5]};
        bool found = false;
        for (size_t i = 0; i < ours.size(); ++i) {
            if (distance(ours[i].position, position) > 1e-4 * scale || distance(ours[i].normal, normal) > 1e-4 ||
                std::abs(ours[i].uv[0] - f[6]) > 1e-5 || std::abs(ours[i].uv[1] - (1.0 - f[7])) > 1e-5)
                continue;
            found = matched[i] = true;
        }
        EXPECT_TRUE(found) << "Blender's corner " << f[0] << " " << f[1] << " " << f[2] << " normal " << f[3] << " "
                           << f[4] << " " << f[5];
    }
    EXPECT_EQ(std::count(matched.begin(), matched.end(), false), 0);
}

void expectNearMatrix(const Matrix4& ours, const Matrix4& blender, const std::string& what) {
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(ours[i], blender[i], 1e-5) << what << " element " << i;
}

// A bone's local transform from its translation and rotation quaternion.
Matrix4 localMatrix(const std::array<float, 3>& t, const std::array<float, 4>& q) {
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    Matrix4 m = identityMatrix4();
    m[0] = static_cast<float>(1 - 2 * (y * y + z * z));
    m[1] = static_cast<float>(2 * (x * y + z * w));
    m[2] = static_cast<float>(2 * (x * z - y * w));
    m[4] = static_cast<float>(2 * (x * y - z * w));
    m[5] = static_cast<float>(1 - 2 * (x * x + z * z));
    m[6] = static_cast<float>(2 * (y * z + x * w));
    m[8] = static_cast<float>(2 * (x * z + y * w));
    m[9] = static_cast<float>(2 * (y * z - x * w));
    m[10] = static_cast<float>(1 - 2 * (x * x + y * y));
    m[12] = t[0], m[13] = t[1], m[14] = t[2];
    return m;
}

TEST(ConvertScene, DemoSceneMatchesWhatBlenderEvaluates) {
    Conversion c(kDemo);
    EXPECT_EQ(c.err.str(), "");
    const auto facts = readFacts(kData + "demo.facts");

    ASSERT_EQ(c.container.models().size(), 4u);
    for (const char* name : {"Crate", "Wall", "Column", "Worm"}) expectSameCorners(c, facts, name, 1.0);

    // Shaders by the textures of each material; the column's two materials
    // are two groups of one mesh, the worm's skin takes the skinned format.
    auto shaders = [&](const char* name) {
        std::vector<std::string> out;
        for (const tarn::MeshBinding& b : c.model(name)->meshBindings)
            for (const tarn::MaterialGroupRecord& g : b.mesh->materialGroups) out.push_back(g.material->shaderName);
        return out;
    };
    EXPECT_EQ(shaders("Crate"), std::vector<std::string>{"textured"});
    EXPECT_EQ(shaders("Wall"), std::vector<std::string>{"textured_normal"});
    EXPECT_EQ(shaders("Column"), (std::vector<std::string>{"textured", "solid"}));
    EXPECT_EQ(shaders("Worm"), std::vector<std::string>{"textured"});
    EXPECT_EQ(c.model("Wall")->meshBindings[0].mesh->vertexBuffer->format,
              static_cast<uint32_t>(tarn::VertexFormat::Position3Normal3Tan3Bin3TexCoord4));
    EXPECT_EQ(c.model("Worm")->meshBindings[0].mesh->vertexBuffer->format,
              static_cast<uint32_t>(tarn::VertexFormat::Position3Weights4bBones4bNormal3TexCoord2));
    EXPECT_EQ(c.container.textures().size(), 4u);
    for (const char* texture : {"crate_diffuse.png", "brick_diffuse.png", "brick_normal.png", "worm_diffuse.png"})
        EXPECT_TRUE(c.dependencies.contains(std::string(KIVA_SOURCE_DIR) + "/examples/scene/" + texture)) << texture;
    EXPECT_TRUE(c.dependencies.contains(kDemo));

    // The skeleton's bind pose, and the bones' world matrices in frames of
    // the bake (Blender's 30 frames per second are every second frame).
    const tarn::ModelRecord& worm = *c.model("Worm");
    ASSERT_NE(worm.skeleton, nullptr);
    const std::vector<tarn::AnimBone>& bones = worm.skeleton->skeleton->bones;
    ASSERT_EQ(bones.size(), 3u);
    std::vector<Matrix4> bind(bones.size());
    for (size_t b = 0; b < bones.size(); ++b) {
        EXPECT_EQ(bones[b].parent, static_cast<int32_t>(b) - 1);
        Matrix4 world = inverse(bones[b].inverseBind);
        expectNearMatrix(world, fromRows(facts.find("bind " + bones[b].name)->second), "bind of " + bones[b].name);
        bind[b] = world;
    }
    ASSERT_EQ(c.container.animations().size(), 1u);
    const tarn::Animation& anim = *c.container.animations()[0]->animation;
    EXPECT_EQ(anim.frameCount, 60);
    EXPECT_EQ(anim.framesPerSecondNumerator, 60u);
    ASSERT_EQ(anim.boneNames, (std::vector<std::string>{"Root", "Middle", "Tip"}));
    for (int blenderFrame : {0, 7, 15, 22, 29}) {
        Matrix4 parent = identityMatrix4();
        for (size_t b = 0; b < 3; ++b) {
            const tarn::AnimTransform& t = anim.transforms[3 * static_cast<size_t>(2 * blenderFrame) + b];
            parent = multiply(parent, localMatrix(t.translation, t.rotation));
            expectNearMatrix(
                parent, fromRows(facts.find("pose " + std::to_string(blenderFrame) + " " + anim.boneNames[b])->second),
                "frame " + std::to_string(blenderFrame) + " " + anim.boneNames[b]);
        }
    }
    // The wall's tangent frame: unit tangents and binormals across its normal.
    const tarn::BufferRecord& wall = *c.model("Wall")->meshBindings[0].mesh->vertexBuffer;
    for (uint32_t v = 0; v < wall.count; ++v) {
        float frame[9];  // normal, tangent, binormal
        std::memcpy(frame, wall.data.data() + v * 64 + 12, sizeof frame);
        for (int k : {3, 6}) {
            EXPECT_NEAR(frame[k] * frame[k] + frame[k + 1] * frame[k + 1] + frame[k + 2] * frame[k + 2], 1.0, 1e-4);
            EXPECT_NEAR(frame[0] * frame[k] + frame[1] * frame[k + 1] + frame[2] * frame[k + 2], 0.0, 1e-4);
        }
    }
    // Every skinned vertex's weights add up to 255.
    const tarn::BufferRecord& vb = *worm.meshBindings[0].mesh->vertexBuffer;
    for (uint32_t v = 0; v < vb.count; ++v) {
        const uint8_t* w = vb.data.data() + v * 40 + 12;
        EXPECT_EQ(w[0] + w[1] + w[2] + w[3], 255);
    }
}

TEST(ConvertScene, AxisAndUnitVariantsGiveTheSameWorld) {
    const auto facts = readFacts(kData + "demo.facts");
    for (auto [file, scale] : {std::pair{"demo_yup_cm.fbx", 1.0}, std::pair{"demo_yup_half.fbx", 0.5}}) {
        SCOPED_TRACE(file);
        // The variants' textures are not beside them: strip them.
        Conversion c(kData + file, SceneOptions{.textureMode = TextureMode::Strip});
        EXPECT_EQ(c.err.str(), "");
        for (const char* name : {"Crate", "Wall", "Column", "Worm"}) expectSameCorners(c, facts, name, scale);
        // Blender keeps its bones under the armature's node, where no
        // skeleton starts: the skin is ignored, with one warning saying why.
        EXPECT_EQ(c.container.skeletons().size(), 0u);
        EXPECT_NE(c.messages.str().find("\"Rig\""), std::string::npos) << c.messages.str();
    }
}

TEST(ConvertScene, OutputIsTheSameOnEveryRun) {
    Conversion a(kDemo), b(kDemo);
    tarn::SerializedKiva first = tarn::serializeKiva(a.container), second = tarn::serializeKiva(b.container);
    EXPECT_FALSE(first.limit);
    EXPECT_EQ(first.bytes, second.bytes);
    // --bake-anims changes nothing.
    Conversion baked(kDemo, SceneOptions{.bakeAnims = true});
    EXPECT_EQ(tarn::serializeKiva(baked.container).bytes, first.bytes);
}

TEST(ConvertScene, OptionsLeaveOutMeshesOrMaterials) {
    // Without meshes the file is read and listed, and adds nothing.
    Conversion noMeshes(kDemo, SceneOptions{.noMeshes = true});
    EXPECT_EQ(noMeshes.err.str(), "");
    EXPECT_TRUE(noMeshes.container.models().empty());
    EXPECT_TRUE(noMeshes.container.textures().empty());
    EXPECT_TRUE(noMeshes.container.animations().empty());
    EXPECT_TRUE(noMeshes.dependencies.contains(kDemo));
    EXPECT_EQ(noMeshes.dependencies.size(), 1u);

    // Without materials every slot keeps its group, with no material, in the
    // plain format, or the skinned one for the worm.
    Conversion noMaterials(kDemo, SceneOptions{.noMaterials = true});
    EXPECT_EQ(noMaterials.err.str(), "");
    EXPECT_TRUE(noMaterials.container.textures().empty());
    for (const auto& model : noMaterials.container.models()) {
        for (const tarn::MeshBinding& b : model->meshBindings) {
            EXPECT_EQ(b.mesh->vertexBuffer->format,
                      static_cast<uint32_t>(model->name == "Worm"
                                                ? tarn::VertexFormat::Position3Weights4bBones4bNormal3TexCoord2
                                                : tarn::VertexFormat::Position3Normal3Color4TexCoord4));
            for (const tarn::MaterialGroupRecord& g : b.mesh->materialGroups) EXPECT_EQ(g.material, nullptr);
        }
    }
    EXPECT_EQ(noMaterials.model("Column")->meshBindings[0].mesh->materialGroups.size(), 2u);
}

TEST(ConvertScene, UnreadableFilesAreReportedAndListed) {
    ScratchDir dir;
    Conversion missing(dir.file("missing.fbx"));
    EXPECT_EQ(missing.errors.errorCount(), 1u);
    EXPECT_EQ(missing.err.str().rfind(dir.file("missing.fbx") + ": Call to FbxImporter::Initialize() failed: ", 0), 0u)
        << missing.err.str();
    EXPECT_TRUE(missing.dependencies.contains(dir.file("missing.fbx")));
    EXPECT_TRUE(missing.container.models().empty());

    // A file that opens but holds no scene adds nothing and reports nothing
    // of its own.
    Conversion garbage(
        dir.write("garbage.fbx", std::string("Kaydara FBX Binary  \0\x1a\0", 23) + std::string(40, '\xff')));
    EXPECT_TRUE(garbage.container.models().empty());
}

TEST(ConvertScene, FolderOfAPath) {
    EXPECT_EQ(folderOf("art/props/crate.fbx"), "art/props");
    EXPECT_EQ(folderOf("C:\\art\\crate.fbx"), "C:\\art");
    EXPECT_EQ(folderOf("a\\b/c.fbx"), "a\\b");
    EXPECT_EQ(folderOf("crate.fbx"), "crate.fbx");
}

}  // namespace
