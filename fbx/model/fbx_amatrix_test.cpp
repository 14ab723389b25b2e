#include "fbx/model/fbx_amatrix.h"

#include "fbx/model/fbx_rotation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

void ExpectVector(const FbxVector4& v, double x, double y, double z, double w, double tolerance = 1e-12) {
    const double expected[4] = {x, y, z, w};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(v[i], expected[i], tolerance) << "element " << i;
}

void ExpectNear(const FbxAMatrix& a, const FbxAMatrix& b) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(a[r][c], b[r][c], 1e-12) << "row " << r << " col " << c;
}

// A general affine matrix with shear.
FbxAMatrix Skewed() {
    FbxAMatrix m;
    m.SetRow(0, FbxVector4(1.5, 0.25, -0.5));
    m.SetRow(1, FbxVector4(0.3, 2.0, 0.1));
    m.SetRow(2, FbxVector4(-0.4, 0.6, 0.8));
    m.SetRow(3, FbxVector4(7.0, -3.0, 2.5, 1.0));
    return m;
}

}  // namespace

TEST(FbxAMatrix, FreshMatrixIsTheIdentity) {
    const FbxAMatrix m;
    EXPECT_TRUE(m.IsIdentity(0.0));
    ExpectVector(m.GetR(), 0, 0, 0, 0, 0.0);
    ExpectVector(m.GetS(), 1, 1, 1, 0, 0.0);
    EXPECT_EQ(m.GetQ(), FbxQuaternion(0, 0, 0, 1));
}

TEST(FbxAMatrix, ProductAppliesTheRightFactorFirst) {
    FbxAMatrix move;
    move.SetT(FbxVector4(1, 0, 0));
    const FbxAMatrix turn = RotationXYZ(FbxVector4(0, 0, 90));
    ExpectVector(turn.MultT(FbxVector4(1, 0, 0, 1)), 0, 1, 0, 1);
    ExpectVector((move * turn).MultT(FbxVector4(1, 0, 0, 1)), 1, 1, 0, 1);
    ExpectVector((turn * move).MultT(FbxVector4(1, 0, 0, 1)), 0, 2, 0, 1);

    const FbxAMatrix a = Skewed(), b = RotationXYZ(FbxVector4(15, -70, 33)) * move;
    const FbxVector4 p(0.5, -2.0, 4.0, 7.0);
    const FbxVector4 chained = a.MultT(b.MultT(p));
    ExpectVector((a * b).MultT(p), chained[0], chained[1], chained[2], 7.0);
    // Only the affine part takes part: the fourth column stays (0, 0, 0, 1).
    FbxAMatrix odd = a;
    odd[1][3] = 5.0;
    ExpectVector((odd * odd).GetColumn(3), 0, 0, 0, 1, 0.0);
}

TEST(FbxAMatrix, PartsSetAndGet) {
    // Scaled first, turned next, moved last.
    FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(30, -45, 60), FbxVector4(2, 3, 4));
    ExpectVector(m.GetT(), 1, 2, 3, 1);
    ExpectVector(m.GetR(), 30, -45, 60, 0, 1e-9);
    ExpectVector(m.GetS(), 2, 3, 4, 0);
    const FbxVector4 turned = RotationXYZ(FbxVector4(30, -45, 60)).MultT(FbxVector4(2, 3, 4, 1));
    ExpectVector(m.MultT(FbxVector4(1, 1, 1, 1)), turned[0] + 1, turned[1] + 2, turned[2] + 3, 1);

    // SetQ swaps the rotation only.
    const double h = 40.0 * 3.141592653589793 / 360.0;
    m.SetQ(FbxQuaternion(0, std::sin(h), 0, std::cos(h)));
    ExpectVector(m.GetT(), 1, 2, 3, 1);
    ExpectVector(m.GetS(), 2, 3, 4, 0);
    ExpectVector(m.GetR(), 0, 40, 0, 0, 1e-9);

    FbxAMatrix diagonal;
    diagonal.SetS(FbxVector4(2, 3, 4));
    FbxAMatrix expected;
    expected[0][0] = 2;
    expected[1][1] = 3;
    expected[2][2] = 4;
    EXPECT_EQ(diagonal, expected);
    FbxAMatrix turnOnly;
    turnOnly.SetR(FbxVector4(10, 20, 30));
    ExpectNear(turnOnly, RotationXYZ(FbxVector4(10, 20, 30)));

    // SetR keeps translation and scale but drops shear.
    FbxAMatrix sheared = Skewed();
    const FbxVector4 s = sheared.GetS();
    sheared.SetR(FbxVector4(0, 0, 45));
    ExpectVector(sheared.GetT(), 7, -3, 2.5, 1);
    ExpectVector(sheared.GetS(), s[0], s[1], s[2], 0);
    EXPECT_NEAR(sheared.GetRow(0).DotProduct(sheared.GetRow(1)), 0.0, 1e-12);
}

TEST(FbxAMatrix, MirroredMatricesCarryTheSignOnAllThreeScales) {
    FbxAMatrix mirror;
    mirror[2][2] = -1.0;
    ExpectVector(mirror.GetS(), -1, -1, -1, 0);
    // The rest of the mirror is a half turn, and the parts build it again.
    ExpectNear(FbxAMatrix(mirror.GetT(), mirror.GetR(), mirror.GetS()), mirror);

    FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(20, 30, 40), FbxVector4(2, -3, 4));
    ExpectVector(m.GetS(), -2, -3, -4, 0);
    ExpectNear(FbxAMatrix(m.GetT(), m.GetR(), m.GetS()), m);
}

TEST(FbxAMatrix, InverseUndoesTheTransformAndSingularGivesTheIdentity) {
    for (const FbxAMatrix& m :
         {Skewed(), FbxAMatrix(FbxVector4(1, -2, 3), FbxVector4(10, 95, -170), FbxVector4(0.5, 2, -3))}) {
        ExpectNear(m * m.Inverse(), FbxAMatrix());
        ExpectNear(m.Inverse() * m, FbxAMatrix());
    }

    FbxAMatrix rank2 = Skewed();
    rank2.SetRow(2, rank2.GetRow(0) + rank2.GetRow(1));
    FbxAMatrix tiny;  // determinant 1e-18
    tiny.SetS(FbxVector4(1e-6, 1e-6, 1e-6));
    FbxAMatrix notANumber = Skewed(), huge = Skewed();
    notANumber[1][1] = std::numeric_limits<double>::quiet_NaN();
    huge[0][0] = std::numeric_limits<double>::infinity();
    for (const FbxAMatrix& m :
         {FbxAMatrix(FbxVector4(4, 5, 6), FbxVector4(10, 20, 30), FbxVector4(1, 0, 1)), rank2, tiny, notANumber, huge})
        EXPECT_TRUE(m.Inverse().IsIdentity(0.0));
}

TEST(FbxAMatrix, ZeroScaleGivesFiniteParts) {
    const FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(30, 40, 50), FbxVector4(0, 2, 2));
    ExpectVector(m.GetS(), 0, 2, 2, 0);
    const FbxVector4 r = m.GetR();
    const FbxQuaternion q = m.GetQ();
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isfinite(r[i]) && std::isfinite(q[i]));

    FbxAMatrix nothing;
    nothing.SetS(FbxVector4(0, 0, 0));
    ExpectVector(nothing.GetR(), 0, 0, 0, 0, 0.0);
}
