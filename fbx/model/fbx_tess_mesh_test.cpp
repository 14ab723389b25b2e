#include "fbx/model/fbx_tess_mesh.h"

#include <gtest/gtest.h>

namespace {

// Every face's edges form a ring that points back to the face, twins are
// mutual and run the other way, the counts add up, and each vertex's edge
// starts at it.
void ExpectConsistent(const TessMesh& mesh) {
    int faces = 0, edges = 0;
    for (int32_t f = mesh.FirstFace(); f != kTessNone; f = mesh.Face(f).next, ++faces) {
        int32_t e = mesh.Face(f).edge;
        do {
            ++edges;
            const TessEdge& edge = mesh.Edge(e);
            EXPECT_EQ(edge.face, f);
            EXPECT_EQ(mesh.Edge(edge.next).prev, e);
            if (edge.twin != kTessNone) {
                EXPECT_EQ(mesh.Edge(edge.twin).twin, e);
                EXPECT_EQ(mesh.Edge(edge.twin).source, mesh.Target(e));
            }
            e = edge.next;
        } while (e != mesh.Face(f).edge && edges <= mesh.EdgeCount());
    }
    EXPECT_EQ(faces, mesh.FaceCount());
    EXPECT_EQ(edges, mesh.EdgeCount());
    for (int32_t v = 0; v < mesh.VertexCount(); ++v) {
        if (mesh.Vertex(v).edge != kTessNone) {
            EXPECT_EQ(mesh.Edge(mesh.Vertex(v).edge).source, v);
        }
    }
}

}  // namespace

TEST(TessMesh, OperationsKeepTheMeshWhole) {
    TessMesh mesh;
    const int32_t a = mesh.AddVertex(0, 0), b = mesh.AddVertex(4, 0), c = mesh.AddVertex(0, 4);
    const int32_t outer = mesh.AddTriangle(a, b, c);
    const int32_t p = mesh.SplitFace(outer, 1, 1);
    ExpectConsistent(mesh);
    EXPECT_EQ(mesh.FaceCount(), 3);
    EXPECT_EQ(mesh.EdgeCount(), 9);
    EXPECT_EQ(mesh.FaceSize(outer), 3);
    // The border runs one way only.
    EXPECT_NE(mesh.FindEdge(a, b), kTessNone);
    EXPECT_EQ(mesh.FindEdge(b, a), kTessNone);
    EXPECT_TRUE(mesh.Joined(b, a));
    for (int32_t v : {a, b, c}) {
        EXPECT_EQ(mesh.Target(mesh.FindEdge(p, v)), v);
        EXPECT_EQ(mesh.Edge(mesh.FindEdge(v, p)).source, v);
    }
    // No swap on the border, nor where it would double the edge from b to c.
    EXPECT_FALSE(mesh.SwapEdge(mesh.FindEdge(a, b)));
    EXPECT_FALSE(mesh.SwapEdge(mesh.FindEdge(p, a)));
    EXPECT_FALSE(mesh.RemoveEdge(mesh.FindEdge(a, b)));

    // Merge two faces into the quad a, b, p, c and cut it again.
    const int32_t pa = mesh.FindEdge(p, a);
    const int32_t quad = mesh.Edge(pa).face;
    ASSERT_TRUE(mesh.RemoveEdge(pa));
    ExpectConsistent(mesh);
    EXPECT_EQ(mesh.FaceSize(quad), 4);
    EXPECT_EQ(mesh.FindEdge(p, a), kTessNone);
    EXPECT_EQ(mesh.SplitFaceByDiagonal(quad, a, a), kTessNone);
    EXPECT_EQ(mesh.SplitFaceByDiagonal(quad, p, b), kTessNone);
    const int32_t ap = mesh.SplitFaceByDiagonal(quad, a, p);
    ASSERT_NE(ap, kTessNone);
    EXPECT_EQ(mesh.Edge(ap).source, a);
    EXPECT_EQ(mesh.Target(ap), p);
    ExpectConsistent(mesh);
    EXPECT_EQ(mesh.FaceCount(), 3);

    // Removing the faces at a leaves a vertex that still finds its edges,
    // and finally none.
    mesh.RemoveFace(mesh.Edge(mesh.FindEdge(a, b)).face);
    ExpectConsistent(mesh);
    EXPECT_EQ(mesh.FindEdge(a, b), kTessNone);
    EXPECT_NE(mesh.FindEdge(p, b), kTessNone);
    EXPECT_NE(mesh.FindEdge(a, p), kTessNone);
    mesh.RemoveFace(mesh.Edge(mesh.FindEdge(a, p)).face);
    ExpectConsistent(mesh);
    EXPECT_EQ(mesh.Vertex(a).edge, kTessNone);
    EXPECT_EQ(mesh.FaceCount(), 1);
    EXPECT_EQ(mesh.EdgeCount(), 3);

    mesh.Clear();
    EXPECT_EQ(mesh.VertexCount() + mesh.FaceCount() + mesh.EdgeCount(), 0);
    EXPECT_EQ(mesh.FirstFace(), kTessNone);
}
