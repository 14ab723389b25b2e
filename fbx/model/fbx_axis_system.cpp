#include "fbx/model/fbx_axis_system.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <unordered_set>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_node_selection.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_scene_conversion.h"

namespace {

// The axis and sign of an integer that names one (negative for a negative
// sign).
int SignOf(int v) { return v < 0 ? -1 : 1; }

// The components of a triple moved from the `from` system's axes to those
// of `to`: for up, front and coord, new[to.axis] = old[from.axis] * from.sign
// * to.sign.
std::array<double, 3> RemapTriple(const std::array<double, 3>& old, const FbxAxisSystem& from,
                                  const FbxAxisSystem& to) {
    std::array<double, 3> result{0.0, 0.0, 0.0};
    const FbxAxisSystem::AxisDef* pairs[3][2] = {
        {&from.Up(), &to.Up()}, {&from.Front(), &to.Front()}, {&from.Coord(), &to.Coord()}};
    for (auto& [f, t] : pairs) result[t->axis] = old[f->axis] * f->sign * t->sign;
    return result;
}

// Moves the default values and curves of a translation curve node to the
// channels of the target axes, negating the curves whose axis flips.
void RemapTranslationCurveNode(FbxAnimCurveNode& curveNode, const FbxAxisSystem& from, const FbxAxisSystem& to) {
    const unsigned channels = curveNode.GetChannelsCount();
    std::array<double, 3> values{};
    for (unsigned c = 0; c < 3; ++c) values[c] = curveNode.GetChannelValue(c, 0.0);
    values = RemapTriple(values, from, to);
    for (unsigned c = 0; c < 3 && c < channels; ++c) curveNode.SetChannelValue(c, values[c]);

    std::array<FbxAnimCurve*, 3> curves{};
    for (unsigned c = 0; c < 3 && c < channels; ++c) {
        curves[c] = curveNode.GetCurve(c);
        if (curves[c]) curveNode.GetChannel(c).DisconnectSrcObject(curves[c]);
    }
    const FbxAxisSystem::AxisDef* pairs[3][2] = {
        {&from.Up(), &to.Up()}, {&from.Front(), &to.Front()}, {&from.Coord(), &to.Coord()}};
    for (auto& [f, t] : pairs) {
        FbxAnimCurve* curve = curves[f->axis];
        if (!curve || static_cast<unsigned>(t->axis) >= channels) continue;
        if (f->sign * t->sign < 0) MultiplyCurveKeys(*curve, -1.0f);
        curveNode.ConnectToChannel(curve, static_cast<unsigned>(t->axis));
    }
}

FbxVector4 ToVector(const FbxDouble3& v) { return FbxVector4(v[0], v[1], v[2]); }
FbxDouble3 ToDouble3(const FbxVector4& v) { return FbxDouble3(v[0], v[1], v[2]); }

FbxAMatrix Translation(const FbxVector4& v) {
    FbxAMatrix m;
    m.SetT(v);
    return m;
}

// Permutes the translation limits of a node as `c` permutes axes: new
// component i takes old component j where c moves axis j to axis i, and an
// axis that changes sign gets the old interval mirrored, its two ends (and
// their flags) swapped.
void ConvertTranslationLimits(FbxNode& node, const FbxAMatrix& c) {
    static const FbxNode::EProperty kMinFlags[3] = {FbxNode::eTranslationMinX, FbxNode::eTranslationMinY,
                                                    FbxNode::eTranslationMinZ};
    static const FbxNode::EProperty kMaxFlags[3] = {FbxNode::eTranslationMaxX, FbxNode::eTranslationMaxY,
                                                    FbxNode::eTranslationMaxZ};
    const FbxDouble3 oldMin = node.TranslationMin().Get(), oldMax = node.TranslationMax().Get();
    bool oldMinOn[3], oldMaxOn[3];
    for (int i = 0; i < 3; ++i) {
        oldMinOn[i] = node.GetProperty(kMinFlags[i]).Get<FbxBool>();
        oldMaxOn[i] = node.GetProperty(kMaxFlags[i]).Get<FbxBool>();
    }
    FbxDouble3 newMin, newMax;
    LimitRecord& record = node.GetTransform().translationLimits;
    for (int j = 0; j < 3; ++j) {
        // Old axis j goes to the axis of the nonzero entry of row j.
        for (int i = 0; i < 3; ++i) {
            const double s = c.Get(j, i);
            if (s == 0.0) continue;
            const bool flip = s < 0.0;
            newMin[i] = flip ? -oldMax[j] : oldMin[j];
            newMax[i] = flip ? -oldMin[j] : oldMax[j];
            const bool minOn = flip ? oldMaxOn[j] : oldMinOn[j];
            const bool maxOn = flip ? oldMinOn[j] : oldMaxOn[j];
            node.GetProperty(kMinFlags[i]).Set(FbxBool(minOn));
            node.GetProperty(kMaxFlags[i]).Set(FbxBool(maxOn));
            record.SetMinActive(i, minOn);
            record.SetMaxActive(i, maxOn);
        }
    }
    node.TranslationMin().Set(newMin);
    node.TranslationMax().Set(newMax);
    record.min = ToVector(newMin);
    record.max = ToVector(newMax);
}

// Moves a camera's position-like property as a point.
void TransformPointProperty(FbxNodeAttribute& attribute, const char* name, const FbxAMatrix& c) {
    FbxProperty property = attribute.FindProperty(name);
    if (!property.IsValid() || property.GetPropertyDataType().GetType() != eFbxDouble3) return;
    property.Set(ToDouble3(c.MultT(ToVector(property.Get<FbxDouble3>()))));
}

}  // namespace

FbxAxisSystem::FbxAxisSystem(int up, int front, int coordSystem) {
    mUp.axis = std::abs(up) - 1;
    if (mUp.axis < 0 || mUp.axis > 2) mUp.axis = 1;
    mUp.sign = SignOf(up);
    const int a = mUp.axis == 0 ? 1 : 0;
    const int b = mUp.axis == 2 ? 1 : 2;
    const bool firstIsFront = std::abs(front) != 2;
    mFront.axis = firstIsFront ? a : b;
    mCoord.axis = firstIsFront ? b : a;
    mFront.sign = SignOf(front);
    const int d = mUp.axis - mFront.axis;
    mCoord.sign =
        mUp.sign * mFront.sign * (std::abs(d) < 1.5 ? -1 : 1) * (d < 0 ? -1 : 1) * (coordSystem != 0 ? -1 : 1);
}

FbxAxisSystem FbxAxisSystem::FromSettings(const FbxGlobalSettings& settings) {
    // Values out of range would index past a triple: they read as the
    // default axes.
    auto def = [](int axis, int sign, int fallback) {
        return AxisDef{axis >= 0 && axis <= 2 ? axis : fallback, sign < 0 ? -1 : 1};
    };
    return FbxAxisSystem(def(settings.UpAxis().Get(), settings.UpAxisSign().Get(), 1),
                         def(settings.FrontAxis().Get(), settings.FrontAxisSign().Get(), 2),
                         def(settings.CoordAxis().Get(), settings.CoordAxisSign().Get(), 0));
}

void FbxAxisSystem::ToSettings(FbxGlobalSettings& settings) const {
    settings.UpAxis().Set(mUp.axis);
    settings.UpAxisSign().Set(mUp.sign);
    settings.FrontAxis().Set(mFront.axis);
    settings.FrontAxisSign().Set(mFront.sign);
    settings.CoordAxis().Set(mCoord.axis);
    settings.CoordAxisSign().Set(mCoord.sign);
}

FbxAMatrix FbxAxisSystem::BasisMatrix() const {
    FbxAMatrix m;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) m.Set(r, c, 0.0);
    m.Set(0, mCoord.axis, mCoord.sign);
    m.Set(1, mUp.axis, mUp.sign);
    m.Set(2, mFront.axis, mFront.sign);
    return m;
}

FbxAMatrix FbxAxisSystem::ConversionMatrixFrom(const FbxAxisSystem& from) const {
    return BasisMatrix() * from.BasisMatrix().Inverse();
}

void FbxAxisSystem::ConvertScene(FbxScene* scene) const {
    if (!scene) return;
    FbxGlobalSettings* settings = scene->GetGlobalSettings();
    if (!settings) return;
    const FbxAxisSystem from = FromSettings(*settings);
    if (from == *this) return;
    const FbxAMatrix c = ConversionMatrixFrom(from);

    NodeSelection selection = NodeSelection::RootChildren(*scene);
    for (FbxAnimCurveNode* curveNode : selection.translationCurveNodes)
        RemapTranslationCurveNode(*curveNode, from, *this);
    for (FbxNode* node : selection.nodes) {
        const FbxDouble3 t = node->LclTranslation().Get();
        const std::array<double, 3> moved = RemapTriple({t[0], t[1], t[2]}, from, *this);
        node->LclTranslation().Set(FbxDouble3(moved[0], moved[1], moved[2]));
    }
    for (FbxNode* node : selection.nodes) {
        node->RotationActive().Set(true);
        node->GetTransform().rotationLimits.SetActive(true);

        FbxAMatrix pre;
        pre.SetR(node->GetPreRotation(FbxNode::eSourcePivot));
        SetSourcePivot(*node, FbxPivotSet::ePreRotation, (c * pre).GetR());

        const FbxVector4 p = node->GetRotationPivot(FbxNode::eSourcePivot);
        const FbxVector4 o = node->GetRotationOffset(FbxNode::eSourcePivot);
        SetSourcePivot(*node, FbxPivotSet::eRotationOffset,
                       (c * Translation(o)).GetT() + (c * Translation(p)).GetT() - p);

        ConvertTranslationLimits(*node, c);
    }

    // A geometry shared by several nodes has its clusters converted once.
    std::unordered_set<const FbxGeometry*> converted;  // lookup only
    for (FbxNode* node : SelectNodesBelow(scene->GetRootNode())) {
        FbxNodeAttribute* attribute = node->GetNodeAttribute();
        if (!attribute) continue;
        const FbxNodeAttribute::EType type = attribute->GetAttributeType();
        if (type == FbxNodeAttribute::eCamera || type == FbxNodeAttribute::eCameraStereo) {
            TransformPointProperty(*attribute, "Position", c);
            TransformPointProperty(*attribute, "UpVector", c);
            TransformPointProperty(*attribute, "InterestPosition", c);
        }
        if (FbxGeometry* geometry = node->GetGeometry(); geometry && converted.insert(geometry).second)
            PremultiplyClusterMatrices(*geometry, c);
    }

    PremultiplyPoseEntries(*scene, FbxMatrix(c), [](const FbxPose& pose, int i) { return !pose.IsLocalMatrix(i); });
    ToSettings(*settings);
    ForgetEvaluatedTransforms(*scene);
}
