#include "fbx/model/fbx_matrix.h"

FbxMatrix::FbxMatrix(const FbxAMatrix& m) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) mData[r][c] = m.Get(r, c);
}

void FbxMatrix::SetValues(const double* values, int count) {
    for (int i = 0; i < 16; ++i) mData[i / 4][i % 4] = values && i < count ? values[i] : 0.0;
}

FbxAMatrix FbxMatrix::ToAffine() const {
    FbxAMatrix all;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) all.Set(r, c, mData[r][c]);
    return FbxAMatrix(all.GetT(), all.GetR(), all.GetS());
}

FbxMatrix FbxMatrix::operator*(const FbxMatrix& m) const {
    FbxMatrix product;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            double sum = 0.0;
            for (int j = 0; j < 4; ++j) sum += m.mData[r][j] * mData[j][c];
            product.mData[r][c] = sum;
        }
    return product;
}

bool FbxMatrix::operator==(const FbxMatrix& m) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (mData[r][c] != m.mData[r][c]) return false;
    return true;
}
