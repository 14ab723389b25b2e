#include "scene/matrix4.h"

#include "fbx/model/fbx_amatrix.h"

Matrix4 identityMatrix4() {
    Matrix4 m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

Matrix4 toMatrix4(const FbxAMatrix& m) {
    Matrix4 out{};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) out[r * 4 + c] = static_cast<float>(m.Get(r, c));
    return out;
}

Matrix4 multiply(const Matrix4& a, const Matrix4& b) {
    Matrix4 out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) {
            float sum = 0.0f;
            for (int k = 0; k < 4; ++k) sum += a[k * 4 + r] * b[c * 4 + k];
            out[c * 4 + r] = sum;
        }
    return out;
}

Matrix4 inverse(const Matrix4& m) {
    // Element (row r, column c) of the upper 3 by 3 part.
    auto at = [&m](int r, int c) { return m[c * 4 + r]; };
    const float c00 = at(1, 1) * at(2, 2) - at(1, 2) * at(2, 1);
    const float c01 = at(1, 2) * at(2, 0) - at(1, 0) * at(2, 2);
    const float c02 = at(1, 0) * at(2, 1) - at(1, 1) * at(2, 0);
    const float det = at(0, 0) * c00 + at(0, 1) * c01 + at(0, 2) * c02;
    const float s = 1.0f / det;
    Matrix4 out{};
    auto set = [&out](int r, int c, float v) { out[c * 4 + r] = v; };
    set(0, 0, c00 * s);
    set(1, 0, c01 * s);
    set(2, 0, c02 * s);
    set(0, 1, (at(0, 2) * at(2, 1) - at(0, 1) * at(2, 2)) * s);
    set(1, 1, (at(0, 0) * at(2, 2) - at(0, 2) * at(2, 0)) * s);
    set(2, 1, (at(0, 1) * at(2, 0) - at(0, 0) * at(2, 1)) * s);
    set(0, 2, (at(0, 1) * at(1, 2) - at(0, 2) * at(1, 1)) * s);
    set(1, 2, (at(0, 2) * at(1, 0) - at(0, 0) * at(1, 2)) * s);
    set(2, 2, (at(0, 0) * at(1, 1) - at(0, 1) * at(1, 0)) * s);
    // The translation is the inverse's 3 by 3 part applied to minus the
    // original translation.
    for (int r = 0; r < 3; ++r) set(r, 3, -(out[0 * 4 + r] * m[12] + out[1 * 4 + r] * m[13] + out[2 * 4 + r] * m[14]));
    out[15] = 1.0f;
    return out;
}
