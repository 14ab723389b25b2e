#pragma once

#include <cstdint>
#include <vector>

// The half-edge mesh in which one polygon is tessellated. Records live in
// pools inside the mesh and are named by their index; kTessNone stands for
// "no record". Vertices are never removed; removed edges and faces go back to
// their pool for reuse. Clear() drops every record but keeps the pools'
// memory, so a mesh reused for polygon after polygon stops allocating.
//
// Faces run counter-clockwise: a face lies on the left of each of its edges.
// An edge without twin lies on the outer border.

constexpr int32_t kTessNone = -1;

struct TessVertex {
    double x = 0.0;
    double y = 0.0;
    int32_t edge = kTessNone;  // one edge that starts here
    int32_t degree = 0;        // the number of its edge pairs (border edges count once)
};

struct TessEdge {
    int32_t source = kTessNone;
    int32_t next = kTessNone;  // the following edge of the face
    int32_t prev = kTessNone;  // the preceding edge of the face
    int32_t twin = kTessNone;  // the same edge the other way, in the neighbouring face
    int32_t face = kTessNone;
};

struct TessFace {
    int32_t edge = kTessNone;  // any one of its edges
    int32_t next = kTessNone;  // the face list, in order of creation
    int32_t prev = kTessNone;
};

class TessMesh {
public:
    // Drops all records; the pools keep their memory.
    void Clear();

    int32_t AddVertex(double x, double y);
    // One face through three vertices, with border edges (no twins). The
    // corners must run counter-clockwise.
    int32_t AddTriangle(int32_t a, int32_t b, int32_t c);

    // Adds a vertex at (x, y) inside `face` and joins it to all corners. The
    // face's record stays the first of the new faces (the one on its `edge`),
    // the others are appended to the face list in the order of the face's
    // edges. The result is the new vertex; its edge lies in the first face.
    int32_t SplitFace(int32_t face, double x, double y);

    // Replaces the edge between two triangles by the other diagonal of their
    // quadrilateral. For an edge from A to B, C the third corner of its face
    // and D that of its twin's: the edge runs from D to C afterwards, in a
    // face with C to A and A to D; its twin runs from C to D, in a face with
    // D to B and B to C. Refused (false) if the edge has no twin, a face is
    // no triangle, or C and D are already joined in either direction.
    bool SwapEdge(int32_t edge);
    // The same for a caller that knows that C and D are not joined yet.
    bool FlipEdge(int32_t edge);

    // Merges the face of the edge's twin into the face of the edge and
    // removes the pair. False if there is no twin or both lie in one face.
    bool RemoveEdge(int32_t edge);

    // Adds an edge pair between corners `a` and `b` of `face`, which splits
    // it in two; the result is the new edge from a to b. The part with fewer
    // edges becomes a new face at the end of the list, the other keeps the
    // face's record. kTessNone if a or b is no corner of the face, or they
    // are equal or neighbours.
    int32_t SplitFaceByDiagonal(int32_t face, int32_t a, int32_t b);
    // The same, given the edges of the face that leave a and b.
    int32_t SplitFaceBetween(int32_t fromA, int32_t fromB);

    // Deletes the face and its edges; the twins of its edges become border
    // edges, and a vertex whose edge is deleted takes another of its edges
    // (kTessNone if it has none left).
    void RemoveFace(int32_t face);

    // The edge from a to b, or kTessNone.
    int32_t FindEdge(int32_t a, int32_t b) const { return FindBetween(a, b, false); }
    // Whether an edge joins a and b in either direction.
    bool Joined(int32_t a, int32_t b) const { return FindBetween(a, b, true) != kTessNone; }

    const TessVertex& Vertex(int32_t v) const { return mVertices[v]; }
    const TessEdge& Edge(int32_t e) const { return mEdges[e]; }
    const TessFace& Face(int32_t f) const { return mFaces[f]; }
    int32_t Target(int32_t e) const { return mEdges[mEdges[e].next].source; }
    // The number of edges of a face.
    int FaceSize(int32_t face) const;
    // Whether the face of the edge is a triangle.
    bool InTriangle(int32_t e) const { return mEdges[mEdges[mEdges[e].next].next].next == e; }

    int32_t FirstFace() const { return mFirstFace; }
    int VertexCount() const { return static_cast<int>(mVertices.size()); }
    int FaceCount() const { return mFaceCount; }
    int EdgeCount() const { return mEdgeCount; }
    // One more than the highest face index in use or pooled.
    int FacePoolSize() const { return static_cast<int>(mFaces.size()); }

private:
    int32_t NewEdge(int32_t source, int32_t face);
    void FreeEdge(int32_t e);
    int32_t NewFace();  // appended to the face list
    void FreeFace(int32_t f);
    void Link(int32_t from, int32_t to) {
        mEdges[from].next = to;
        mEdges[to].prev = from;
    }
    void Pair(int32_t a, int32_t b) {
        mEdges[a].twin = b;
        mEdges[b].twin = a;
    }
    // Looks for an edge between a and b around the end with fewer edges.
    int32_t FindBetween(int32_t a, int32_t b, bool eitherWay) const;
    template <typename Visit>
    int32_t FindAround(int32_t v, Visit visit) const;

    std::vector<TessVertex> mVertices;
    std::vector<TessEdge> mEdges;
    std::vector<TessFace> mFaces;
    std::vector<int32_t> mFreeEdges;
    std::vector<int32_t> mFreeFaces;
    std::vector<int32_t> mScratch;  // the edges of the face being split
    int32_t mFirstFace = kTessNone;
    int32_t mLastFace = kTessNone;
    int mFaceCount = 0;
    int mEdgeCount = 0;
};
