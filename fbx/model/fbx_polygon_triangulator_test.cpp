#include "fbx/model/fbx_polygon_triangulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <vector>

namespace {

using Shape = std::vector<FbxDouble2>;

double Cross(const FbxDouble2& o, const FbxDouble2& a, const FbxDouble2& b) {
    return (a[0] - o[0]) * (b[1] - o[1]) - (a[1] - o[1]) * (b[0] - o[0]);
}

double Area(const Shape& shape) {
    double area = 0;
    for (size_t i = 0; i < shape.size(); ++i) area += Cross({0, 0}, shape[i], shape[(i + 1) % shape.size()]) / 2;
    return area;
}

bool Inside(const Shape& shape, double x, double y) {
    bool inside = false;
    for (size_t i = 0, j = shape.size() - 1; i < shape.size(); j = i++) {
        const FbxDouble2 &a = shape[i], &b = shape[j];
        if ((a[1] > y) != (b[1] > y) && x < (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1]) + a[0]) inside = !inside;
    }
    return inside;
}

// A star of `points` tips, radii 1 and 0.4.
Shape Star(int points) {
    Shape shape;
    for (int i = 0; i < 2 * points; ++i) {
        const double angle = std::numbers::pi * i / points, r = i % 2 ? 0.4 : 1.0;
        shape.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return shape;
}
Shape Circle(int n) {
    Shape shape;
    for (int i = 0; i < n; ++i)
        shape.push_back({std::cos(2 * std::numbers::pi * i / n), std::sin(2 * std::numbers::pi * i / n)});
    return shape;
}

// The ways a counter-clockwise shape in (x, y) is laid into space, with
// `lift` added along the normal: facing each axis both ways, and tilted
// away from the origin.
const std::vector<std::function<FbxVector4(const FbxDouble2&, double)>> kPlacements = {
    [](const FbxDouble2& p, double h) { return FbxVector4(p[0], p[1], h); },
    [](const FbxDouble2& p, double h) { return FbxVector4(p[0], -p[1], -h); },
    [](const FbxDouble2& p, double h) { return FbxVector4(h, p[0], p[1]); },
    [](const FbxDouble2& p, double h) { return FbxVector4(-h, -p[0], p[1]); },
    [](const FbxDouble2& p, double h) { return FbxVector4(p[1], h, p[0]); },
    [](const FbxDouble2& p, double h) { return FbxVector4(p[0], -h, p[1]); },
    [](const FbxDouble2& p, double h) {
        return FbxVector4(0.6 * p[0] - 0.48 * p[1] + 0.64 * h + 100, 0.8 * p[0] + 0.36 * p[1] - 0.48 * h - 3,
                          0.8 * p[1] + 0.6 * h + 7);
    },
};

// Checks that the triangles tile the shape: corners are its corners, every
// triangle turns its way and lies inside, and the areas add up to its area.
void ExpectTiling(const Shape& shape, const std::vector<int>& triangles, size_t expectedTriangles) {
    ASSERT_EQ(triangles.size() % 3, 0u);
    if (expectedTriangles) {
        EXPECT_EQ(triangles.size() / 3, expectedTriangles);
    }
    double total = 0;
    for (size_t t = 0; t < triangles.size(); t += 3) {
        for (size_t k = 0; k < 3; ++k) ASSERT_LT(static_cast<size_t>(triangles[t + k]), shape.size());
        const FbxDouble2 &a = shape[triangles[t]], &b = shape[triangles[t + 1]], &c = shape[triangles[t + 2]];
        const double area = Cross(a, b, c) / 2;
        EXPECT_GE(area, -1e-12) << "triangle " << t / 3 << " turns the wrong way";
        total += std::abs(area);
        if (area > 1e-9) {
            EXPECT_TRUE(Inside(shape, (a[0] + b[0] + c[0]) / 3, (a[1] + b[1] + c[1]) / 3))
                << "triangle " << t / 3 << " lies outside";
        }
    }
    EXPECT_NEAR(total, Area(shape), 1e-9 * Area(shape));
}

// Corners at random radii between 0.2 and 1, in order of angle.
Shape RandomStarShaped(int n) {
    Shape shape;
    uint32_t state = 12345;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        const double r = 0.2 + 0.8 * (state >> 8) / double(1 << 24), angle = 2 * std::numbers::pi * i / n;
        shape.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return shape;
}

std::vector<FbxVector4> InPlane(const Shape& shape) {
    std::vector<FbxVector4> corners;
    for (const FbxDouble2& p : shape) corners.emplace_back(p[0], p[1], 0);
    return corners;
}

struct TilingCase {
    const char* name;
    Shape shape;
    std::vector<double> lift;  // off the plane, per corner; none if empty
    size_t triangles;          // expected count; 0 to not check it
};

}  // namespace

TEST(PolygonTriangulator, TilesConcaveCollinearRepeatedAndNonPlanarPolygonsInEveryOrientation) {
    const Shape lShape = {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}};
    const std::vector<TilingCase> cases = {
        {"L-shape", lShape, {}, 4},
        {"star", Star(5), {}, 8},
        {"comb",
         {{0, 0}, {5, 0}, {5, 3}, {4, 3}, {4, 1}, {3, 1}, {3, 3}, {2, 3}, {2, 1}, {1, 1}, {1, 3}, {0, 3}},
         {},
         10},
        {"collinear corners", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {1.5, 2}, {0, 2}, {0, 1}}, {}, 7},
        {"repeated corner", {{0, 0}, {2, 0}, {2, 1}, {2, 1}, {1, 1}, {1, 2}, {0, 2}}, {}, 0},
        {"non-planar quad", {{0, 0}, {1, 0}, {1.2, 1}, {0, 0.8}}, {0, 0.3, -0.2, 0.25}, 2},
        {"random star-shaped", RandomStarShaped(300), {}, 298},
        {"circle of 1000", Circle(1000), {}, 998},
    };
    PolygonTriangulator shared;
    std::vector<int> triangles, fresh;
    for (const TilingCase& c : cases) {
        for (size_t place = 0; place < kPlacements.size(); ++place) {
            SCOPED_TRACE(testing::Message() << c.name << ", placement " << place);
            std::vector<FbxVector4> corners;
            for (size_t i = 0; i < c.shape.size(); ++i)
                corners.push_back(kPlacements[place](c.shape[i], c.lift.empty() ? 0.0 : c.lift[i]));
            EXPECT_EQ(shared.Triangulate(corners, triangles), PolygonTriangulation::eTessellated);
            ExpectTiling(c.shape, triangles, c.triangles);
            // A triangulator keeps nothing of one polygon for the next.
            PolygonTriangulator().Triangulate(corners, fresh);
            EXPECT_EQ(triangles, fresh);
        }
    }
}

TEST(PolygonTriangulator, ConvexQuadTakesTheDelaunayDiagonal) {
    PolygonTriangulator triangulator;
    std::vector<int> triangles;
    // Wide, the short diagonal joins corners 1 and 3; tall, 0 and 2.
    for (int tall = 0; tall < 2; ++tall) {
        const double w = tall ? 1 : 2, h = tall ? 2 : 1;
        triangulator.Triangulate(InPlane({{-w, 0}, {0, -h}, {w, 0}, {0, h}}), triangles);
        ASSERT_EQ(triangles.size(), 6u);
        for (size_t t = 0; t < 6; t += 3) {
            const std::vector<int> triangle(triangles.begin() + t, triangles.begin() + t + 3);
            EXPECT_EQ(std::count(triangle.begin(), triangle.end(), 1 - tall), 1) << "tall " << tall;
            EXPECT_EQ(std::count(triangle.begin(), triangle.end(), 3 - tall), 1) << "tall " << tall;
        }
    }
}

TEST(PolygonTriangulator, DegenerateOrTinyPolygonsGiveWhatTheirCornersAllow) {
    struct Case {
        const char* name;
        std::vector<FbxVector4> corners;
        PolygonTriangulation how;
        std::vector<int> triangles;
    };
    const std::vector<Case> cases = {
        {"two corners", {{0, 0, 0}, {1, 0, 0}}, PolygonTriangulation::eAsIs, {}},
        {"triangle, even a flat one", {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, PolygonTriangulation::eAsIs, {0, 1, 2}},
        {"corners on a line in space",
         {{0, 0, 0}, {1, 2, 3}, {3, 6, 9}, {2, 4, 6}, {-1, -2, -3}},
         PolygonTriangulation::eTessellated,
         {}},
        {"corners coinciding pairwise",
         {{1, 2, 3}, {1, 2, 3}, {4, 5, 6}, {4, 5, 6}},
         PolygonTriangulation::eTessellated,
         {}},
        // Newell's normal is zero: projected to the y axis' plane, the
        // corners lie on one line.
        {"figure-eight of equal loops",
         InPlane({{0, 0}, {1, 1}, {2, 0}, {2, 1}, {1, 0}, {0, 1}}),
         PolygonTriangulation::eTessellated,
         {}},
    };
    PolygonTriangulator triangulator;
    std::vector<int> triangles = {7};
    for (const Case& c : cases) {
        EXPECT_EQ(triangulator.Triangulate(c.corners, triangles), c.how) << c.name;
        EXPECT_EQ(triangles, c.triangles) << c.name;
    }
}

TEST(PolygonTriangulator, FallsBackToTheZigZagStripWhereTessellationFails) {
    const std::vector<std::pair<const char*, std::vector<FbxVector4>>> cases = {
        // The segment from corner 2 to 3 cannot be forced past the doubled
        // corner.
        {"quad with a doubled corner", InPlane({{1, 2}, {1, 2}, {1, 4}, {0, 1}})},
        // Every face lies outside one of the crossing edges.
        {"self-crossing quad", InPlane({{16, 1}, {20, 6}, {69, 41}, {35, 21}})},
        {"corner that is not a number", {{0, 0, 0}, {1, 0, 0}, {NAN, 1, 0}, {0, 1, 0}, {-1, 0.5, 0}}},
    };
    PolygonTriangulator triangulator;
    std::vector<int> triangles, strip;
    for (const auto& [name, corners] : cases) {
        EXPECT_EQ(triangulator.Triangulate(corners, triangles), PolygonTriangulation::eZigZagStrip) << name;
        ZigZagStrip(static_cast<int>(corners.size()), strip);
        EXPECT_EQ(triangles, strip) << name;
    }
}

TEST(PolygonTriangulator, ZigZagStripAlternatesBetweenTheEnds) {
    const std::vector<std::vector<int>> strips = {
        {},
        {0, 1, 2},
        {0, 1, 2, 2, 3, 0},
        {0, 1, 2, 2, 3, 0, 0, 3, 4},
        {0, 1, 2, 2, 3, 0, 0, 3, 5, 3, 4, 5},
        {0, 1, 2, 2, 3, 0, 0, 3, 6, 3, 4, 6, 6, 4, 5},
    };
    std::vector<int> triangles;
    for (size_t i = 0; i < strips.size(); ++i) {
        ZigZagStrip(static_cast<int>(i) + 2, triangles);
        EXPECT_EQ(triangles, strips[i]) << i + 2 << " corners";
    }
}

TEST(PolygonTessellator, KeepsTheSideTheContourTurnsTo) {
    const std::vector<FbxDouble2> points = {{0, 0}, {0, 1}, {1, 1}, {1, 0}};
    const std::vector<int> contour = {0, 1, 2, 3, 0};
    std::vector<int> triangles;
    // Taken as counter-clockwise, the clockwise square's inside counts as
    // outside, and nothing is left.
    EXPECT_FALSE(TessellatePolygon(points, contour, true, triangles));
    EXPECT_TRUE(triangles.empty());
    ASSERT_TRUE(TessellatePolygon(points, contour, false, triangles));
    // The same square listed counter-clockwise: corner i is its corner (4 - i) mod 4.
    for (int& corner : triangles) corner = (4 - corner) % 4;
    ExpectTiling({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, triangles, 2);
    const std::vector<int> badContour = {0, 1, 4, 3, 0};
    EXPECT_FALSE(TessellatePolygon(points, badContour, false, triangles));
}
