// Files exported by Blender (testdata/fbx/blender, see its README): every
// level and value reads, and the arrays of a mesh come out as exported. The
// scenes' other facts are checked through the import.
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
            EXPECT_EQ(s.SectionCount(), 1);
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
    int n = 0;
    const double* vertices = stream.NextDoubleArray("Vertices", n);
    ASSERT_EQ(n, 24);
    EXPECT_EQ(vertices[0], -1.0);
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
    stream.LeaveBlock();
    stream.EndField();

    ASSERT_TRUE(EnterObject("Video", "Video::checker.png"));
    EXPECT_STREQ(stream.NextString("RelativeFilename", ""), "checker.png");
    stream.LeaveBlock();
}

}  // namespace
