#include "tarn/material_data.h"

#include <cstring>

#include "qe/fatal_error.h"
#include "tarn/material_cache.h"

namespace tarn {

namespace {

constexpr uint64_t kPrime = 0x100000001B3ull;
constexpr uint64_t kBasis = 0xCBF29CE484222325ull;

uint64_t hashBytes(uint64_t h, const void* data, size_t size) {
    const auto* p = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i) h = (h * kPrime) ^ p[i];
    return h;
}

template <class Map>
uint64_t hashValues(uint64_t g, const Map& map) {
    for (const auto& [name, value] : map) {
        g = hashBytes(g, name.data(), name.size()) * kPrime;
        g = hashBytes(g, value.data(), sizeof(value));
    }
    return g;
}

template <class Map>
bool sameBytes(const Map& a, const Map& b) {
    if (a.size() != b.size()) return false;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j)
        if (i->first != j->first || std::memcmp(i->second.data(), j->second.data(), sizeof(i->second)) != 0)
            return false;
    return true;
}

bool sameTextures(const std::map<std::string, qe::Ref<Texture>>& a, const std::map<std::string, qe::Ref<Texture>>& b) {
    if (a.size() != b.size()) return false;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j)
        if (i->first != j->first || i->second.get() != j->second.get()) return false;
    return true;
}

bool equalFloats(const Vector4& a, const Vector4& b) {
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2] && a[3] == b[3];
}

}  // namespace

MaterialData::MaterialData(MaterialCache* cache, std::shared_ptr<std::recursive_mutex> cacheLock,
                           std::string shaderName)
    : cache_(cache), cacheLock_(std::move(cacheLock)), shaderName_(std::move(shaderName)) {}

MaterialData::MaterialData(const MaterialData& source, int)
    : cache_(source.cache_),
      cacheLock_(source.cacheLock_),
      shaderName_(source.shaderName_),
      parameters_(source.parameters_),
      hash_(source.hash_.load()),
      flag_(source.flag_) {}

MaterialData::~MaterialData() {
    // Runs under the cache lock (see release), so cache_ cannot be cleared
    // by a dying cache meanwhile.
    if (canonical_ && cache_) cache_->forget(this);
}

void MaterialData::release() {
    if (!cacheLock_) {
        delete this;
        return;
    }
    // A lookup in the cache's set may pick the object up again between the
    // count reaching 0 and the lock; then it lives on, and the release that
    // follows its next fall to 0 decides. Counting the waiting releases keeps
    // the object alive until the last of them has looked.
    pendingReleases_.fetch_add(1);
    std::shared_ptr<std::recursive_mutex> lock = cacheLock_;
    std::lock_guard guard(*lock);
    if (pendingReleases_.fetch_sub(1) == 1 && refCount() == 0) delete this;
}

uint64_t MaterialData::valueHash() const {
    uint64_t cached = hash_.load();
    if (cached != 0) return cached;
    std::lock_guard guard(lock_);
    cached = hash_.load();
    if (cached != 0) return cached;
    uint64_t h = hashBytes(kBasis, shaderName_.data(), shaderName_.size());
    h = (h * kPrime) ^ flag_;
    uint64_t g = hashValues(kBasis, parameters_.vectors);
    g = hashValues(g, parameters_.matrices);
    for (const auto& [name, texture] : parameters_.textures) {
        g = hashBytes(g, name.data(), name.size());
        g = (g * kPrime * kPrime) ^ static_cast<uint64_t>(reinterpret_cast<uintptr_t>(texture.get()));
    }
    uint64_t result = h ^ g;
    if (result == 0) result = 1;  // 0 means "not computed"
    hash_.store(result);
    return result;
}

bool MaterialData::equalValue(const MaterialData& other) const {
    // Canonical objects never change, and a raw object is changed in place
    // only by the holder of its one reference, so no locks are needed here.
    return cache_ == other.cache_ && flag_ == other.flag_ && shaderName_ == other.shaderName_ &&
           sameBytes(parameters_.vectors, other.parameters_.vectors) &&
           sameBytes(parameters_.matrices, other.parameters_.matrices) &&
           sameTextures(parameters_.textures, other.parameters_.textures);
}

qe::Ref<MaterialData> createMaterial(MaterialCache* cache, std::string shaderName) {
    return qe::Ref<MaterialData>(new MaterialData(cache, cache ? cache->lock_ : nullptr, std::move(shaderName)));
}

void setVectorParameter(qe::Ref<MaterialData>& handle, const std::string& name, const Vector4& value) {
    if (!handle) qe::fatalError("parameter set on an empty material");
    qe::Ref<MaterialData> keep = handle;
    std::lock_guard guard(keep->lock_);
    MaterialData* target = keep.get();
    // The handle and `keep` account for two references.
    if (keep->canonical_ || keep->refCount() != 2) {
        const auto& present = keep->parameters_.vectors;
        auto it = present.find(name);
        if (equalFloats(it == present.end() ? Vector4{0, 0, 0, 0} : it->second, value)) return;
        handle = qe::Ref<MaterialData>(new MaterialData(*keep, 0));
        target = handle.get();
    }
    target->parameters_.vectors[name] = value;
    target->hash_.store(0);
}

void setTextureParameter(qe::Ref<MaterialData>& handle, const std::string& name, const qe::Ref<Texture>& texture) {
    if (!handle) qe::fatalError("parameter set on an empty material");
    qe::Ref<MaterialData> keep = handle;
    std::lock_guard guard(keep->lock_);
    MaterialData* target = keep.get();
    if (keep->canonical_ || keep->refCount() != 2) {
        const auto& present = keep->parameters_.textures;
        auto it = present.find(name);
        if ((it == present.end() ? nullptr : it->second.get()) == texture.get()) return;
        handle = qe::Ref<MaterialData>(new MaterialData(*keep, 0));
        target = handle.get();
    }
    target->parameters_.textures[name] = texture;
    target->hash_.store(0);
}

void internMaterial(qe::Ref<MaterialData>& handle) {
    if (!handle || handle->canonical() || !handle->cache()) return;
    handle = handle->cache()->intern(handle.get());
}

bool sameMaterial(const MaterialData* a, const MaterialData* b) {
    if (a == b) return true;
    if (!a || !b) return false;
    if (a->canonical() && b->canonical()) return false;
    return a->equalValue(*b);
}

}  // namespace tarn
