// Files exported by Blender (testdata/fbx/blender, see its README): every
// level and value reads, and a few facts of each scene come out as exported.
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_field_walk_testing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string BlenderPath(const char* name) { return std::string(KIVA_SOURCE_DIR) + "/testdata/fbx/blender/" + name; }

class BlenderFiles : public ::testing::Test {
protected:
    bool Open(const char* name, uint32_t cacheKiB = 8) {
        stream.SetFbx7Mode(true);
        stream.SetCacheSize(cacheKiB);
        bool ok = stream.OpenFile(BlenderPath(name).c_str(), nullptr, true, false, &info);
        EXPECT_TRUE(ok) << name << ": " << stream.GetStatus().GetErrorString();
        return ok;
    }
    // Enters Objects and takes the object of the given kind and two-part name.
    bool EnterObject(const char* kind, const char* name) {
        for (int i = 0; i < stream.FieldInstanceCount(kind); ++i) {
            if (!stream.BeginField(kind, i)) return false;
            stream.NextLong();
            if (std::string(stream.NextString()) == name) return stream.EnterBlock();
            stream.EndField();
        }
        return false;
    }
    std::vector<int> Ints(const char* field) {
        int n = 0;
        const int* p = stream.NextIntArray(field, n);
        return p ? std::vector<int>(p, p + n) : std::vector<int>();
    }
    std::vector<double> Doubles(const char* field) {
        int n = 0;
        const double* p = stream.NextDoubleArray(field, n);
        return p ? std::vector<double>(p, p + n) : std::vector<double>();
    }

    FbxFieldStream stream;
    FbxHeaderInfo info;
};

TEST_F(BlenderFiles, EveryFileOpensAndEveryValueReads) {
    for (const char* name :
         {"textured_cube.fbx", "multi_material.fbx", "skinned_armature.fbx", "empties_hierarchy.fbx"}) {
        SCOPED_TRACE(name);
        uint64_t reference = 0;
        for (uint32_t cache : {8u, 0u}) {
            FbxFieldStream s;
            s.SetFbx7Mode(true);
            s.SetCacheSize(cache);
            FbxHeaderInfo header;
            ASSERT_TRUE(s.OpenFile(BlenderPath(name).c_str(), nullptr, true, false, &header))
                << s.GetStatus().GetErrorString();
            EXPECT_TRUE(s.IsBinary());
            EXPECT_FALSE(s.IsBigEndian());
            EXPECT_EQ(s.FileVersion(), 7400u);
            EXPECT_EQ(s.SectionCount(), 1);
            EXPECT_EQ(s.SectionVersion(0), 7400u);
            EXPECT_EQ(header.creator, "Blender (stable FBX IO) - 3.4.1 - 4.37.1");
            EXPECT_EQ(header.headerVersion, 1003);
            EXPECT_TRUE(header.hasTimeStamp);
            EXPECT_EQ(header.year, 2026);
            EXPECT_EQ(s.CreationTime()[0], 1970);

            FbxWalkStats stats = FbxWalkFields(s);
            EXPECT_EQ(s.GetStatus().GetCode(), FbxStatus::eSuccess) << s.GetStatus().GetErrorString();
            EXPECT_GT(stats.fields, 100u);
            EXPECT_EQ(stats.emptyArrays, 0u);
            EXPECT_GE(stats.maxDepth, 4);
            if (reference == 0) reference = stats.checksum;
            EXPECT_EQ(stats.checksum, reference);
            // The kept root serves a second walk after reopening the section.
            s.CloseSection();
            ASSERT_TRUE(s.OpenSection(0));
            EXPECT_EQ(FbxWalkFields(s).checksum, reference);
        }
    }
}

TEST_F(BlenderFiles, TexturedCubeGeometry) {
    ASSERT_TRUE(Open("textured_cube.fbx"));
    ASSERT_TRUE(stream.BeginField("Objects"));
    ASSERT_TRUE(stream.EnterBlock());
    ASSERT_TRUE(EnterObject("Geometry", "Geometry::TexturedCubeMesh"));
    std::vector<double> vertices = Doubles("Vertices");
    ASSERT_EQ(vertices.size(), 24u);
    EXPECT_EQ(vertices[0], -1.0);
    EXPECT_EQ(vertices[3], 1.0);
    EXPECT_EQ(vertices[23], 1.0);
    std::vector<int> polygons = Ints("PolygonVertexIndex");
    std::vector<int> expected = {0, 3, 2, -2, 4, 5, 6, -8, 0, 1, 5, -5, 1, 2, 6, -6, 2, 3, 7, -7, 3, 0, 4, -8};
    EXPECT_EQ(polygons, expected);
    ASSERT_TRUE(stream.BeginField("LayerElementUV"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_STREQ(stream.NextString("Name", "?"), "UVMap");
    EXPECT_EQ(Ints("UVIndex").size(), 24u);
    stream.LeaveBlock();
    stream.EndField();
    ASSERT_TRUE(stream.BeginField("LayerElementNormal"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_EQ(Doubles("Normals").size(), 72u);
    stream.LeaveBlock();
    stream.EndField();
    stream.LeaveBlock();
    stream.EndField();

    ASSERT_TRUE(EnterObject("Video", "Video::checker.png"));
    EXPECT_STREQ(stream.NextString("RelativeFilename", ""), "checker.png");
    stream.LeaveBlock();
}

TEST_F(BlenderFiles, MultiMaterialIndices) {
    ASSERT_TRUE(Open("multi_material.fbx"));
    ASSERT_TRUE(stream.BeginField("Objects"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_EQ(stream.FieldInstanceCount("Material"), 3);
    ASSERT_TRUE(EnterObject("Geometry", "Geometry::MultiMaterialStripMesh"));
    EXPECT_EQ(Doubles("Vertices").size(), 30u);
    ASSERT_TRUE(stream.BeginField("LayerElementMaterial"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_EQ(Ints("Materials"), (std::vector<int>{0, 1, 2, 0}));
}

TEST_F(BlenderFiles, SkinClustersAndCurves) {
    ASSERT_TRUE(Open("skinned_armature.fbx"));
    ASSERT_TRUE(stream.BeginField("Objects"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_EQ(stream.FieldInstanceCount("AnimationCurve"), 45);
    ASSERT_TRUE(EnterObject("Deformer", "SubDeformer::Root"));
    EXPECT_EQ(Ints("Indexes"), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Doubles("Weights"), (std::vector<double>{1, 1, 1, 1, 0.5, 0.5, 0.5, 0.5}));
    stream.LeaveBlock();
    stream.EndField();
    ASSERT_TRUE(stream.BeginField("AnimationCurve"));
    ASSERT_TRUE(stream.EnterBlock());
    int n = 0;
    const int64_t* times = nullptr;
    if (stream.BeginField("KeyTime")) {
        times = stream.NextLongArray(n);
        ASSERT_EQ(n, 20);
        // Frames 1 to 20 at 24 fps.
        EXPECT_EQ(times[0], FbxFieldStream::kTicksPerSecond / 24);
        EXPECT_EQ(times[19], 20 * FbxFieldStream::kTicksPerSecond / 24);
        stream.EndField();
    }
    ASSERT_NE(times, nullptr);
    EXPECT_EQ(stream.FieldInstanceCount("KeyValueFloat"), 1);
}

TEST_F(BlenderFiles, EmptiesCarryTheirCustomProperties) {
    ASSERT_TRUE(Open("empties_hierarchy.fbx", 0));
    ASSERT_TRUE(stream.BeginField("Objects"));
    ASSERT_TRUE(stream.EnterBlock());
    EXPECT_EQ(stream.FieldInstanceCount("Model"), 4);
    ASSERT_TRUE(EnterObject("Model", "Model::Bottom"));
    ASSERT_TRUE(stream.BeginField("Properties70"));
    ASSERT_TRUE(stream.EnterBlock());
    int found = 0;
    while (stream.BeginField("P")) {
        std::string name = stream.NextString();
        stream.NextString();
        stream.NextString();
        stream.NextString();
        if (name == "kiva_tag") {
            EXPECT_STREQ(stream.NextString(), "leaf node");
            ++found;
        } else if (name == "kiva_weight") {
            EXPECT_EQ(stream.NextDouble(), 2.5);
            ++found;
        } else if (name == "kiva_count") {
            EXPECT_EQ(stream.NextInt(), 7);
            ++found;
        }
        stream.EndField();
    }
    EXPECT_EQ(found, 3);
}

}  // namespace
