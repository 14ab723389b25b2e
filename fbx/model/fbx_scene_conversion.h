#pragma once

#include <functional>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_matrix.h"
#include "fbx/model/fbx_pivot_set.h"

class FbxAnimCurve;
class FbxGeometry;
class FbxNode;
class FbxPose;
class FbxScene;

// Steps that the axis and the unit conversion of a scene share.

// Sets a pivot vector (rotation offset, rotation pivot, pre-rotation or
// scaling offset) of the node's source pivot set, and its property with it,
// so that the two keep agreeing.
void SetSourcePivot(FbxNode& node, FbxPivotSet::EVector which, const FbxVector4& value);

// Multiplies every key value and tangent of the curve by `factor`, within
// one KeyModifyBegin / KeyModifyEnd pair. A curve without keys is left
// alone.
void MultiplyCurveKeys(FbxAnimCurve& curve, float factor);

// Replaces the transform, transform link and associate model matrix of
// every cluster of every skin of the geometry by `m` times the matrix.
void PremultiplyClusterMatrices(FbxGeometry& geometry, const FbxAMatrix& m);

// For each pose of the scene, each entry for which `handled(pose, entry)`
// is true gets `m` times its matrix and becomes a global entry.
// As removing such entries from the last to the first and adding each
// again would, the handled entries end up behind the others in reverse
// order, and one whose node is gone is dropped.
void PremultiplyPoseEntries(FbxScene& scene, const FbxMatrix& m,
                            const std::function<bool(const FbxPose&, int)>& handled);

// Makes the manager's evaluator forget every evaluated transform of the
// scene's animation stacks and of its own state: the next evaluation reads
// the converted values.
void ForgetEvaluatedTransforms(FbxScene& scene);
