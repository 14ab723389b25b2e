#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "fbx/model/fbx_amatrix.h"
#include "fbx/model/fbx_time.h"
#include "fbx/model/fbx_types.h"
#include "fbx/model/fbx_vector4.h"

class FbxAnimCurveNode;

// The evaluated transform of one node at the time of its state.
// `translation`, `rotation` and `scaling` are the animated and limited local
// values, before pivots; the matrices hold pivots, offsets and inherited
// scale.
struct NodeEvalRecord {
    bool valid = false;
    FbxVector4 translation{0.0, 0.0, 0.0, 1.0};
    FbxVector4 rotation{0.0, 0.0, 0.0, 1.0};
    FbxVector4 scaling{0.0, 0.0, 0.0, 1.0};
    FbxAMatrix localMatrix;
    FbxAMatrix globalMatrix;
    // Set while the node waits for the nodes above it in an evaluation, so
    // that a cycle of parents is seen.
    bool pending = false;
};

// The evaluated value of one property: up to 16 doubles, one per component.
struct PropertyEvalRecord {
    static constexpr int kMaxComponents = 16;
    bool valid = false;
    int count = 0;
    double values[kMaxComponents] = {};
};

// Cached results of evaluation for one stack (or for no stack): node and
// property values at one time, and which curve node drives a property in a
// layer. Objects are known by their unique ids, so an object that goes
// leaves nothing dangling behind; curve nodes are looked up only while the
// curve node generation they were found in lasts (see
// FbxAnimEvalState::CurveNodeGeneration).
class FbxAnimEvalState {
public:
    // A property: its object's unique id and its id on the object's page.
    using PropertyKey = std::pair<FbxUInt64, int>;

    FbxTime GetTime() const { return time_; }
    // A new time clears every valid flag; records stay for reuse.
    void SetTime(FbxTime time);
    // Clears every valid flag at the current time.
    void InvalidateAll();
    // Back to infinite time with nothing cached.
    void Reset();

    // The record of a node, made at first use.
    NodeEvalRecord& NodeRecord(FbxUInt64 node) { return nodeRecords_[node]; }
    NodeEvalRecord* FindNodeRecord(FbxUInt64 node);
    PropertyEvalRecord& PropertyRecord(const PropertyKey& key) { return propertyRecords_[key]; }
    PropertyEvalRecord* FindPropertyRecord(const PropertyKey& key);

    // The curve node cached for a property in a layer, or null.
    FbxAnimCurveNode* FindCurveNode(const PropertyKey& property, FbxUInt64 layer);
    void StoreCurveNode(const PropertyKey& property, FbxUInt64 layer, FbxAnimCurveNode* curveNode);
    void ForgetCurveNodes(const PropertyKey& property) { curveNodes_.erase(property); }

    // A process-wide count of changes to curve nodes that a cache may hold:
    // their destruction and their connections. A state drops all its curve
    // nodes when the count moved since it stored them.
    static uint64_t CurveNodeGeneration();
    static void BumpCurveNodeGeneration();

private:
    FbxTime time_ = FbxTime::Infinite();
    std::map<FbxUInt64, NodeEvalRecord> nodeRecords_;
    std::map<PropertyKey, PropertyEvalRecord> propertyRecords_;
    std::map<PropertyKey, std::map<FbxUInt64, FbxAnimCurveNode*>> curveNodes_;
    uint64_t curveNodeGeneration_ = 0;
};
