#include "fbx/dump/animation_dump.h"

#include <string>
#include <unordered_set>

#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

DumpValue timeSpan(const FbxTimeSpan& span) {
    DumpValue value = DumpValue::array();
    value.push(span.start.GetSecondDouble());
    value.push(span.stop.GetSecondDouble());
    return value;
}

// The interpolation words that a curve's keys use, in order of first use.
DumpValue interpolations(const KFCurve& curve) {
    DumpValue words = DumpValue::array();
    bool seen[4] = {false, false, false, false};
    for (int i = 0; i < curve.KeyGetCount(); ++i) {
        uint32_t interpolation = curve.KeyGetInterpolation(i);
        int which = interpolation == KFCurve::eInterpolationConstant ? 0
                    : interpolation == KFCurve::eInterpolationLinear ? 1
                    : interpolation == KFCurve::eInterpolationCubic  ? 2
                                                                     : 3;
        if (seen[which]) continue;
        seen[which] = true;
        static const char* const kWords[] = {"Constant", "Linear", "Cubic", "None"};
        words.push(kWords[which]);
    }
    return words;
}

DumpValue dumpCurve(const FbxAnimCurve& curve) {
    const KFCurve& keys = curve.GetKFCurve();
    DumpValue value = DumpValue::object();
    value.add("name", curve.GetName());
    value.add("keys", keys.KeyGetCount());
    if (keys.KeyGetCount() > 0) {
        value.add("firstKey", FbxTime(keys.KeyGetTime(0)).GetSecondDouble());
        value.add("lastKey", FbxTime(keys.KeyGetTime(keys.KeyGetCount() - 1)).GetSecondDouble());
        value.add("interpolations", interpolations(keys));
    } else {
        value.add("default", static_cast<double>(keys.GetDefaultValue()));
    }
    return value;
}

DumpValue dumpCurveNode(const FbxAnimCurveNode& curveNode) {
    DumpValue value = DumpValue::object();
    value.add("name", curveNode.GetName());
    DumpValue& animates = value.add("animates", DumpValue::array());
    const FbxCriteria properties = FbxCriteria::IsProperty();
    for (int i = 0; i < curveNode.GetDstPropertyCount(properties); ++i) {
        FbxProperty property = curveNode.GetDstProperty(properties, i);
        FbxObject* owner = property.GetFbxObject();
        animates.push(std::string(owner ? owner->GetName() : "") + "|" + property.GetHierarchicalName());
    }
    DumpValue& channels = value.add("channels", DumpValue::array());
    for (unsigned c = 0; c < curveNode.GetChannelsCount(); ++c) {
        DumpValue channel = DumpValue::object();
        channel.add("name", curveNode.GetChannel(c).GetName());
        channel.add("value", curveNode.GetChannelValue(c));
        if (const FbxAnimCurve* curve = curveNode.GetCurve(c)) channel.add("curve", dumpCurve(*curve));
        channels.push(std::move(channel));
    }
    return value;
}

DumpValue matrix(const FbxAMatrix& m) {
    DumpValue rows = DumpValue::array();
    for (int r = 0; r < 4; ++r) {
        DumpValue row = DumpValue::array();
        for (int c = 0; c < 4; ++c) row.push(m[r][c]);
        rows.push(std::move(row));
    }
    return rows;
}

// The nodes of the tree, depth first, each once.
std::vector<FbxNode*> treeNodes(const FbxScene& scene) {
    std::vector<FbxNode*> nodes;
    std::vector<FbxNode*> pending;
    std::unordered_set<const FbxNode*> seen;  // lookup only
    if (FbxNode* root = scene.GetRootNode()) {
        pending.push_back(root);
        seen.insert(root);
    }
    while (!pending.empty()) {
        FbxNode* node = pending.back();
        pending.pop_back();
        nodes.push_back(node);
        for (int i = node->GetChildCount() - 1; i >= 0; --i) {
            FbxNode* child = node->GetChild(i);
            if (child && seen.insert(child).second) pending.push_back(child);
        }
    }
    return nodes;
}

}  // namespace

DumpValue dumpAnimation(const FbxScene& scene) {
    DumpValue stacks = DumpValue::array();
    for (int s = 0; s < scene.GetSrcObjectCount<FbxAnimStack>(); ++s) {
        const FbxAnimStack* stack = scene.GetSrcObject<FbxAnimStack>(s);
        DumpValue value = DumpValue::object();
        value.add("name", stack->GetName());
        value.add("description", stack->Description().Get());
        value.add("localTime", timeSpan(stack->GetLocalTimeSpan()));
        value.add("referenceTime", timeSpan(stack->GetReferenceTimeSpan()));
        DumpValue& layers = value.add("layers", DumpValue::array());
        for (int l = 0; l < stack->GetLayerCount(); ++l) {
            const FbxAnimLayer* layer = stack->GetLayer(l);
            DumpValue layerValue = DumpValue::object();
            layerValue.add("name", layer->GetName());
            layerValue.add("weight", layer->Weight().Get());
            layerValue.add("mute", layer->Mute().Get());
            layerValue.add("blendMode", layer->BlendMode().Get());
            DumpValue& curveNodes = layerValue.add("curveNodes", DumpValue::array());
            for (int c = 0; c < layer->GetMemberCount<FbxAnimCurveNode>(); ++c)
                curveNodes.push(dumpCurveNode(*layer->GetMember<FbxAnimCurveNode>(c)));
            layers.push(std::move(layerValue));
        }
        stacks.push(std::move(value));
    }
    return stacks;
}

DumpValue dumpTransforms(FbxScene& scene, const std::vector<double>& seconds) {
    FbxAnimEvaluator* evaluator = scene.GetFbxManager()->GetAnimationEvaluator();
    evaluator->SetContext(scene.GetSrcObject<FbxAnimStack>(0));
    std::vector<FbxNode*> nodes = treeNodes(scene);
    DumpValue list = DumpValue::array();
    auto dumpAt = [&](FbxTime time, DumpValue label) {
        DumpValue entry = DumpValue::object();
        entry.add("time", std::move(label));
        DumpValue& values = entry.add("nodes", DumpValue::array());
        for (FbxNode* node : nodes) {
            DumpValue value = DumpValue::object();
            value.add("name", node->GetName());
            value.add("local", matrix(node->EvaluateLocalTransform(time)));
            value.add("global", matrix(node->EvaluateGlobalTransform(time)));
            values.push(std::move(value));
        }
        list.push(std::move(entry));
    };
    if (seconds.empty()) dumpAt(FbxTime::Infinite(), "static");
    for (double s : seconds) dumpAt(FbxTime::FromSeconds(s), s);
    return list;
}
