#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include "qe/counted.h"
#include "tarn/material_data.h"

namespace tarn {

// The set of canonical materials of one run, and a short memory of which raw
// materials gave which canonical ones. Safe for several threads: its lock is
// recursive and taken before any material's own lock.
class MaterialCache {
public:
    static constexpr size_t kRecentLimit = 32;

    MaterialCache();
    MaterialCache(const MaterialCache&) = delete;
    MaterialCache& operator=(const MaterialCache&) = delete;
    // Detaches the canonical materials that live on and drops the recent list.
    ~MaterialCache();

    // Number of canonical materials alive, and entries in the recent list.
    size_t canonicalCount() const;
    size_t recentCount() const;

private:
    friend class MaterialData;
    friend qe::Ref<MaterialData> createMaterial(MaterialCache* cache, std::string shaderName);
    friend void internMaterial(qe::Ref<MaterialData>& handle);

    struct ValueHash {
        size_t operator()(const MaterialData* m) const { return static_cast<size_t>(m->valueHash()); }
    };
    struct ValueEqual {
        bool operator()(const MaterialData* a, const MaterialData* b) const { return a->equalValue(*b); }
    };
    struct RecentNode {
        qe::Ref<MaterialData> raw;
        qe::Ref<MaterialData> canonical;
    };

    qe::Ref<MaterialData> intern(MaterialData* raw);
    void forget(MaterialData* canonical);

    std::shared_ptr<std::recursive_mutex> lock_;
    std::unordered_set<MaterialData*, ValueHash, ValueEqual> canonicalSet_;
    std::unordered_map<const MaterialData*, std::list<RecentNode>::iterator> recent_;
    std::list<RecentNode> recentList_;  // oldest first
};

}  // namespace tarn
