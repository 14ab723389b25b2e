#include "tarn/material_cache.h"

#include <iterator>

namespace tarn {

MaterialCache::MaterialCache() : lock_(std::make_shared<std::recursive_mutex>()) {}

MaterialCache::~MaterialCache() {
    std::lock_guard guard(*lock_);
    // Canonical materials that live on become plain objects.
    for (MaterialData* m : canonicalSet_) m->cache_ = nullptr;
    canonicalSet_.clear();
    // Dropping the nodes may release materials, whose release takes the
    // (recursive) lock again.
    recent_.clear();
    recentList_.clear();
}

size_t MaterialCache::canonicalCount() const {
    std::lock_guard guard(*lock_);
    return canonicalSet_.size();
}

size_t MaterialCache::recentCount() const {
    std::lock_guard guard(*lock_);
    return recent_.size();
}

qe::Ref<MaterialData> MaterialCache::intern(MaterialData* raw) {
    std::lock_guard guard(*lock_);
    if (auto hit = recent_.find(raw); hit != recent_.end()) {
        recentList_.splice(recentList_.end(), recentList_, hit->second);
        return hit->second->canonical;
    }
    qe::Ref<MaterialData> canonical;
    if (auto found = canonicalSet_.find(raw); found != canonicalSet_.end()) {
        canonical = qe::Ref<MaterialData>(*found);
    } else {
        // Nobody else sees an object with one reference, so it can turn
        // canonical in place; a shared one must stay as its holders know it.
        MaterialData* c = raw->refCount() == 1 ? raw : new MaterialData(*raw, 0);
        c->valueHash();
        c->canonical_ = true;
        canonical = qe::Ref<MaterialData>(c);
        canonicalSet_.insert(c);
    }
    if (canonical.get() != raw) {
        // The node holds the raw object, so that its address is not reused
        // while the entry stands.
        recentList_.push_back({qe::Ref<MaterialData>(raw), canonical});
        recent_.emplace(raw, std::prev(recentList_.end()));
        if (recent_.size() > kRecentLimit) {
            recent_.erase(recentList_.front().raw.get());
            recentList_.pop_front();
        }
    }
    return canonical;
}

void MaterialCache::forget(MaterialData* canonical) {
    // Found by hash and value; the set holds each value once.
    auto found = canonicalSet_.find(canonical);
    if (found != canonicalSet_.end() && *found == canonical) canonicalSet_.erase(found);
}

}  // namespace tarn
