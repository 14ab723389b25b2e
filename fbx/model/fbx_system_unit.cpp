#include "fbx/model/fbx_system_unit.h"

#include <cmath>
#include <unordered_set>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_geometry.h"
#include "fbx/model/fbx_global_settings.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_node_attribute.h"
#include "fbx/model/fbx_node_selection.h"
#include "fbx/model/fbx_pose.h"
#include "fbx/model/fbx_scene.h"
#include "fbx/model/fbx_scene_conversion.h"

const FbxSystemUnit FbxSystemUnit::mm(0.1);
const FbxSystemUnit FbxSystemUnit::dm(10.0);
const FbxSystemUnit FbxSystemUnit::cm(1.0);
const FbxSystemUnit FbxSystemUnit::m(100.0);
const FbxSystemUnit FbxSystemUnit::km(100000.0);
const FbxSystemUnit FbxSystemUnit::Inch(2.54);
const FbxSystemUnit FbxSystemUnit::Foot(30.48);
const FbxSystemUnit FbxSystemUnit::Yard(91.44);
const FbxSystemUnit FbxSystemUnit::Mile(160934.4);

namespace {

FbxVector4 ToVector(const FbxDouble3& v) { return FbxVector4(v[0], v[1], v[2]); }

FbxAMatrix Translation(const FbxVector4& v) {
    FbxAMatrix m;
    m.SetT(v);
    return m;
}

FbxAMatrix Scaling(double f) {
    FbxAMatrix m;
    m.SetS(FbxVector4(f, f, f));
    return m;
}

FbxAMatrix Rotation(const FbxVector4& angles) {
    FbxAMatrix m;
    m.SetR(angles);
    return m;
}

// Scales channels 0 to 2 of a curve node: their values and the keys of
// their first curves.
void ScaleCurveNode(FbxAnimCurveNode& curveNode, double f, unsigned channelCount) {
    for (unsigned c = 0; c < channelCount && c < curveNode.GetChannelsCount(); ++c) {
        curveNode.SetChannelValue(c, curveNode.GetChannelValue(c) * f);
        if (FbxAnimCurve* curve = curveNode.GetCurve(c)) MultiplyCurveKeys(*curve, static_cast<float>(f));
    }
}

void ScaleDouble3(FbxProperty property, double f) {
    if (!property.IsValid()) return;
    FbxDouble3 v = property.Get<FbxDouble3>();
    property.Set(FbxDouble3(v[0] * f, v[1] * f, v[2] * f));
}

void ScaleDouble(FbxProperty property, double f) {
    if (property.IsValid()) property.Set(property.Get<FbxDouble>() * f);
}

// Gives a root child's pivots the values that keep its global picture `g`
// (taken before the conversion) now that its translation and scaling have
// been multiplied by `f`.
void RecomputePivots(FbxNode& node, const FbxAMatrix& g, double f) {
    const FbxVector4 t = ToVector(node.LclTranslation().Get());
    const FbxVector4 s = ToVector(node.LclScaling().Get());
    const FbxAMatrix r = Rotation(node.GetPreRotation(FbxNode::eSourcePivot)) *
                         Rotation(ToVector(node.LclRotation().Get())) *
                         Rotation(node.GetPostRotation(FbxNode::eSourcePivot));
    const FbxVector4 p = node.GetRotationPivot(FbxNode::eSourcePivot);
    const FbxVector4 o = node.GetRotationOffset(FbxNode::eSourcePivot);
    const FbxVector4 q = node.GetScalingPivot(FbxNode::eSourcePivot);
    const FbxAMatrix scale = Scaling(f);
    const FbxAMatrix pivot = Translation(p), pivotInverse = Translation(-p);

    const FbxVector4 u = (scale * Translation(t * (1.0 / f)) * Translation(o) * pivot * r * pivotInverse).MultT(p);
    const FbxAMatrix b = Translation(t) * Translation(o) * pivot * r * pivotInverse;
    FbxVector4 p2 = b.Inverse().MultT(u);
    p2[3] = 0.0;
    SetSourcePivot(node, FbxPivotSet::eRotationPivot, p2);

    const FbxAMatrix d = Translation(o) * pivot * r * pivotInverse * (Translation(p2) * r * Translation(-p2)).Inverse();
    const FbxVector4 o2 = d.GetT();
    SetSourcePivot(node, FbxPivotSet::eRotationOffset, o2);

    const FbxAMatrix e = Translation(t) * Translation(o2) * Translation(p2) * r * Translation(-p2);
    FbxAMatrix h;
    h.SetS(s);
    h = Translation(q) * h * Translation(-q);
    SetSourcePivot(node, FbxPivotSet::eScalingOffset, (e.Inverse() * scale * g * h.Inverse()).GetT());
}

// Multiplies the minimum and maximum of a limit, on the properties and in
// the node's record.
void ScaleLimits(FbxNode& node, FbxNode::EProperty minProperty, FbxNode::EProperty maxProperty, LimitRecord& record,
                 double f) {
    ScaleDouble3(node.GetProperty(minProperty), f);
    ScaleDouble3(node.GetProperty(maxProperty), f);
    record.min = record.min * f;
    record.max = record.max * f;
}

// The factor of a light's decay: f for linear, f squared for quadratic, f
// cubed for cubic; 1 for anything else.
double DecayFactor(const FbxNodeAttribute& light, double f) {
    FbxProperty decay = light.FindProperty("DecayType");
    if (!decay.IsValid()) return 1.0;
    switch (decay.Get<FbxInt>()) {
    case 1:
        return f;
    case 2:
        return f * f;
    case 3:
        return f * f * f;
    default:
        return 1.0;
    }
}

void ConvertLightIntensity(FbxScene& scene, const FbxNodeAttribute& light, double f) {
    const double factor = DecayFactor(light, f);
    if (factor == 1.0) return;
    FbxProperty intensity = light.FindProperty("Intensity");
    if (!intensity.IsValid()) return;
    for (int i = 0; i < scene.GetSrcObjectCount<FbxAnimStack>(); ++i) {
        FbxAnimStack* stack = scene.GetSrcObject<FbxAnimStack>(i);
        if (!stack) continue;
        for (int l = 0; l < stack->GetLayerCount(); ++l)
            if (FbxAnimCurveNode* curveNode = intensity.GetCurveNode(stack->GetLayer(l)))
                ScaleCurveNode(*curveNode, factor, 1);
    }
}

void ConvertPhotometricProperties(const FbxNodeAttribute& light, double f) {
    for (const char* name :
         {"illuminanceAt", "disc_radius", "cylinder_radius", "sphere_radius", "rectangle_width", "rectangle_length"}) {
        FbxProperty property = light.FindProperty(name);
        if (property.IsValid() && property.GetPropertyDataType().GetType() == eFbxDouble) ScaleDouble(property, f);
    }
    FbxProperty axis = light.FindProperty("cylinder_axis");
    if (axis.IsValid() && axis.GetPropertyDataType().GetType() == eFbxDouble3) ScaleDouble3(axis, f);
}

void ConvertChildren(FbxScene& scene, double f, const FbxSystemUnit::ConversionOptions& options) {
    NodeSelection selection = NodeSelection::RootChildren(scene);
    std::vector<FbxAMatrix> globals;
    globals.reserve(selection.nodes.size());
    for (FbxNode* node : selection.nodes) globals.push_back(node->EvaluateGlobalTransform());

    for (FbxAnimCurveNode* curveNode : selection.scalingCurveNodes) ScaleCurveNode(*curveNode, f, 3);
    for (FbxAnimCurveNode* curveNode : selection.translationCurveNodes) ScaleCurveNode(*curveNode, f, 3);
    for (FbxNode* node : selection.nodes) {
        ScaleDouble3(node->LclTranslation(), f);
        ScaleDouble3(node->LclScaling(), f);
    }
    for (size_t i = 0; i < selection.nodes.size(); ++i) RecomputePivots(*selection.nodes[i], globals[i], f);

    const FbxAMatrix scale = Scaling(f);
    // A geometry shared by several nodes has its clusters converted once.
    std::unordered_set<const FbxGeometry*> converted;  // lookup only
    for (FbxNode* node : SelectNodesBelow(scene.GetRootNode())) {
        if (options.convertLimits) {
            TransformRecord& transform = node->GetTransform();
            ScaleLimits(*node, FbxNode::eScalingMin, FbxNode::eScalingMax, transform.scalingLimits, f);
            ScaleLimits(*node, FbxNode::eTranslationMin, FbxNode::eTranslationMax, transform.translationLimits, f);
        }
        FbxNodeAttribute* attribute = node->GetNodeAttribute();
        if (!attribute) continue;
        if (options.convertClusters)
            if (FbxGeometry* geometry = node->GetGeometry(); geometry && converted.insert(geometry).second)
                PremultiplyClusterMatrices(*geometry, scale);
        const FbxNodeAttribute::EType type = attribute->GetAttributeType();
        if (type == FbxNodeAttribute::eLight) {
            if (options.convertLightIntensity) ConvertLightIntensity(scene, *attribute, f);
            if (options.convertPhotometricProperties) ConvertPhotometricProperties(*attribute, f);
        }
        if (options.convertCameraClipPlanes &&
            (type == FbxNodeAttribute::eCamera || type == FbxNodeAttribute::eCameraStereo)) {
            ScaleDouble(attribute->FindProperty("NearPlane"), f);
            ScaleDouble(attribute->FindProperty("FarPlane"), f);
        }
    }
}

}  // namespace

bool FbxSystemUnit::operator==(const FbxSystemUnit& other) const {
    return std::fabs(mScaleFactor - other.mScaleFactor) <= 1e-6 && std::fabs(mMultiplier - other.mMultiplier) <= 1e-6;
}

void FbxSystemUnit::ConvertScene(FbxScene* scene, const ConversionOptions& options) const {
    if (!scene) return;
    FbxGlobalSettings* settings = scene->GetGlobalSettings();
    if (!settings) return;
    double current = settings->UnitScaleFactor().Get();
    if (FbxSystemUnit(current) != *this) {
        if (mMultiplier != 1.0)
            if (FbxNode* root = scene->GetRootNode())
                for (int i = 0; i < root->GetChildCount(); ++i)
                    if (FbxNode* child = root->GetChild(i)) ScaleDouble3(child->LclScaling(), mMultiplier);

        constexpr double kEpsilon = 2.220446049250313e-16;
        double from = current;
        if (std::fabs(from) <= kEpsilon) from = from > 0.0 ? kEpsilon : -kEpsilon;
        const double f = from / mScaleFactor;

        ConvertChildren(*scene, f, options);
        const FbxMatrix scale(Scaling(f));
        FbxNode* root = scene->GetRootNode();
        PremultiplyPoseEntries(*scene, scale, [root](const FbxPose& pose, int i) {
            if (!pose.IsLocalMatrix(i)) return true;
            const FbxNode* node = pose.GetNode(i);
            return node && node->GetParent() == root;
        });
        ForgetEvaluatedTransforms(*scene);
    }
    settings->OriginalUnitScaleFactor().Set(current);
    settings->UnitScaleFactor().Set(mScaleFactor);
}
