#include "scene/matrix4.h"

#include <gtest/gtest.h>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_vector4.h"

namespace {

void expectNear(const Matrix4& a, const Matrix4& b) {
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(a[i], b[i], 1e-5f) << "element " << i;
}

TEST(Matrix4, AgreesWithTheDocumentModelsProductAndInverse) {
    FbxAMatrix a(FbxVector4(1, -2, 3), FbxVector4(30, 45, -60), FbxVector4(2, 0.5, 1.5));
    FbxAMatrix b(FbxVector4(-4, 0.5, 2), FbxVector4(-10, 80, 5), FbxVector4(1, 3, 0.25));
    // In a * b of the document model b acts first, as in multiply.
    expectNear(multiply(toMatrix4(a), toMatrix4(b)), toMatrix4(a * b));
    expectNear(inverse(toMatrix4(a)), toMatrix4(a.Inverse()));
    expectNear(multiply(inverse(toMatrix4(b)), toMatrix4(b)), identityMatrix4());
    EXPECT_FLOAT_EQ(toMatrix4(a)[12], 1.0f);  // the translation row
    EXPECT_FLOAT_EQ(toMatrix4(a)[14], 3.0f);
}

}  // namespace
