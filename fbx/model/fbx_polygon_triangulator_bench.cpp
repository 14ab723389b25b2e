#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "fbx/model/fbx_polygon_triangulator.h"

namespace {

enum Shape { kCircle, kStar, kSpikes };

// A polygon of `n` corners in a plane, which is either the xy plane or one
// tilted against all axes (where a circle projects to an ellipse). The star
// has 8 tips (fewer below 16 corners) at radius 1 and notches at radius 0.4,
// its edges bent slightly as the radius runs linearly with the angle; its 4
// corner form is an arrowhead. Spikes alternate between radii 1 and 0.4 at
// every corner: n / 2 spikes, ever thinner as n grows.
std::vector<FbxVector4> Polygon(int n, Shape shape, bool tilted) {
    std::vector<FbxDouble2> points;
    if (shape == kStar && n == 4) {
        points = {{1, 0}, {-1, 0.8}, {-0.3, 0}, {-1, -0.8}};
    } else {
        const int tips = n < 16 ? n / 2 : 8;
        for (int i = 0; i < n; ++i) {
            const double turns = static_cast<double>(i) / n, phase = std::fmod(turns * tips, 1.0);
            double r = shape == kCircle ? 1.0 : 1.0 - 0.6 * (phase < 0.5 ? 2 * phase : 2 - 2 * phase);
            if (shape == kSpikes) r = i % 2 ? 0.4 : 1.0;
            points.push_back({r * std::cos(2 * std::numbers::pi * turns), r * std::sin(2 * std::numbers::pi * turns)});
        }
    }
    std::vector<FbxVector4> corners;
    for (const FbxDouble2& p : points) {
        if (tilted)
            corners.emplace_back(0.6 * p[0] - 0.48 * p[1] + 100, 0.8 * p[0] + 0.36 * p[1] - 3, 0.8 * p[1] + 7);
        else
            corners.emplace_back(p[0], p[1], 0);
    }
    return corners;
}

void BM_TriangulatePolygon(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<FbxVector4> corners = Polygon(n, static_cast<Shape>(state.range(1)), state.range(2) != 0);
    PolygonTriangulator triangulator;
    std::vector<int> triangles;
    for (auto _ : state) {
        const PolygonTriangulation how = triangulator.Triangulate(corners, triangles);
        if (how != PolygonTriangulation::eTessellated || triangles.size() != 3 * static_cast<size_t>(n - 2))
            state.SkipWithError("not tessellated");
        benchmark::DoNotOptimize(triangles.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_TriangulatePolygon)
    ->ArgNames({"corners", "star", "tilted"})
    ->ArgsProduct({{4, 8, 64, 1000, 10000}, {kCircle, kStar}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);
// The worst case known: crossing the thin spikes on the tilted plane, the
// Delaunay edges cut ever more of them as n grows.
BENCHMARK(BM_TriangulatePolygon)
    ->ArgNames({"corners", "spikes", "tilted"})
    ->ArgsProduct({{1000, 10000}, {kSpikes}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
