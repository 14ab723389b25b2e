// Arbitrary polygons: corners on a small integer grid (so that coinciding,
// collinear and cocircular corners are common), or raw doubles (NaN,
// infinities, huge and tiny values). Triangulation always ends, and every
// triangle names corners of the polygon.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fbx/model/fbx_polygon_triangulator.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const bool raw = data[0] & 1;
    ++data, --size;
    std::vector<FbxVector4> corners;
    if (raw) {
        for (size_t i = 0; i + 24 <= size && corners.size() < 2000; i += 24) {
            double v[3];
            std::memcpy(v, data + i, sizeof v);
            corners.emplace_back(v[0], v[1], v[2]);
        }
    } else {
        // Two bytes a corner: x and y in the high and low nibble of the first,
        // z from the second, all between -8 and 7.
        for (size_t i = 0; i + 2 <= size && corners.size() < 2000; i += 2)
            corners.emplace_back((data[i] >> 4) - 8, (data[i] & 15) - 8, (data[i + 1] & 15) - 8);
    }
    PolygonTriangulator triangulator;
    std::vector<int> triangles;
    const PolygonTriangulation how = triangulator.Triangulate(corners, triangles);
    if (triangles.size() % 3 != 0) abort();
    for (int corner : triangles)
        if (corner < 0 || static_cast<size_t>(corner) >= corners.size()) abort();
    if (how == PolygonTriangulation::eZigZagStrip && triangles.size() != 3 * (corners.size() - 2)) abort();
    return 0;
}
