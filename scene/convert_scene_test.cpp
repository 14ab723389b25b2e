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
#include "tarn/kivadump/kiva_file.h"
#include "tarn/kivadump/kiva_reader.h"
#include "tarn/material_cache.h"
#include "tarn/vertex_format.h"

namespace {

using Vec3 = std::array<double, 3>;
using tarn::kivaread::KivaFile;
using tarn::kivaread::KivaModel;

const std::string kDemo = std::string(KIVA_SOURCE_DIR) + "/examples/scene/demo.fbx";
const std::string kData = std::string(KIVA_SOURCE_DIR) + "/testdata/scene/";

// One conversion with everything it needs, what it reported, and the
// container as written and read back by the independent reader.
struct Conversion {
    std::ostringstream err;
    std::ostringstream messages;  // standard error, where skin warnings go
    ErrorReporter errors{err};
    DependencySet dependencies;
    SettingsStore settings{dependencies, errors};
    tarn::MaterialCache materialCache;
    tarn::KivaContainer container;
    tarn::KivaBuilder builder{&container};
    std::vector<uint8_t> bytes;
    KivaFile file;

    explicit Conversion(const std::string& path, SceneOptions options = {}) {
        std::streambuf* old = std::cerr.rdbuf(messages.rdbuf());
        convertScene(path, options, builder, materialCache, settings, dependencies, errors);
        std::cerr.rdbuf(old);
        bytes = tarn::serializeKiva(container).bytes;
        tarn::kivaread::KivaReader reader(bytes);
        EXPECT_TRUE(reader.read(file)) << reader.fault();
    }
    const tarn::ModelRecord* model(const std::string& name) const {
        for (const auto& m : container.models())
            if (m->name == name) return m.get();
        return nullptr;
    }
    const KivaModel* written(const std::string& name) const {
        for (const KivaModel& m : file.models)
            if (file.string(m.name) == name) return &m;
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
Matrix4 fromRows(const std::vector<double>& rows) {
    Matrix4 m{};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) m[c * 4 + r] = static_cast<float>(rows[r * 4 + c]);
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

double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// Where the attributes of the three vertex formats of scene meshes lie.
struct Layout {
    size_t stride, normal, uv, weights, bones;
};
Layout layoutOf(uint8_t format) {
    switch (format) {
    case 7:
        return {44, 12, 28, 0, 0};
    case 8:
        return {40, 20, 32, 12, 16};
    case 10:
        return {64, 12, 48, 0, 0};
    }
    ADD_FAILURE() << "vertex format " << int(format);
    return {44, 12, 28, 0, 0};
}

// One vertex of a model's meshes in world space.
struct WorldCorner {
    Vec3 position, normal;
    std::array<float, 2> uv;
    std::array<uint8_t, 4> weights{}, bones{};
};

// The vertices of a written model in world space (model matrix, binding
// placement, vertex position), its triangle count and their area.
struct WorldMesh {
    std::vector<WorldCorner> corners;
    size_t triangles = 0;
    double area = 0.0;
};

WorldMesh worldMesh(const KivaFile& file, const KivaModel& model) {
    WorldMesh out;
    for (const tarn::kivaread::KivaMeshBinding& binding : model.bindings) {
        const tarn::kivaread::KivaMesh& mesh = file.meshes[binding.mesh];
        const tarn::kivaread::KivaBuffer& vb = file.vertexBuffers[mesh.vertexBuffer];
        const std::span<const uint8_t> vertices = file.bufferData(vb);
        const std::span<const uint8_t> indices = file.bufferData(file.indexBuffers[mesh.indexBuffer]);
        const Layout layout = layoutOf(vb.format);
        const Matrix4 world = multiply(model.matrix, binding.matrix);
        std::vector<Vec3> positions;
        for (uint32_t v = 0; v < vb.count; ++v) {
            const uint8_t* bytes = vertices.data() + v * layout.stride;
            float p[3], n[3];
            WorldCorner c;
            std::memcpy(p, bytes, sizeof p);
            std::memcpy(n, bytes + layout.normal, sizeof n);
            std::memcpy(c.uv.data(), bytes + layout.uv, sizeof c.uv);
            if (layout.weights) {
                std::memcpy(c.weights.data(), bytes + layout.weights, 4);
                std::memcpy(c.bones.data(), bytes + layout.bones, 4);
            }
            c.position = transformPoint(world, p);
            c.normal = transformNormal(world, n);
            positions.push_back(c.position);
            out.corners.push_back(c);
        }
        for (const tarn::kivaread::KivaMaterialGroup& g : mesh.groups) {
            out.triangles += g.primitiveCount;
            for (uint32_t t = 0; t < g.primitiveCount; ++t) {
                uint16_t i[3];
                std::memcpy(i, indices.data() + 2 * (g.firstIndex + 3 * t), sizeof i);
                const Vec3 &a = positions[i[0]], &b = positions[i[1]], &c = positions[i[2]];
                const Vec3 u{b[0] - a[0], b[1] - a[1], b[2] - a[2]}, w{c[0] - a[0], c[1] - a[1], c[2] - a[2]};
                const Vec3 cross{u[1] * w[2] - u[2] * w[1], u[2] * w[0] - u[0] * w[2], u[0] * w[1] - u[1] * w[0]};
                out.area += std::sqrt(dot(cross, cross)) / 2.0;
            }
        }
    }
    return out;
}

// Every corner Blender has is a vertex of ours and every vertex of ours is a
// corner of Blender's: positions within 1e-4 of the scene's size, normals
// within 0.1 degree, UVs within 1e-4 (V flipped back); the same triangle
// count and area.
void expectSameMesh(const Conversion& c, const std::multimap<std::string, std::vector<double>>& facts,
                    const std::string& name, double scale) {
    SCOPED_TRACE(name);
    const KivaModel* model = c.written(name);
    ASSERT_NE(model, nullptr);
    const WorldMesh ours = worldMesh(c.file, *model);
    const std::vector<double>& counts = facts.find("mesh " + name)->second;
    EXPECT_EQ(ours.triangles, static_cast<size_t>(counts[1] - 2 * counts[0]));
    const double area = facts.find("area " + name)->second[0] * scale * scale;
    EXPECT_NEAR(ours.area, area, 1e-4 * area);
    const double cosTenthDegree = std::cos(0.1 * M_PI / 180.0);
    std::vector<bool> matched(ours.corners.size());
    auto [first, last] = facts.equal_range("corner " + name);
    ASSERT_NE(first, last);
    for (auto it = first; it != last; ++it) {
        const std::vector<double>& f = it->second;
        const Vec3 position{f[0] * scale, f[1] * scale, f[2] * scale}, normal{f[3], f[4], f[5]};
        bool found = false;
        for (size_t i = 0; i < ours.corners.size(); ++i) {
            const WorldCorner& v = ours.corners[i];
            if (distance(v.position, position) > 1e-4 * scale || dot(v.normal, normal) < cosTenthDegree ||
                std::abs(v.uv[0] - f[6]) > 1e-4 || std::abs(1.0 - v.uv[1] - f[7]) > 1e-4)
                continue;
            found = matched[i] = true;
        }
        EXPECT_TRUE(found) << "Blender's corner " << f[0] << " " << f[1] << " " << f[2] << " normal " << f[3] << " "
                           << f[4] << " " << f[5];
    }
    EXPECT_EQ(std::count(matched.begin(), matched.end(), false), 0);
}

void expectNearMatrix(const Matrix4& ours, const Matrix4& blender, const std::string& what) {
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(ours[i], blender[i], 1e-4) << what << " element " << i;
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
    const KivaFile& file = c.file;

    ASSERT_EQ(file.models.size(), 4u);
    for (const char* name : {"Crate", "Wall", "Column", "Worm"}) expectSameMesh(c, facts, name, 1.0);

    // Shaders by the textures of each material; the column's two materials
    // are two groups of one mesh, the worm's skin takes the skinned format.
    auto shaders = [&](const char* name) {
        std::vector<std::string> out;
        for (const auto& b : c.written(name)->bindings)
            for (const auto& g : file.meshes[b.mesh].groups)
                out.emplace_back(file.string(file.materials[g.material].shader));
        return out;
    };
    EXPECT_EQ(shaders("Crate"), std::vector<std::string>{"textured"});
    EXPECT_EQ(shaders("Wall"), std::vector<std::string>{"textured_normal"});
    EXPECT_EQ(shaders("Column"), (std::vector<std::string>{"textured", "solid"}));
    EXPECT_EQ(shaders("Worm"), std::vector<std::string>{"textured"});
    auto formatOf = [&](const char* name) {
        return file.vertexBuffers[file.meshes[c.written(name)->bindings[0].mesh].vertexBuffer].format;
    };
    EXPECT_EQ(formatOf("Wall"), 10);
    EXPECT_EQ(formatOf("Worm"), 8);
    EXPECT_EQ(file.textures.size(), 4u);
    for (const char* texture : {"crate_diffuse.png", "brick_diffuse.png", "brick_normal.png", "worm_diffuse.png"})
        EXPECT_TRUE(c.dependencies.contains(std::string(KIVA_SOURCE_DIR) + "/examples/scene/" + texture)) << texture;
    EXPECT_TRUE(c.dependencies.contains(kDemo));

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

    // The skeleton's bind pose.
    const KivaModel& worm = *c.written("Worm");
    ASSERT_LT(worm.skeleton, file.skeletons.size());
    const auto& bones = file.skeletons[worm.skeleton].bones;
    ASSERT_EQ(bones.size(), 3u);
    for (size_t b = 0; b < bones.size(); ++b) {
        const std::string name(file.string(bones[b].name));
        EXPECT_EQ(bones[b].parent, b == 0 ? tarn::kivaread::kNoIndex : b - 1);
        expectNearMatrix(inverse(bones[b].inverseBind), fromRows(facts.find("bind " + name)->second),
                         "bind of " + name);
    }

    // Weight bytes: Blender's four greatest weights of the vertex, in shares
    // of 255 (each within one of its rounded share), on the same bones.
    for (const WorldCorner& v : worldMesh(file, worm).corners) {
        auto [first, last] = facts.equal_range("weights");
        auto it = std::find_if(first, last, [&](const auto& f) {
            return distance(v.position, Vec3{f.second[0], f.second[1], f.second[2]}) < 1e-4;
        });
        ASSERT_NE(it, last);
        const std::vector<double>& f = it->second;
        double sum = 0.0;
        for (size_t k = 3; k + 1 < f.size() && k < 3 + 8; k += 2) sum += f[k + 1];
        EXPECT_EQ(v.weights[0] + v.weights[1] + v.weights[2] + v.weights[3], 255);
        for (size_t k = 3, slot = 0; k + 1 < f.size() && slot < 4; k += 2, ++slot) {
            EXPECT_EQ(v.bones[slot], f[k]);
            EXPECT_NEAR(v.weights[slot], 255.0 * f[k + 1] / sum, 1.0);
        }
    }

    // Every baked frame reproduces Blender's bone matrices at 60 fps.
    ASSERT_EQ(file.animations.size(), 1u);
    const tarn::kivaread::KivaAnimation& anim = file.animations[0];
    EXPECT_EQ(anim.frameCount, 60u);
    EXPECT_EQ(anim.framesPerSecondNumerator, 60u);
    ASSERT_EQ(anim.boneNames.size(), 3u);
    for (uint32_t frame = 0; frame < anim.frameCount; ++frame) {
        Matrix4 parent = identityMatrix4();
        for (uint16_t b = 0; b < 3; ++b) {
            const tarn::kivaread::KivaTransform t = file.transform(anim, frame, b);
            parent = multiply(parent, localMatrix(t.translation, t.rotation));
            const std::string key = "pose " + std::to_string(frame) + " " + std::string(file.string(anim.boneNames[b]));
            expectNearMatrix(parent, fromRows(facts.find(key)->second), key);
        }
    }
}

TEST(ConvertScene, AxisAndUnitVariantsGiveTheSameWorld) {
    const auto facts = readFacts(kData + "demo.facts");
    const SceneOptions noTextures{.textureMode = TextureMode::Strip};
    Conversion demo(kDemo, noTextures);
    for (auto [file, scale] : {std::pair{"demo_yup_cm.fbx", 1.0}, std::pair{"demo_yup_half.fbx", 0.5}}) {
        SCOPED_TRACE(file);
        // The variants' textures are not beside them: strip them.
        Conversion c(kData + file, noTextures);
        EXPECT_EQ(c.err.str(), "");
        for (const char* name : {"Crate", "Wall", "Column", "Worm"}) {
            expectSameMesh(c, facts, name, scale);
            // Against the Z-up metre file: the same corners within 1e-5.
            const WorldMesh ours = worldMesh(c.file, *c.written(name));
            const WorldMesh reference = worldMesh(demo.file, *demo.written(name));
            ASSERT_EQ(ours.corners.size(), reference.corners.size()) << name;
            for (const WorldCorner& v : ours.corners)
                EXPECT_TRUE(std::any_of(reference.corners.begin(), reference.corners.end(), [&](const WorldCorner& r) {
                    const Vec3 scaled{r.position[0] * scale, r.position[1] * scale, r.position[2] * scale};
                    return distance(v.position, scaled) <= 1e-5 * scale;
                })) << name;
        }
        // Blender keeps its bones under the armature's node, where no
        // skeleton starts: the skin is ignored, with one warning saying why.
        EXPECT_EQ(c.file.skeletons.size(), 0u);
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
    Conversion garbage(dir.write("garbage.fbx", readFile(kDemo).substr(0, 27) + std::string(40, '\xff')));
    EXPECT_TRUE(garbage.container.models().empty());
}

TEST(ConvertScene, FolderOfAPath) {
    EXPECT_EQ(folderOf("art/props/crate.fbx"), "art/props");
    EXPECT_EQ(folderOf("C:\\art\\crate.fbx"), "C:\\art");
    EXPECT_EQ(folderOf("a\\b/c.fbx"), "a\\b");
    EXPECT_EQ(folderOf("crate.fbx"), "crate.fbx");
}

}  // namespace
