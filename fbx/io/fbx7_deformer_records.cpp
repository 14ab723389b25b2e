// The deformer and pose records of the FBX 7 document reader: skins with
// their blend weights, clusters with indices, weights and bind matrices, and
// bind and rest poses.

#include <algorithm>
#include <cstring>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_byte_buffer.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_cluster.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_skin.h"

namespace {

bool enterBlock(FbxFieldStream& s) {
    if (!s.HasBlock()) return false;
    s.EnterBlock();
    return true;
}

// A matrix field: missing gives the identity; otherwise the values that are
// there, row after row, and 0 for the rest.
FbxMatrix readMatrix(FbxFieldStream& s, const char* name) {
    FbxMatrix m;
    if (!s.BeginField(name)) return m;
    int count = 0;
    const double* values = s.NextDoubleArray(count);
    m.SetValues(values, std::min(count, 16));
    s.EndField();
    return m;
}

// An affine matrix that keeps all sixteen values.
FbxAMatrix affine(const FbxMatrix& m) {
    FbxAMatrix a;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) a.Set(r, c, m.Get(r, c));
    return a;
}

// Indices into `indices` and weights into `weights`, both of the indices'
// count: as many weights as there are of both, and 0 for the rest.
void readIndicesAndWeights(FbxFieldStream& s, const char* weightsField, FbxArray<int>& indices,
                           FbxArray<double>& weights) {
    FbxByteBuffer buffer;
    indices.Release();
    weights.Release();
    int count = 0;
    if (s.BeginField("Indexes")) {
        count = s.NextArrayInto(buffer, 'i');
        s.EndField();
    }
    if (count <= 0) return;
    size_t capacity = 0;
    uint8_t* block = buffer.Detach(capacity);
    indices.Adopt(block, static_cast<size_t>(count), capacity);
    int given = 0;
    if (s.BeginField(weightsField)) {
        given = s.NextArrayInto(buffer, 'd');
        s.EndField();
    }
    size_t n = static_cast<size_t>(count);
    if (given > 0 && buffer.Reserve(n * sizeof(double), std::min(buffer.Size(), n * sizeof(double)))) {
        size_t kept = std::min(static_cast<size_t>(given), n);
        std::memset(buffer.Data() + kept * sizeof(double), 0, (n - kept) * sizeof(double));
        block = buffer.Detach(capacity);
        weights.Adopt(block, n, capacity);
    } else if (!weights.Resize(n)) {
        indices.Release();
    }
}

}  // namespace

FbxObject* Fbx7DocumentReader::ReadDeformer(const char* subclass, const char* name, FbxObject* referenced) {
    FbxString sub = subclass;
    if (sub == "Skin") {
        FbxSkin* skin = FbxCast<FbxSkin>(MakeObject(FbxSkin::ClassId, name, referenced));
        if (skin && inBlock_) ReadSkin(*skin);
        return skin;
    }
    if (sub == "Cluster") {
        FbxCluster* cluster = FbxCast<FbxCluster>(MakeObject(FbxCluster::ClassId, name, referenced));
        if (cluster && inBlock_) ReadCluster(*cluster);
        return cluster;
    }
    return ReadGeneric("Deformer", subclass, name, referenced);
}

void Fbx7DocumentReader::ReadSkin(FbxSkin& skin) {
    FbxFieldStream& s = *stream_;
    int version = s.NextInt("Version", 100);
    StepProgress(skin.GetName());
    reader_.ReadProperties70(&skin);
    if (s.BeginField("Link_DeformAcuracy")) {
        skin.SetDeformAccuracy(s.NextDouble());
        s.EndField();
    }
    if (version < 101) return;
    FbxString type = s.NextString("SkinningType", "");
    skin.SetSkinningType(type == "Linear"           ? FbxSkin::eLinear
                         : type == "DualQuaternion" ? FbxSkin::eDualQuaternion
                         : type == "Blend"          ? FbxSkin::eBlend
                                                    : FbxSkin::eRigid);
    if (skin.GetSkinningType() == FbxSkin::eBlend)
        readIndicesAndWeights(s, "BlendWeights", skin.GetControlPointIndexArray(),
                              skin.GetControlPointBlendWeightArray());
}

void Fbx7DocumentReader::ReadCluster(FbxCluster& cluster) {
    FbxFieldStream& s = *stream_;
    s.NextInt("Version", 100);
    StepProgress(cluster.GetName());
    reader_.ReadProperties70(&cluster);
    FbxString mode = s.NextString("Mode", "");
    cluster.SetLinkMode(mode == "Additive" ? FbxCluster::eAdditive
                        : mode == "Total1" ? FbxCluster::eTotalOne
                                           : FbxCluster::eNormalize);
    if (s.BeginField("UserData")) {
        FbxString id = s.NextString();
        FbxString data = s.NextString();
        cluster.SetUserData(id.c_str(), data.c_str());
        s.EndField();
    }
    readIndicesAndWeights(s, "Weights", cluster.GetControlPointIndexArray(), cluster.GetControlPointWeightArray());

    // The file's transforms are relative to the link: the stored ones are
    // their products with the link's matrix.
    FbxMatrix link = readMatrix(s, "TransformLink");
    cluster.SetTransformMatrix(affine(link * readMatrix(s, "Transform")));
    cluster.SetTransformLinkMatrix(affine(link));
    if (s.BeginField("AssociateModel")) {
        if (enterBlock(s)) {
            cluster.SetTransformAssociateModelMatrix(affine(link * readMatrix(s, "Transform")));
            s.LeaveBlock();
        }
        s.EndField();
    }
    if (s.FieldInstanceCount("TransformParent") > 0)
        cluster.SetTransformParentMatrix(affine(readMatrix(s, "TransformParent")));
}

void Fbx7DocumentReader::ReadPose(FbxPose& pose) {
    FbxFieldStream& s = *stream_;
    StepProgress(pose.GetName());
    reader_.ReadProperties70(&pose);
    // The count is the file's word; only the entries that are there count.
    int count = std::min(s.NextInt("NbPoseNodes", 0), s.FieldInstanceCount("PoseNode"));
    for (int i = 0; i < count; ++i) {
        if (!s.BeginField("PoseNode")) break;
        if (enterBlock(s)) {
            int64_t id = s.NextLong("Node", 0);
            FbxMatrix matrix = readMatrix(s, "Matrix");
            bool local = pose.IsRestPose() && s.NextInt("Local", 0) != 0;
            if (id != -1)
                if (FbxObject* object = FindObject(id)) pose.Add(FbxCast<FbxNode>(object), matrix, local, true);
            s.LeaveBlock();
        }
        s.EndField();
    }
}
