#include "fbx/model/fbx_polygon_triangulator.h"

#include <cmath>

namespace {

enum class Projection { ePlusX, eMinusX, ePlusY, eMinusY, ePlusZ, eMinusZ };

// The plane to project a polygon with this normal to: that of the normal's
// largest component, with the sign of that component. Components within
// the rounding of 1.0 of each other count as equal.
Projection ChooseProjection(const FbxVector4& normal) {
    constexpr double kEpsilon = 2.220446049250313e-16;
    const double x = std::abs(normal[0]), y = std::abs(normal[1]), z = std::abs(normal[2]);
    auto greater = [&](double a, double b) { return a - b > kEpsilon; };
    int axis;
    if (greater(z, x) && greater(z, y))
        axis = 2;
    else if (greater(y, x) && greater(y, z))
        axis = 1;
    else if (greater(x, y) && greater(x, z))
        axis = 0;
    else if (greater(z, y))
        axis = 2;
    else
        axis = greater(x, z) ? 0 : 1;
    const double component = normal[axis];
    if (!(std::abs(component) > kEpsilon)) return Projection::ePlusY;
    static constexpr Projection kPlus[3] = {Projection::ePlusX, Projection::ePlusY, Projection::ePlusZ};
    static constexpr Projection kMinus[3] = {Projection::eMinusX, Projection::eMinusY, Projection::eMinusZ};
    return component > 0 ? kPlus[axis] : kMinus[axis];
}

// Seen against the normal, a counter-clockwise polygon stays
// counter-clockwise in (u, v).
FbxDouble2 Project(const FbxVector4& p, Projection projection) {
    switch (projection) {
    case Projection::ePlusZ:
        return {p[0], p[1]};
    case Projection::eMinusZ:
        return {p[0], -p[1]};
    case Projection::ePlusY:
        return {-p[0], p[2]};
    case Projection::eMinusY:
        return {p[0], p[2]};
    case Projection::ePlusX:
        return {p[1], p[2]};
    case Projection::eMinusX:
        return {-p[1], p[2]};
    }
    return {};
}

}  // namespace

PolygonTriangulation PolygonTriangulator::Triangulate(std::span<const FbxVector4> corners,
                                                      std::vector<int>& triangles) {
    triangles.clear();
    const int n = static_cast<int>(corners.size());
    if (n < 4) {
        if (n == 3) triangles = {0, 1, 2};
        return PolygonTriangulation::eAsIs;
    }

    // Newell's normal: twice the area vector of the polygon, unit length.
    FbxVector4 normal;
    for (int i = 0; i < n; ++i) {
        const FbxVector4 &a = corners[i], &b = corners[(i + 1) % n];
        normal[0] += (a[1] - b[1]) * (a[2] + b[2]);
        normal[1] += (a[2] - b[2]) * (a[0] + b[0]);
        normal[2] += (a[0] - b[0]) * (a[1] + b[1]);
    }
    const double length = normal.Length();
    if (length > 0) normal = normal * (1 / length);

    const Projection projection = ChooseProjection(normal);
    mPoints.resize(n);
    mContour.resize(n + 1);
    for (int i = 0; i < n; ++i) {
        mPoints[i] = Project(corners[i], projection);
        mContour[i] = i;
    }
    mContour[n] = 0;
    if (mTessellator.TessellatePolygon(mPoints, mContour, true, triangles)) return PolygonTriangulation::eTessellated;
    ZigZagStrip(n, triangles);
    return PolygonTriangulation::eZigZagStrip;
}

void ZigZagStrip(int cornerCount, std::vector<int>& triangles) {
    triangles.clear();
    if (cornerCount < 3) return;
    const size_t wanted = 3 * static_cast<size_t>(cornerCount - 2);
    triangles.reserve(wanted);
    triangles.insert(triangles.end(), {0, 1, 2});
    int a = 2, b = 0, lo = 3, hi = cornerCount - 1;
    while (lo <= hi && triangles.size() < wanted) {
        triangles.insert(triangles.end(), {a, lo, b});
        if (triangles.size() == wanted) break;
        triangles.insert(triangles.end(), {b, lo, hi});
        b = hi;
        a = lo;
        ++lo;
        --hi;
    }
}
