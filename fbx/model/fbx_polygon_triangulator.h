#pragma once

#include <span>
#include <vector>

#include "fbx/model/fbx_polygon_tessellator.h"
#include "fbx/model/fbx_types.h"
#include "fbx/model/fbx_vector4.h"

// How the triangles of a polygon came about.
enum class PolygonTriangulation {
    eAsIs,         // three corners make the one triangle; fewer make none
    eTessellated,  // by the tessellator; none if the polygon is degenerate in projection
    eZigZagStrip,  // the tessellator failed: a strip through the corners
};

// Splits the polygons of a mesh into triangles, one polygon at a time. A
// polygon is projected to the plane of its normal's dominant axis, keeping
// its turning sense, and tessellated there; a polygon that the tessellator
// cannot handle becomes a zig-zag strip. Keeps its memory from polygon to
// polygon; use one for a whole mesh.
class PolygonTriangulator {
public:
    // Fills `triangles` with three corner indices (0 to corners.size() - 1)
    // for each triangle of the polygon whose corner positions are `corners`,
    // each triangle turning the way the polygon turns.
    PolygonTriangulation Triangulate(std::span<const FbxVector4> corners, std::vector<int>& triangles);

private:
    PolygonTessellator mTessellator;
    std::vector<FbxDouble2> mPoints;
    std::vector<int> mContour;
};

// Replaces `triangles` by the n - 2 triangles of a strip that zig-zags
// between the two ends of the corner order: (0, 1, 2), (2, 3, 0),
// (0, 3, n - 1), (3, 4, n - 1), (n - 1, 4, n - 2), ... None below 3 corners.
void ZigZagStrip(int cornerCount, std::vector<int>& triangles);
