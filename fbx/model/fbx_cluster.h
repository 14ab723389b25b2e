#pragma once

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_array.h"
#include "fbx/model/fbx_matrix.h"
#include "fbx/model/fbx_sub_deformer.h"

class FbxNode;

// The influence of one bone (the link node) on control points of a skinned
// geometry: control point indices with a weight each, and the matrices of
// the binding time. The link is the cluster's first source of class FbxNode;
// the associate model is the source of its "AssociateModel" property.
class FbxCluster : public FbxSubDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxCluster, FbxSubDeformer)

public:
    enum ELinkMode { eNormalize = 0, eAdditive = 1, eTotalOne = 2 };

    void SetLinkMode(ELinkMode mode) { linkMode_ = mode; }
    ELinkMode GetLinkMode() const { return linkMode_; }

    // Connects the node as a source, in place of any earlier link, and keeps
    // its name. Null does nothing.
    void SetLink(FbxNode* node);
    // Null when there is none.
    FbxNode* GetLink() const;
    // The name of the link node when it was set.
    const char* GetLinkName() const { return linkName_.c_str(); }
    void SetAssociateModel(FbxNode* node);
    FbxNode* GetAssociateModel() const;

    // A negative index adds nothing; the weight is kept as it is.
    void AddControlPointIndex(int index, double weight);
    // Sizes both arrays; new entries are 0.
    void SetControlPointIWCount(int count);
    int GetControlPointIndicesCount() const { return static_cast<int>(indices_.Size()); }
    const int* GetControlPointIndices() const { return indices_.Data(); }
    const double* GetControlPointWeights() const { return weights_.Data(); }
    // Both arrays, for readers and converters; keep them of one length.
    FbxArray<int>& GetControlPointIndexArray() { return indices_; }
    FbxArray<double>& GetControlPointWeightArray() { return weights_; }

    // Setters take an affine matrix and keep its sixteen values; getters
    // give the stored matrix's translation, rotation and scaling.
    void SetTransformMatrix(const FbxAMatrix& m) { transform_ = FbxMatrix(m); }
    FbxAMatrix& GetTransformMatrix(FbxAMatrix& out) const { return out = transform_.ToAffine(); }
    void SetTransformLinkMatrix(const FbxAMatrix& m) { transformLink_ = FbxMatrix(m); }
    FbxAMatrix& GetTransformLinkMatrix(FbxAMatrix& out) const { return out = transformLink_.ToAffine(); }
    void SetTransformAssociateModelMatrix(const FbxAMatrix& m) { transformAssociateModel_ = FbxMatrix(m); }
    FbxAMatrix& GetTransformAssociateModelMatrix(FbxAMatrix& out) const {
        return out = transformAssociateModel_.ToAffine();
    }
    void SetTransformParentMatrix(const FbxAMatrix& m) {
        transformParent_ = FbxMatrix(m);
        transformParentSet_ = true;
    }
    FbxAMatrix& GetTransformParentMatrix(FbxAMatrix& out) const { return out = transformParent_.ToAffine(); }
    bool IsTransformParentSet() const { return transformParentSet_; }
    // The stored matrices as they are.
    const FbxMatrix& GetTransform() const { return transform_; }
    const FbxMatrix& GetTransformLink() const { return transformLink_; }
    const FbxMatrix& GetTransformAssociateModel() const { return transformAssociateModel_; }

    void SetUserData(const char* id, const char* data);
    const char* GetUserDataID() const { return userDataId_.c_str(); }
    const char* GetUserData() const { return userData_.c_str(); }

    // Back to the defaults, with the link disconnected.
    void Reset();

    bool CopyFrom(const FbxObject& other) override;
    // A clone links the same node.
    FbxObject* Clone(FbxObject* container = nullptr) const override;

protected:
    void Construct(const FbxObject* from) override;
    void ConstructProperties(bool forceSet) override;

private:
    void CopyClusterValues(const FbxCluster& other);

    static int sAssociateModel;

    FbxString userDataId_;
    FbxString userData_;
    ELinkMode linkMode_ = eAdditive;
    FbxArray<int> indices_;
    FbxArray<double> weights_;
    FbxMatrix transform_;
    FbxMatrix transformLink_;
    FbxMatrix transformAssociateModel_;
    FbxMatrix transformParent_;
    bool transformParentSet_ = false;
    FbxString linkName_;
};
