#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "qe/counted.h"
#include "tarn/texture.h"

namespace tarn {

class MaterialCache;

using Vector4 = std::array<float, 4>;
using MatrixValue = std::array<float, 16>;

// Named parameters of a material, each map ordered by name in byte order.
struct MaterialParameters {
    std::map<std::string, Vector4> vectors;
    std::map<std::string, MatrixValue> matrices;
    std::map<std::string, qe::Ref<Texture>> textures;  // a value may be empty
};

// A shader name with named parameters: counted, copied on write, and made
// canonical by internMaterial so that equal materials become one object.
// Use it through the free functions below; a handle passed by reference may
// be moved to another object by them.
class MaterialData : public qe::Counted {
public:
    MaterialData(const MaterialData&) = delete;
    MaterialData& operator=(const MaterialData&) = delete;

    // Destroys the object only if, under the cache lock, nobody has picked it
    // up again from the cache's set in the meantime.
    void release() override;
    ~MaterialData() override;

    const std::string& shaderName() const { return shaderName_; }
    const MaterialParameters& parameters() const { return parameters_; }
    uint8_t flag() const { return flag_; }
    bool canonical() const { return canonical_; }
    MaterialCache* cache() const { return cache_; }

    // The value hash, computed once and cached until the next change; never 0.
    uint64_t valueHash() const;

    // Same cache, shader name, flag and parameters (floats compared as bits,
    // textures as objects).
    bool equalValue(const MaterialData& other) const;

private:
    friend class MaterialCache;
    friend qe::Ref<MaterialData> createMaterial(MaterialCache* cache, std::string shaderName);
    friend void setVectorParameter(qe::Ref<MaterialData>& handle, const std::string& name, const Vector4& value);
    friend void setTextureParameter(qe::Ref<MaterialData>& handle, const std::string& name,
                                    const qe::Ref<Texture>& texture);

    MaterialData(MaterialCache* cache, std::shared_ptr<std::recursive_mutex> cacheLock, std::string shaderName);
    // A non-canonical copy with the same value and cached hash.
    MaterialData(const MaterialData& source, int);

    mutable std::mutex lock_;
    MaterialCache* cache_;
    std::shared_ptr<std::recursive_mutex> cacheLock_;
    std::string shaderName_;
    MaterialParameters parameters_;
    mutable std::atomic<uint64_t> hash_{0};
    uint8_t flag_ = 0;
    bool canonical_ = false;
    qe::Ref<qe::Counted> cachedBlock_;
    void* cachedBlockKey_ = nullptr;
    // Releases that found the count at 0 and wait for the cache lock; only the
    // last of them may destroy the object.
    std::atomic<uint32_t> pendingReleases_{0};
};

// A new raw material with no parameters.
qe::Ref<MaterialData> createMaterial(MaterialCache* cache, std::string shaderName);

// Copy on write: a shared or canonical object is copied before the change,
// unless the value is already there (an absent name counts as the zero
// vector or the empty texture). An empty handle stops the program.
void setVectorParameter(qe::Ref<MaterialData>& handle, const std::string& name, const Vector4& value);
void setTextureParameter(qe::Ref<MaterialData>& handle, const std::string& name, const qe::Ref<Texture>& texture);

inline const std::string& shaderName(const qe::Ref<MaterialData>& handle) { return handle->shaderName(); }
inline const MaterialParameters& parameters(const qe::Ref<MaterialData>& handle) { return handle->parameters(); }

// Moves the handle to the canonical object of its value (empty and
// canonical handles stay as they are, and so do materials made without a
// cache). A raw material must not be interned after its cache is gone.
void internMaterial(qe::Ref<MaterialData>& handle);

// Equality of handles: the same object; never an empty one with another;
// never two different canonical objects; otherwise by value.
bool sameMaterial(const MaterialData* a, const MaterialData* b);

}  // namespace tarn
