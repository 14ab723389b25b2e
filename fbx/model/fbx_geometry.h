#pragma once

#include "fbx/model/fbx_deformer.h"
#include "fbx/model/fbx_geometry_base.h"

// A geometry that can carry deformers and shapes: its deformers are its
// source objects of class FbxDeformer, in connection order.
class FbxGeometry : public FbxGeometryBase {
    KIVA_FBX_OBJECT_DECLARE(FbxGeometry, FbxGeometryBase)

public:
    int GetDeformerCount() const { return GetSrcObjectCount<FbxDeformer>(); }
    // Of one kind only.
    int GetDeformerCount(FbxDeformer::EDeformerType type) const;
    // Null for an index out of range.
    FbxDeformer* GetDeformer(int index) const { return GetSrcObject<FbxDeformer>(index); }
    FbxDeformer* GetDeformer(int index, FbxDeformer::EDeformerType type) const;
    // Connects the deformer as a source; its index among the deformers, or
    // -1 for null or a refused connection.
    int AddDeformer(FbxDeformer* deformer);

    // Takes over the other's properties, control points and layers, and
    // clones of its deformers in place of its own.
    bool CopyFrom(const FbxObject& other) override;

protected:
    void Construct(const FbxObject* from) override;

private:
    void CloneDeformersOf(const FbxGeometry& other);
};
