#pragma once

#include "fbx/model/fbx_array.h"
#include "fbx/model/fbx_deformer.h"

class FbxCluster;
class FbxGeometry;

// A skin deformer: a set of clusters that bind a geometry to bones. The
// clusters are its source objects of class FbxCluster, in connection order;
// the geometry is its first destination of class FbxGeometry.
class FbxSkin : public FbxDeformer {
    KIVA_FBX_OBJECT_DECLARE(FbxSkin, FbxDeformer)

public:
    enum EType { eRigid = 0, eLinear = 1, eDualQuaternion = 2, eBlend = 3 };

    EDeformerType GetDeformerType() const override { return eSkin; }

    int GetClusterCount() const;
    // Null for an index out of range.
    FbxCluster* GetCluster(int index) const;
    // Connects the cluster as a source; false for null or a refusal.
    bool AddCluster(FbxCluster* cluster);
    // Disconnects the cluster; the cluster itself, or null when it was none.
    FbxCluster* RemoveCluster(FbxCluster* cluster);

    // Connects the skin to the geometry (as its deformer).
    bool SetGeometry(FbxGeometry* geometry);
    FbxGeometry* GetGeometry() const;

    void SetDeformAccuracy(double accuracy) { deformAccuracy_ = accuracy; }
    double GetDeformAccuracy() const { return deformAccuracy_; }
    void SetSkinningType(EType type) { skinningType_ = type; }
    EType GetSkinningType() const { return skinningType_; }

    // Blend weights of a blend skin: one per control point listed. A
    // negative index adds nothing; the weight is clamped to 0 .. 1.
    void AddControlPointIndex(int index, double weight);
    // Sizes both arrays; new entries are 0.
    void SetControlPointIndexCount(int count);
    int GetControlPointIndicesCount() const { return static_cast<int>(indices_.Size()); }
    int* GetControlPointIndices() { return indices_.Data(); }
    double* GetControlPointBlendWeights() { return blendWeights_.Data(); }
    FbxArray<int>& GetControlPointIndexArray() { return indices_; }
    FbxArray<double>& GetControlPointBlendWeightArray() { return blendWeights_; }

    bool CopyFrom(const FbxObject& other) override;
    // A clone of a skin carries clones of its clusters.
    FbxObject* Clone(FbxObject* container = nullptr) const override;

protected:
    void Construct(const FbxObject* from) override;

private:
    void CopySkinValues(const FbxSkin& other);

    double deformAccuracy_ = 50.0;
    EType skinningType_ = eRigid;
    FbxArray<int> indices_;
    FbxArray<double> blendWeights_;
};
