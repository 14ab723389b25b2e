// The animation records of the FBX 7 document reader: stacks, layers and
// curve nodes carry everything in properties; curves add their keys as
// parallel arrays. After the connections, the file's take list gives the
// stacks of the same name their time spans, and curve nodes learn what kind
// of transform they drive.

#include "fbx/io/fbx7_animation_records.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "fbx/io/fbx7_document_reader.h"
#include "fbx/io/fbx_field_stream.h"
#include "fbx/io/fbx_io_settings.h"
#include "fbx/io/fbx_reader_fbx7.h"
#include "fbx/model/fbx_anim_curve.h"
#include "fbx/model/fbx_anim_curve_node.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_anim_stack.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_node.h"
#include "fbx/model/fbx_scene.h"

namespace {

// The key form that holds parallel arrays; older forms are not read.
constexpr int kArrayKeyVersion = 4007;

uint32_t extrapolationMode(char type) {
    switch (type) {
    case 'C':
        return KFCurve::eConstant;
    case 'R':
        return KFCurve::eRepetition;
    case 'M':
        return KFCurve::eMirrorRepetition;
    case 'K':
        return KFCurve::eKeepSlope;
    default:
        return KFCurve::eExtrapolationNone;
    }
}

// Reads "Pre-Extrapolation" or "Post-Extrapolation"; false when absent.
bool readExtrapolation(FbxFieldStream& s, const char* field, uint32_t& mode, uint32_t& count) {
    if (!s.BeginField(field)) return false;
    mode = KFCurve::eExtrapolationNone;
    count = 0;
    if (s.HasBlock() && s.EnterBlock()) {
        char type = '0';
        if (s.BeginField("Type")) {
            type = s.NextChar();
            s.EndField();
        }
        mode = extrapolationMode(type);
        count = static_cast<uint32_t>(s.NextInt("Repetition", 0));
        s.LeaveBlock();
    }
    s.EndField();
    return true;
}

}  // namespace

bool FbxReadAnimCurveKeys(FbxFieldStream& s, KFCurve& curve) {
    if (!s.BeginField("Default")) return false;
    curve.KeyModifyBegin();
    curve.Clear();
    curve.SetDefaultValue(static_cast<float>(s.NextDouble()));
    s.EndField();
    int version = s.NextInt("KeyVer", 0);
    if (version < kArrayKeyVersion) {
        curve.KeyModifyEnd();
        return true;
    }

    if (s.BeginField("KeyTime")) {
        int count = 0;
        const int64_t* times = s.NextLongArray(count);
        curve.Resize(times ? count : 0);
        for (int i = 0; i < curve.KeyGetCount(); ++i) curve.KeySetTime(i, times[i]);
        s.EndField();
    }
    int keys = curve.KeyGetCount();
    if (keys == 0) {
        curve.KeyModifyEnd();
        return true;
    }

    if (s.BeginField("KeyValueFloat")) {
        int count = 0;
        const float* values = s.NextFloatArray(count);
        for (int i = 0; values && i < std::min(count, keys); ++i) curve.KeySetValue(i, values[i]);
        s.EndField();
    } else if (s.BeginField("KeyValueDouble")) {
        int count = 0;
        const double* values = s.NextDoubleArray(count);
        for (int i = 0; values && i < std::min(count, keys); ++i) curve.KeySetValue(i, static_cast<float>(values[i]));
        s.EndField();
    }

    std::vector<uint32_t> flags;
    if (s.BeginField("KeyAttrFlags")) {
        int count = 0;
        const unsigned int* words = s.NextUIntArray(count);
        if (words) flags.assign(words, words + count);
        s.EndField();
    }

    if (!s.BeginField("KeyAttrDataFloat")) {
        curve.KeyModifyEnd();
        return true;
    }
    // Four words per attribute. Packed weights and velocities travel as the
    // bits of floats (some of them not-a-number patterns), so the words are
    // copied as bits, never converted through a number.
    std::vector<uint32_t> data;
    int count = 0;
    const void* words = nullptr;
    if (s.IsBinary() || version == kArrayKeyVersion)
        words = s.NextFloatArray(count);
    else
        words = s.NextIntArray(count);
    if (words && count > 0) {
        data.resize(static_cast<size_t>(count));
        std::memcpy(data.data(), words, data.size() * sizeof(uint32_t));
    }
    s.EndField();

    std::vector<KFCurve::KeyAttribute*> attributes;
    attributes.reserve(flags.size());
    for (size_t j = 0; j < flags.size(); ++j) {
        uint32_t packed[4] = {0, 0, 0, 0};
        for (size_t w = 0; w < 4 && 4 * j + w < data.size(); ++w) packed[w] = data[4 * j + w];
        attributes.push_back(curve.NewAttribute(flags[j], packed));
    }

    // Run lengths: attribute j serves the next c keys.
    if (s.BeginField("KeyAttrRefCount")) {
        int runs = 0;
        const int* lengths = s.NextIntArray(runs);
        int key = 0;
        for (int j = 0; lengths && j < runs && j < static_cast<int>(attributes.size()) && key < keys; ++j)
            for (int r = 0; r < lengths[j] && key < keys; ++r) curve.KeySetAttribute(key++, attributes[j]);
        s.EndField();
    }

    uint32_t mode = 0, repeat = 0;
    if (readExtrapolation(s, "Pre-Extrapolation", mode, repeat)) curve.SetPreExtrapolation(mode, repeat);
    if (readExtrapolation(s, "Post-Extrapolation", mode, repeat)) curve.SetPostExtrapolation(mode, repeat);
    curve.KeyModifyEnd();
    return true;
}

FbxObject* Fbx7DocumentReader::ReadAnimationObject(const FbxString& word, const char* name, FbxObject* referenced) {
    FbxClassId classId = word == "AnimationStack"       ? FbxAnimStack::ClassId
                         : word == "AnimationLayer"     ? FbxAnimLayer::ClassId
                         : word == "AnimationCurveNode" ? FbxAnimCurveNode::ClassId
                                                        : FbxAnimCurve::ClassId;
    FbxObject* object = MakeObject(classId, name, referenced);
    if (!object || !inBlock_) return object;
    StepProgress(name);
    reader_.ReadProperties70(object);
    if (FbxAnimCurve* curve = FbxCast<FbxAnimCurve>(object)) FbxReadAnimCurveKeys(*stream_, curve->GetKFCurve());
    return object;
}

void Fbx7DocumentReader::ReadTakes() {
    const std::vector<FbxTakeInfo>* takes = reader_.GetTakeInfos();
    if (!scene_ || !takes || takes->empty() || !Option(FbxIOPath::kAnimation, true)) return;
    FbxFieldStream& s = *stream_;
    if (s.BeginField("Takes")) {
        if (s.HasBlock() && s.EnterBlock()) {
            while (s.BeginField("Take")) {
                FbxString name = s.NextString();
                auto take = std::find_if(takes->begin(), takes->end(),
                                         [&](const FbxTakeInfo& info) { return info.name == name; });
                if (!name.empty() && take != takes->end() && take->select && document_->SetTakeInfo(*take)) {
                    FbxCriteria stacks = FbxCriteria::ObjectType(FbxAnimStack::ClassId);
                    if (auto* stack = static_cast<FbxAnimStack*>(document_->FindSrcObject(stacks, name.c_str())))
                        stack->Reset(&*take);
                }
                s.EndField();
            }
            s.LeaveBlock();
        }
        s.EndField();
    }

    // What each curve node drives, by the data type of its one property.
    int count = document_->GetSrcObjectCount<FbxAnimCurveNode>();
    const FbxCriteria properties = FbxCriteria::IsProperty();
    for (int i = 0; i < count; ++i) {
        FbxAnimCurveNode* curveNode = document_->GetSrcObject<FbxAnimCurveNode>(i);
        if (!curveNode || curveNode->GetDstPropertyCount(properties) != 1) continue;
        FbxString type = curveNode->GetDstProperty(properties, 0).GetPropertyDataType().GetName();
        curveNode->SetTransformKind(type == "Lcl Translation"  ? FbxAnimCurveNode::eTranslation
                                    : type == "Lcl Rotation"   ? FbxAnimCurveNode::eRotation
                                    : type == "Lcl Scaling"    ? FbxAnimCurveNode::eScaling
                                    : type == "Lcl Quaternion" ? FbxAnimCurveNode::eQuaternion
                                                               : FbxAnimCurveNode::eOther);
    }
}

void Fbx7DocumentReader::FinishAnimation() {
    if (!scene_) return;
    // Nodes read before their curve nodes were connected could not give
    // them their quaternion mode: they do it now.
    for (FbxNode* node : nodes_) {
        int mode = node->QuaternionInterpolate().Get();
        if (mode != 0) node->ApplyQuaternionInterpolationToAnimation(mode);
    }
    // The first stack made becomes the evaluator's context; a stack made as
    // a template of "Definitions" is none of the scene's and gives way to
    // the scene's first stack.
    FbxAnimStack* first = scene_->GetSrcObject<FbxAnimStack>(0);
    FbxAnimEvaluator* evaluator = manager_.FindAnimationEvaluator();
    if (first && evaluator) {
        FbxAnimStack* context = evaluator->GetContext();
        if (!context || !context->GetDocument()) evaluator->SetContext(first);
    }
}
