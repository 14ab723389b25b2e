#include "fbx/model/fbx_anim_eval_state.h"

#include <atomic>

namespace {

std::atomic<uint64_t> gCurveNodeGeneration{0};

}  // namespace

uint64_t FbxAnimEvalState::CurveNodeGeneration() { return gCurveNodeGeneration.load(std::memory_order_relaxed); }

void FbxAnimEvalState::BumpCurveNodeGeneration() { gCurveNodeGeneration.fetch_add(1, std::memory_order_relaxed); }

void FbxAnimEvalState::SetTime(FbxTime time) {
    if (time == time_) return;
    time_ = time;
    InvalidateAll();
}

void FbxAnimEvalState::InvalidateAll() {
    for (auto& entry : nodeRecords_) entry.second.valid = false;
    for (auto& entry : propertyRecords_) entry.second.valid = false;
}

void FbxAnimEvalState::Reset() {
    time_ = FbxTime::Infinite();
    nodeRecords_.clear();
    propertyRecords_.clear();
    curveNodes_.clear();
}

NodeEvalRecord* FbxAnimEvalState::FindNodeRecord(FbxUInt64 node) {
    auto it = nodeRecords_.find(node);
    return it == nodeRecords_.end() ? nullptr : &it->second;
}

PropertyEvalRecord* FbxAnimEvalState::FindPropertyRecord(const PropertyKey& key) {
    auto it = propertyRecords_.find(key);
    return it == propertyRecords_.end() ? nullptr : &it->second;
}

FbxAnimCurveNode* FbxAnimEvalState::FindCurveNode(const PropertyKey& property, FbxUInt64 layer) {
    if (curveNodeGeneration_ != CurveNodeGeneration()) {
        curveNodes_.clear();
        curveNodeGeneration_ = CurveNodeGeneration();
        return nullptr;
    }
    auto it = curveNodes_.find(property);
    if (it == curveNodes_.end()) return nullptr;
    auto found = it->second.find(layer);
    return found == it->second.end() ? nullptr : found->second;
}

void FbxAnimEvalState::StoreCurveNode(const PropertyKey& property, FbxUInt64 layer, FbxAnimCurveNode* curveNode) {
    if (curveNodeGeneration_ != CurveNodeGeneration()) {
        curveNodes_.clear();
        curveNodeGeneration_ = CurveNodeGeneration();
    }
    curveNodes_[property][layer] = curveNode;
}
