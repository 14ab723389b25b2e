#include "fbx/model/fbx_polygon_tessellator.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kLeft = 1;
constexpr int kRight = 2;

// Where p lies from the directed line a to b: kLeft, kRight or 0 (on it). The
// determinant is always taken from the end that comes first in (x, y) order,
// so that (a, b) and (b, a) give mirrored answers for the same p.
int Side(const TessVertex& p, const TessVertex& a, const TessVertex& b) {
    if (a.x < b.x || (a.x == b.x && a.y <= b.y)) {
        double d = (a.y - b.y) * (p.x - b.x) - (p.y - b.y) * (a.x - b.x);
        return d > 0 ? kLeft : d < 0 ? kRight : 0;
    }
    double d = (b.y - a.y) * (p.x - a.x) - (p.y - a.y) * (b.x - a.x);
    return d > 0 ? kRight : d < 0 ? kLeft : 0;
}

// Positive when d lies inside the circle through the counter-clockwise
// triangle a, b, c; zero on it.
double InCircle(double ax, double ay, double bx, double by, double cx, double cy, double dx, double dy) {
    ax -= dx, ay -= dy;
    bx -= dx, by -= dy;
    cx -= dx, cy -= dy;
    const double a2 = ax * ax + ay * ay, b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
    return b2 * (cx * ay - cy * ax) + (cy * bx - cx * by) * a2 + c2 * (by * ax - bx * ay);
}

bool LexLess(const FbxDouble2& a, const FbxDouble2& b) { return a[0] < b[0] || (a[0] == b[0] && a[1] < b[1]); }

}  // namespace

bool TessellatePolygon(std::span<const FbxDouble2> points, std::span<const int> contour, bool counterClockwise,
                       std::vector<int>& triangles) {
    PolygonTessellator tessellator;
    return tessellator.TessellatePolygon(points, contour, counterClockwise, triangles);
}

bool PolygonTessellator::TessellatePolygon(std::span<const FbxDouble2> points, std::span<const int> contour,
                                           bool counterClockwise, std::vector<int>& triangles) {
    triangles.clear();
    mMesh.Clear();
    mSkippedSegments = 0;
    mCounterClockwise = counterClockwise;
    const int n = static_cast<int>(points.size());
    for (const FbxDouble2& p : points)
        if (!std::isfinite(p[0]) || !std::isfinite(p[1])) return false;
    for (int corner : contour)
        if (corner < 0 || corner >= n) return false;
    // The contour's corners in cyclic order, without the closing repeat.
    std::span<const int> corners = contour;
    if (corners.size() > 1 && corners.front() == corners.back()) corners = corners.first(corners.size() - 1);

    if (Degenerate(points)) return true;

    // A triangle whose inscribed circle has twice the radius of the circle
    // around the points' bounding box.
    double minX = points[0][0], maxX = minX, minY = points[0][1], maxY = minY;
    for (const FbxDouble2& p : points) {
        minX = std::min(minX, p[0]);
        maxX = std::max(maxX, p[0]);
        minY = std::min(minY, p[1]);
        maxY = std::max(maxY, p[1]);
    }
    const double cx = (minX + maxX) / 2, cy = (minY + maxY) / 2;
    const double r = 2 * std::hypot(maxX - cx, maxY - cy);
    const double h = 1.732050807568 * r;
    if (!std::isfinite(cy + 2 * r) || !std::isfinite(cx + h) || !std::isfinite(cx - h) || !std::isfinite(cy - r))
        return false;
    mVertexOf.assign(n + 3, kTessNone);
    mCornerOf.clear();
    mNeighbourOf.clear();
    for (int i = 0; i < 3; ++i) {
        static constexpr double kCorners[3][2] = {{0, 2}, {-1, -1}, {1, -1}};
        mVertexOf[n + i] = mMesh.AddVertex(cx + kCorners[i][0] * h, cy + kCorners[i][1] * r);
        mCornerOf.push_back(n + i);
    }
    mMesh.AddTriangle(mVertexOf[n], mVertexOf[n + 1], mVertexOf[n + 2]);

    // Every fifth point first, so that the mesh spreads over the polygon
    // early, then the rest in order.
    int32_t lastVertex = kTessNone;
    for (int i = 0; i < n; i += 5)
        if (!InsertPoint(points[i], i, lastVertex)) return false;
    for (int i = 1; i < n; ++i)
        if (i % 5 != 0 && !InsertPoint(points[i], i, lastVertex)) return false;

    for (size_t i = 0; i < corners.size(); ++i) {
        const int a = corners[i], b = corners[(i + 1) % corners.size()];
        if (a != b && mMesh.FindEdge(mVertexOf[a], mVertexOf[b]) == kTessNone &&
            !EnforceSegment(mVertexOf[a], mVertexOf[b]))
            return false;
    }
    RemoveOutsideFaces(corners);

    for (int32_t f = mMesh.FirstFace(); f != kTessNone; f = mMesh.Face(f).next) {
        const int32_t e0 = mMesh.Face(f).edge, e1 = mMesh.Edge(e0).next, e2 = mMesh.Edge(e1).next;
        if (mMesh.Edge(e2).next != e0) continue;
        const int c0 = mCornerOf[mMesh.Edge(e0).source], c1 = mCornerOf[mMesh.Edge(e1).source],
                  c2 = mCornerOf[mMesh.Edge(e2).source];
        if (c0 >= n || c1 >= n || c2 >= n) continue;
        triangles.insert(triangles.end(), {c0, c1, c2});
    }
    return !triangles.empty();
}

bool PolygonTessellator::Degenerate(std::span<const FbxDouble2> points) {
    mSorted.assign(points.begin(), points.end());
    std::sort(mSorted.begin(), mSorted.end(), LexLess);
    mSorted.erase(std::unique(mSorted.begin(), mSorted.end()), mSorted.end());
    if (mSorted.size() < 3) return true;
    const FbxDouble2 &p0 = mSorted[0], &p1 = mSorted[1];
    const double dx = p1[0] - p0[0], dy = p1[1] - p0[1], length = std::hypot(dx, dy);
    for (const FbxDouble2& q : mSorted)
        if (std::abs(dx * (q[1] - p0[1]) - dy * (q[0] - p0[0])) / length > 1e-12) return false;
    return true;
}

bool PolygonTessellator::InsertPoint(const FbxDouble2& point, int corner, int32_t& lastVertex) {
    const int32_t start = lastVertex == kTessNone ? mMesh.FirstFace() : mMesh.Edge(mMesh.Vertex(lastVertex).edge).face;
    const int32_t face = Locate(point[0], point[1], start);
    if (face == kTessNone) return false;
    const int32_t v = mMesh.SplitFace(face, point[0], point[1]);
    mVertexOf[corner] = v;
    mCornerOf.push_back(corner);
    lastVertex = v;

    mSpokes.clear();
    mNeighbourOf.resize(mMesh.VertexCount(), kTessNone);
    const int32_t first = mMesh.Vertex(v).edge;
    for (int32_t e = first;;) {
        mSpokes.push_back(e);
        mNeighbourOf[mMesh.Target(e)] = v;
        e = mMesh.Edge(mMesh.Edge(e).prev).twin;
        if (e == first || e == kTessNone) break;
    }
    // Only the outcome for the last spoke counts.
    bool ok = true;
    for (int32_t spoke : mSpokes) ok = SwapRecursively(mMesh.Edge(spoke).next, v);
    return ok;
}

int32_t PolygonTessellator::Locate(double x, double y, int32_t start) const {
    const TessVertex p{x, y, kTessNone, 0};
    int sides[3];
    // The edge with p on its right, or kTessNone if p lies inside or on the
    // border of the triangle; `online` tells whether p is on all three lines.
    auto test = [&](int32_t face, bool& online) {
        int32_t e = mMesh.Face(face).edge;
        for (int i = 0; i < 3; ++i, e = mMesh.Edge(e).next) {
            sides[i] = Side(p, mMesh.Vertex(mMesh.Edge(e).source), mMesh.Vertex(mMesh.Target(e)));
            if (sides[i] == kRight) return e;
        }
        online = sides[0] == 0 && sides[1] == 0 && sides[2] == 0;
        return kTessNone;
    };

    int steps = 0;
    for (int32_t face = start;;) {
        bool online = false;
        const int32_t exit = test(face, online);
        if (exit == kTessNone) {
            if (!online) return face;
            break;
        }
        const int32_t twin = mMesh.Edge(exit).twin;
        if (twin == kTessNone || ++steps > mMesh.FaceCount()) break;
        face = mMesh.Edge(twin).face;
    }
    for (int32_t face = mMesh.FirstFace(); face != kTessNone; face = mMesh.Face(face).next) {
        bool online = false;
        if (test(face, online) == kTessNone && !online) return face;
    }
    return kTessNone;
}

bool PolygonTessellator::NeedsSwap(int32_t e) const {
    const TessEdge& edge = mMesh.Edge(e);
    if (edge.twin == kTessNone) return false;
    const TessVertex& a = mMesh.Vertex(edge.source);
    const TessVertex& b = mMesh.Vertex(mMesh.Edge(edge.twin).source);
    const TessVertex& c = mMesh.Vertex(mMesh.Edge(edge.prev).source);
    const TessVertex& d = mMesh.Vertex(mMesh.Edge(mMesh.Edge(edge.twin).prev).source);
    // The cosines of the angles at c and at d, scaled.
    const double p = (a.x - c.x) * (b.x - c.x) + (a.y - c.y) * (b.y - c.y);
    const double q = (a.x - d.x) * (b.x - d.x) + (a.y - d.y) * (b.y - d.y);
    if (p >= 0 && q >= 0) return false;
    if (p < 0 && q < 0) return true;
    // The sign of the sine of the two angles' sum.
    return ((a.y - d.y) * (b.x - d.x) - (b.y - d.y) * (a.x - d.x)) * p +
               ((b.y - c.y) * (a.x - c.x) - (a.y - c.y) * (b.x - c.x)) * q <
           0;
}

// Swaps e, which lies opposite the new vertex v, if the Delaunay test asks
// for it, then checks the two edges that come to lie opposite v in the same
// way. Works off a stack in the order of the natural recursion; the result is
// the outcome of the last edge checked, a refused swap being a failure. The
// swaps only ever add edges at v, so v's neighbours are known without looking
// around it: the refusal for corners that are already joined costs nothing.
bool PolygonTessellator::SwapRecursively(int32_t e, int32_t v) {
    mPending.assign(1, e);
    bool ok = true;
    while (!mPending.empty()) {
        const int32_t x = mPending.back();
        mPending.pop_back();
        if (!NeedsSwap(x)) {
            ok = true;
        } else if (const int32_t d = mMesh.Edge(mMesh.Edge(mMesh.Edge(x).twin).prev).source;
                   mNeighbourOf[d] == v || !mMesh.FlipEdge(x)) {
            ok = false;
        } else {
            mNeighbourOf[d] = v;
            mPending.push_back(mMesh.Edge(mMesh.Edge(x).twin).next);
            mPending.push_back(mMesh.Edge(x).prev);
        }
    }
    return ok;
}

bool PolygonTessellator::FaceHolds(int32_t face, int32_t v) const {
    int32_t e = mMesh.Face(face).edge;
    do {
        if (mMesh.Edge(e).source == v) return true;
        e = mMesh.Edge(e).next;
    } while (e != mMesh.Face(face).edge);
    return false;
}

bool PolygonTessellator::Crosses(int32_t e, int32_t a, int32_t b) const {
    constexpr double kTolerance = 1e-6;
    const TessVertex &p = mMesh.Vertex(a), &p2 = mMesh.Vertex(b);
    const TessVertex &q = mMesh.Vertex(mMesh.Edge(e).source), &q2 = mMesh.Vertex(mMesh.Target(e));
    const double rx = p2.x - p.x, ry = p2.y - p.y, sx = q2.x - q.x, sy = q2.y - q.y;
    const double denominator = rx * sy - ry * sx;
    if (denominator == 0) return false;
    const double wx = q.x - p.x, wy = q.y - p.y;
    const double t = (wx * sy - wy * sx) / denominator, u = (wx * ry - wy * rx) / denominator;
    return t >= -kTolerance && t <= 1 + kTolerance && u >= -kTolerance && u <= 1 + kTolerance;
}

bool PolygonTessellator::EnforceSegment(int32_t a, int32_t b) {
    // The edges around a, counter-clockwise, all in triangles.
    mSpokes.clear();
    const int32_t first = mMesh.Vertex(a).edge;
    for (int32_t e = first; e != kTessNone;) {
        const TessEdge& edge = mMesh.Edge(e);
        if (edge.face == kTessNone || !mMesh.InTriangle(e) || edge.prev == kTessNone ||
            mMesh.Edge(edge.prev).twin == kTessNone || static_cast<int>(mSpokes.size()) > mMesh.EdgeCount()) {
            mSpokes.clear();
            break;
        }
        mSpokes.push_back(e);
        e = mMesh.Edge(edge.prev).twin;
        if (e == first) break;
    }
    // The triangle at a through which the segment leaves: b left of one
    // spoke and right of the next.
    int32_t crossing = kTessNone;
    const TessVertex& target = mMesh.Vertex(b);
    const size_t count = mSpokes.size();
    for (size_t i = 0; i < count && crossing == kTessNone; ++i) {
        const int32_t s1 = mSpokes[i], s2 = mSpokes[(i + 1) % count];
        if (Side(target, mMesh.Vertex(a), mMesh.Vertex(mMesh.Target(s1))) == kLeft &&
            Side(target, mMesh.Vertex(a), mMesh.Vertex(mMesh.Target(s2))) == kRight)
            crossing = mMesh.Edge(s1).next;
    }
    if (crossing == kTessNone) {
        ++mSkippedSegments;
        return true;
    }
    const int32_t face = mMesh.Edge(crossing).face;
    if (!FaceHolds(face, a) || FaceHolds(face, b)) return false;

    mCrossing.clear();
    for (;;) {
        mCrossing.push_back(crossing);
        const int32_t twin = mMesh.Edge(crossing).twin;
        if (static_cast<int>(mCrossing.size()) > mMesh.EdgeCount() || twin == kTessNone ||
            mMesh.Edge(twin).face == kTessNone)
            return false;
        if (FaceHolds(mMesh.Edge(twin).face, b)) break;
        if (Crosses(mMesh.Edge(twin).next, a, b))
            crossing = mMesh.Edge(twin).next;
        else if (Crosses(mMesh.Edge(twin).prev, a, b))
            crossing = mMesh.Edge(twin).prev;
        else
            return false;
    }

    if (mCrossing.size() == 1) {
        mMesh.SwapEdge(mCrossing[0]);
    } else {
        // Open a channel along the segment, cut it by the segment and fill
        // both sides again.
        for (int32_t e : mCrossing)
            if (!mMesh.RemoveEdge(e)) return false;
        const int32_t diagonal = mMesh.SplitFaceByDiagonal(face, a, b);
        if (diagonal == kTessNone || !FillPseudoPolygon(diagonal) || !FillPseudoPolygon(mMesh.Edge(diagonal).twin))
            return false;
    }
    return mMesh.FindEdge(a, b) != kTessNone;
}

// Triangulates the face of `base` (from A to B) the Delaunay way: the corner
// C whose circle with A and B holds no other corner of the face makes the
// triangle on the base; the parts beyond, from B to C and from C to A, are
// filled the same way, that at B to C first. Works off a stack in the order
// of the natural recursion; the result is the outcome of the last part
// filled. Each part's corners are a run of the face's corners from B onwards,
// which are gathered once with their positions, so that the search for C
// reads one array instead of the mesh.
bool PolygonTessellator::FillPseudoPolygon(int32_t base) {
    const int32_t first = mMesh.Edge(base).source;
    mFillCorners.clear();
    for (int32_t e = mMesh.Edge(base).next; mMesh.Edge(e).source != first; e = mMesh.Edge(e).next) {
        const TessVertex& v = mMesh.Vertex(mMesh.Edge(e).source);
        mFillCorners.push_back({v.x, v.y, mMesh.Edge(e).source, e});
    }
    mFillParts.assign(1, {base, 1, static_cast<int32_t>(mFillCorners.size())});
    bool ok = true;
    while (!mFillParts.empty()) {
        const FillPart part = mFillParts.back();
        mFillParts.pop_back();
        ok = true;
        if (mMesh.InTriangle(part.base)) continue;
        // B and the corners behind it up to the one before A.
        const FillCorner& b = mFillCorners[part.begin - 1];
        const TessVertex& a = mMesh.Vertex(mMesh.Edge(part.base).source);
        // Each corner in or on the circle through A, B and C becomes C. The
        // inner loop runs with one C, so that its tests need not wait for
        // each other.
        int32_t chosen = part.begin;
        for (int32_t i = part.begin + 1; i < part.end; ++i) {
            const FillCorner& c = mFillCorners[chosen];
            auto outside = [&](const FillCorner& d) { return InCircle(a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y) < 0; };
            while (i < part.end && outside(mFillCorners[i])) ++i;
            if (i < part.end) chosen = i;
        }
        const FillCorner& c = mFillCorners[chosen];
        int32_t partBC = kTessNone, partCA = kTessNone;
        if (mMesh.FindEdge(b.vertex, c.vertex) == kTessNone) {
            const int32_t diagonal = mMesh.SplitFaceBetween(b.out, c.out);
            if (diagonal == kTessNone) {
                ok = false;
                continue;
            }
            partBC = mMesh.Edge(diagonal).twin;
        }
        if (mMesh.FindEdge(c.vertex, mMesh.Edge(part.base).source) == kTessNone) {
            const int32_t diagonal = mMesh.SplitFaceBetween(c.out, part.base);
            if (diagonal == kTessNone) {
                ok = false;
                continue;
            }
            partCA = mMesh.Edge(diagonal).twin;
        }
        if (!mMesh.InTriangle(part.base)) {
            ok = false;
            continue;
        }
        if (partCA != kTessNone) mFillParts.push_back({partCA, chosen + 1, part.end});
        if (partBC != kTessNone) mFillParts.push_back({partBC, part.begin, chosen});
    }
    return ok;
}

void PolygonTessellator::RemoveOutsideFaces(std::span<const int> corners) {
    mMarked.assign(mMesh.FacePoolSize(), 0);
    mMarkedFaces.clear();
    const size_t count = corners.size();
    for (size_t i = 0; i < count; ++i) {
        int prevCorner = corners[(i + count - 1) % count], nextCorner = corners[(i + 1) % count];
        if (!mCounterClockwise) std::swap(prevCorner, nextCorner);
        const int32_t v = mVertexOf[corners[i]];
        const int32_t in = mMesh.FindEdge(mVertexOf[prevCorner], v);
        const int32_t out = mMesh.FindEdge(v, mVertexOf[nextCorner]);
        if (in == kTessNone || out == kTessNone) continue;
        // Turn counter-clockwise around v from the incoming segment to the
        // outgoing one: the faces between lie outside.
        const int32_t start = mMesh.Edge(in).twin;
        for (int32_t e = start; e != kTessNone && e != out;) {
            const int32_t face = mMesh.Edge(e).face;
            if (!mMarked[face]) {
                mMarked[face] = 1;
                mMarkedFaces.push_back(face);
            }
            e = mMesh.Edge(mMesh.Edge(e).prev).twin;
            if (e == start) break;
        }
    }
    for (int32_t face : mMarkedFaces) mMesh.RemoveFace(face);
}
