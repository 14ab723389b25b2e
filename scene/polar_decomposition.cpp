#include "scene/polar_decomposition.h"

#include <cmath>

namespace {

// A 3 by 3 matrix by rows: a[r][c].
using Mat3 = std::array<std::array<float, 3>, 3>;

Mat3 upperTransposed(const Matrix4& m) {
    // Element (row r, column c) of `m` stands at c * 4 + r; the transpose
    // takes it to (c, r).
    Mat3 x{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) x[c][r] = m[c * 4 + r];
    return x;
}

// Greatest absolute column sum.
float normOne(const Mat3& a) {
    float best = 0.0f;
    for (int c = 0; c < 3; ++c) {
        float sum = std::fabs(a[0][c]) + std::fabs(a[1][c]) + std::fabs(a[2][c]);
        if (sum > best) best = sum;
    }
    return best;
}

// Greatest absolute row sum.
float normInf(const Mat3& a) {
    float best = 0.0f;
    for (int r = 0; r < 3; ++r) {
        float sum = std::fabs(a[r][0]) + std::fabs(a[r][1]) + std::fabs(a[r][2]);
        if (sum > best) best = sum;
    }
    return best;
}

// The matrix of cofactors: the transpose of the adjugate, so that its rows
// are the cross products of pairs of rows of `a`.
Mat3 cofactors(const Mat3& a) {
    Mat3 out{};
    for (int r = 0; r < 3; ++r) {
        const auto& u = a[(r + 1) % 3];
        const auto& v = a[(r + 2) % 3];
        out[r] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    }
    return out;
}

// The orthogonal factor of a singular matrix `a` (rows as in Mat3), from the
// singular value decomposition a = U diag(sigma) V^T, in double precision:
// the eigenvectors V of a^T a by Jacobi rotations, U = a V / sigma on the
// range, completed to a right-handed basis where a has no rank; the factor
// is U V^T. It is a rotation, since a singular matrix carries no mirror.
Mat3 singularOrthogonalFactor(const Mat3& a) {
    double ata[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) sum += static_cast<double>(a[k][i]) * a[k][j];
            ata[i][j] = sum;
        }
    double v[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  // columns are the eigenvectors
    for (int sweep = 0; sweep < 32; ++sweep) {
        double off = std::fabs(ata[0][1]) + std::fabs(ata[0][2]) + std::fabs(ata[1][2]);
        if (off == 0.0 || !std::isfinite(off)) break;
        for (int p = 0; p < 2; ++p)
            for (int q = p + 1; q < 3; ++q) {
                if (ata[p][q] == 0.0) continue;
                double theta = (ata[q][q] - ata[p][p]) / (2.0 * ata[p][q]);
                double t = (theta >= 0.0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
                double c = 1.0 / std::sqrt(t * t + 1.0);
                double s = t * c;
                for (int k = 0; k < 3; ++k) {  // ata = J^T ata J
                    double kp = ata[k][p], kq = ata[k][q];
                    ata[k][p] = c * kp - s * kq;
                    ata[k][q] = s * kp + c * kq;
                }
                for (int k = 0; k < 3; ++k) {
                    double pk = ata[p][k], qk = ata[q][k];
                    ata[p][k] = c * pk - s * qk;
                    ata[q][k] = s * pk + c * qk;
                }
                for (int k = 0; k < 3; ++k) {
                    double kp = v[k][p], kq = v[k][q];
                    v[k][p] = c * kp - s * kq;
                    v[k][q] = s * kp + c * kq;
                }
            }
    }
    // Order the singular directions by decreasing singular value.
    int order[3] = {0, 1, 2};
    for (int i = 1; i < 3; ++i)
        for (int j = i; j > 0 && ata[order[j]][order[j]] > ata[order[j - 1]][order[j - 1]]; --j)
            std::swap(order[j], order[j - 1]);
    using Vec = std::array<double, 3>;
    auto cross = [](const Vec& p, const Vec& q) {
        return Vec{p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]};
    };
    auto normalised = [](Vec p) {
        double length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        for (double& e : p) e /= length;
        return p;
    };
    // A unit vector perpendicular to `p`, from the axis least aligned with it.
    auto perpendicular = [&](const Vec& p) {
        int axis = 0;
        for (int k = 1; k < 3; ++k)
            if (std::fabs(p[k]) < std::fabs(p[axis])) axis = k;
        Vec e{};
        e[axis] = 1.0;
        return normalised(cross(p, e));
    };
    Vec vs[3], us[3];
    for (int i = 0; i < 3; ++i) vs[i] = {v[0][order[i]], v[1][order[i]], v[2][order[i]]};
    double largest = std::sqrt(std::fmax(ata[order[0]][order[0]], 0.0));
    int rank = 0;
    for (int i = 0; i < 3; ++i) {
        double sigma = std::sqrt(std::fmax(ata[order[i]][order[i]], 0.0));
        if (!(sigma > largest * 1e-6) || i == 2) break;  // a singular matrix has rank 2 at most
        Vec u{};
        for (int r = 0; r < 3; ++r) u[r] = (a[r][0] * vs[i][0] + a[r][1] * vs[i][1] + a[r][2] * vs[i][2]) / sigma;
        us[i] = normalised(u);
        ++rank;
    }
    if (rank == 0) {
        Mat3 identity{};
        identity[0][0] = identity[1][1] = identity[2][2] = 1.0f;
        return identity;
    }
    if (rank == 1) {
        // Any rotation about the one direction will do; take a fixed one.
        vs[1] = perpendicular(vs[0]);
        us[1] = perpendicular(us[0]);
    }
    vs[2] = cross(vs[0], vs[1]);
    us[2] = cross(us[0], us[1]);
    Mat3 q{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            q[r][c] = static_cast<float>(us[0][r] * vs[0][c] + us[1][r] * vs[1][c] + us[2][r] * vs[2][c]);
    return q;
}

}  // namespace

void polarDecompose(const Matrix4& m, Matrix4& q, Matrix4& s) {
    constexpr float kTolerance = 1e-6f;
    // The iteration converges in a handful of steps; the bound only keeps
    // values at the edge of float precision from oscillating for ever.
    constexpr int kMaxSteps = 64;
    // Newton's iteration x <- (gamma x + x^-T / gamma) / 2, on the
    // transpose, converges to the transpose of the orthogonal factor.
    Mat3 x = upperTransposed(m);
    float xOne = normOne(x);
    float xInf = normInf(x);
    bool singular = false;
    for (int step = 0; step < kMaxSteps; ++step) {
        Mat3 adj = cofactors(x);
        float det = x[0][0] * adj[0][0] + x[0][1] * adj[0][1] + x[0][2] * adj[0][2];
        if (det == 0.0f) {
            singular = true;
            break;
        }
        float gamma = std::sqrt(std::sqrt((normOne(adj) * normInf(adj)) / (xOne * xInf)) / std::fabs(det));
        float g1 = gamma * 0.5f;
        float g2 = 0.5f / (gamma * det);
        Mat3 change{};
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) {
                float next = g1 * x[r][c] + g2 * adj[r][c];
                change[r][c] = x[r][c] - next;
                x[r][c] = next;
            }
        xOne = normOne(x);
        xInf = normInf(x);
        if (!(normOne(change) > xOne * kTolerance)) break;
    }
    if (singular) {
        // x holds the transpose of what it converged to so far; the
        // orthogonal factor of that singular matrix is the answer's
        // transpose.
        Mat3 factor = singularOrthogonalFactor(x);
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) x[r][c] = factor[r][c];
    }
    // q = x^T: element (r, c) of q is x[c][r], stored at c * 4 + r.
    Matrix4 xm{};
    q = Matrix4{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            q[c * 4 + r] = x[c][r];
            xm[c * 4 + r] = x[r][c];
        }
    q[15] = xm[15] = 1.0f;
    s = multiply(xm, m);
    for (int r = 0; r < 3; ++r)
        for (int c = r + 1; c < 3; ++c) {
            float mean = (s[c * 4 + r] + s[r * 4 + c]) * 0.5f;
            s[c * 4 + r] = s[r * 4 + c] = mean;
        }
    s[12] = s[13] = s[14] = 0.0f;
}

std::array<float, 4> toQuaternion(const Matrix4& q) {
    float x, y, z, w;
    const float t = q[0] + q[5] + q[10];
    if (t > 0.0f) {
        w = std::sqrt(t + 1.0f) * 0.5f;
        float k = 0.25f / w;
        x = (q[6] - q[9]) * k;
        y = (q[8] - q[2]) * k;
        z = (q[1] - q[4]) * k;
    } else if (q[0] > q[5] && q[0] > q[10]) {
        float r = 2.0f * std::sqrt(q[0] + 1.0f - q[5] - q[10]);
        x = r * 0.25f;
        w = (q[6] - q[9]) / r;
        y = (q[4] + q[1]) / r;
        z = (q[8] + q[2]) / r;
    } else if (q[5] > q[10]) {
        float r = 2.0f * std::sqrt(q[5] + 1.0f - q[0] - q[10]);
        y = r * 0.25f;
        w = (q[8] - q[2]) / r;
        x = (q[4] + q[1]) / r;
        z = (q[9] + q[6]) / r;
    } else {
        float r = 2.0f * std::sqrt(q[10] + 1.0f - q[0] - q[5]);
        z = r * 0.25f;
        w = (q[1] - q[4]) / r;
        x = (q[8] + q[2]) / r;
        y = (q[9] + q[6]) / r;
    }
    return {x, y, z, w};
}
