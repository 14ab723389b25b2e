#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "fbx/model/fbx_tess_mesh.h"
#include "fbx/model/fbx_types.h"

// Splits a simple polygon in the plane into triangles by constrained
// Delaunay triangulation: all points go into a triangle that bounds them,
// with Delaunay swaps after each insertion; then the contour's segments are
// forced into the mesh and the faces outside the contour are removed.
//
// A tessellator may be used for polygon after polygon; its mesh keeps its
// memory between calls, so many small polygons cost no allocation.
class PolygonTessellator {
public:
    // `points` are the polygon's corners; `contour` lists their indices
    // around the polygon, with the first repeated at the end (0, 1, ...,
    // n - 1, 0). The contour runs counter-clockwise if `counterClockwise`,
    // else clockwise. On success `triangles` holds three corner indices for
    // each triangle, counter-clockwise in the plane. Fewer than three
    // distinct points, or all of them on one line, succeed with no triangle.
    // False when the polygon cannot be tessellated this way (a point that
    // cannot be placed, a segment that cannot be forced in, nothing left
    // inside, coordinates that are not finite numbers, a corner index out
    // of range); `triangles` is then empty.
    bool TessellatePolygon(std::span<const FbxDouble2> points, std::span<const int> contour, bool counterClockwise,
                           std::vector<int>& triangles);

    // Contour segments of the last call that could not be forced into the
    // mesh and were left out without failing.
    int SkippedSegments() const { return mSkippedSegments; }

private:
    bool Degenerate(std::span<const FbxDouble2> points);
    int32_t Locate(double x, double y, int32_t start) const;
    bool InsertPoint(const FbxDouble2& point, int corner, int32_t& lastVertex);
    bool NeedsSwap(int32_t e) const;
    bool SwapRecursively(int32_t e, int32_t v);
    bool EnforceSegment(int32_t a, int32_t b);
    bool FillPseudoPolygon(int32_t base);
    void RemoveOutsideFaces(std::span<const int> corners);
    bool FaceHolds(int32_t face, int32_t v) const;
    bool Crosses(int32_t e, int32_t a, int32_t b) const;

    // A corner of a face being filled, with the edge that leaves it along
    // the face's border.
    struct FillCorner {
        double x, y;
        int32_t vertex, out;
    };
    // A part of that face still to fill: the base edge from A to B, and the
    // corners behind B, [begin, end) in the corner list (B is at begin - 1).
    struct FillPart {
        int32_t base, begin, end;
    };

    bool mCounterClockwise = true;
    int mSkippedSegments = 0;
    TessMesh mMesh;
    std::vector<int> mCornerOf;      // vertex -> corner index
    std::vector<int32_t> mVertexOf;  // corner index -> vertex, the bounding triangle's as n, n + 1, n + 2
    std::vector<int32_t> mCrossing;  // the edges a forced segment crosses
    std::vector<int32_t> mPending;   // the work list of the swaps
    std::vector<FillCorner> mFillCorners;
    std::vector<FillPart> mFillParts;
    std::vector<int32_t> mSpokes;       // the edges that leave a vertex
    std::vector<int32_t> mNeighbourOf;  // per vertex: the last inserted vertex it was joined to
    std::vector<FbxDouble2> mSorted;    // the distinct points
    std::vector<char> mMarked;          // per face: outside the contour
    std::vector<int32_t> mMarkedFaces;
};

// The same with a tessellator of its own, whose memory is released at the end.
bool TessellatePolygon(std::span<const FbxDouble2> points, std::span<const int> contour, bool counterClockwise,
                       std::vector<int>& triangles);
