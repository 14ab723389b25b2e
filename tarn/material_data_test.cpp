#include "tarn/material_data.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <new>
#include <string>
#include <thread>

#include "tarn/bound_parameter_block.h"
#include "tarn/kiva_builder.h"
#include "tarn/material_cache.h"

namespace tarn {
namespace {

qe::Ref<MaterialData> lit(MaterialCache& cache, float red) {
    auto m = createMaterial(&cache, "lit");
    setVectorParameter(m, "Colour", {red, 0, 0, 1});
    return m;
}

TEST(MaterialData, UnsharedObjectsAreWrittenInPlace) {
    MaterialCache cache;
    auto m = createMaterial(&cache, "lit");
    MaterialData* before = m.get();
    setVectorParameter(m, "Colour", {1, 2, 3, 4});
    setVectorParameter(m, "Zero", {0, 0, 0, 0});
    EXPECT_EQ(m.get(), before);
    EXPECT_EQ(m->refCount(), 1u);
    EXPECT_EQ(parameters(m).vectors.size(), 2u) << "in place, even a zero vector is stored";
    EXPECT_EQ(shaderName(m), "lit");
}

TEST(MaterialData, SharedObjectsAreCopiedOnWrite) {
    MaterialCache cache;
    auto a = lit(cache, 1);
    auto b = a;
    setVectorParameter(b, "Colour", {1, 0, 0, 1});
    EXPECT_EQ(b, a) << "the value is already there";
    setVectorParameter(b, "Unset", {0, 0, 0, 0});
    setVectorParameter(b, "Unset", {-0.0f, 0, 0, 0});
    setTextureParameter(b, "Diffuse", {});
    EXPECT_EQ(b, a) << "an absent name counts as zero and as no texture";
    EXPECT_EQ(parameters(a).vectors.count("Unset"), 0u);

    setVectorParameter(b, "Colour", {0, 1, 0, 1});
    EXPECT_NE(b, a);
    EXPECT_EQ(parameters(a).vectors.at("Colour")[0], 1.0f) << "the other holder sees no change";
    EXPECT_EQ(parameters(b).vectors.at("Colour")[1], 1.0f);
    EXPECT_EQ(a->refCount(), 1u);
    EXPECT_EQ(b->refCount(), 1u);
    EXPECT_FALSE(b->canonical());
}

TEST(MaterialData, CanonicalObjectsNeverChange) {
    MaterialCache cache;
    auto canonical = lit(cache, 1);
    internMaterial(canonical);
    ASSERT_TRUE(canonical->canonical());
    auto handle = canonical;
    setVectorParameter(handle, "Colour", {1, 0, 0, 1});
    EXPECT_EQ(handle, canonical) << "setting the present value changes nothing";

    MaterialData* const before = canonical.get();
    auto sole = std::move(canonical);
    handle.reset();
    ASSERT_EQ(sole->refCount(), 1u);
    setVectorParameter(sole, "Colour", {0, 0, 1, 1});
    EXPECT_NE(sole.get(), before) << "even the only handle of a canonical object gets a copy";
    EXPECT_FALSE(sole->canonical());
}

TEST(MaterialData, ValueHashIsCachedAndFollowsTheValue) {
    MaterialCache cache;
    auto a = lit(cache, 1), b = lit(cache, 1);
    EXPECT_EQ(a->valueHash(), b->valueHash());
    EXPECT_TRUE(a->equalValue(*b));
    const uint64_t first = a->valueHash();
    setVectorParameter(a, "Colour", {2, 0, 0, 1});
    EXPECT_NE(a->valueHash(), first);
    EXPECT_FALSE(a->equalValue(*b));
    setVectorParameter(a, "Colour", {1, 0, 0, 1});
    EXPECT_EQ(a->valueHash(), first);

    // Equality compares bits: -0 and +0 stored in place are different values.
    auto plus = createMaterial(&cache, "lit"), minus = createMaterial(&cache, "lit");
    setVectorParameter(plus, "V", {0.0f, 0, 0, 0});
    setVectorParameter(minus, "V", {-0.0f, 0, 0, 0});
    EXPECT_FALSE(plus->equalValue(*minus));
    // Other caches, shaders and parameter kinds tell values apart too.
    MaterialCache other;
    EXPECT_FALSE(lit(other, 1)->equalValue(*b));
    EXPECT_FALSE(createMaterial(&cache, "lit")->equalValue(*createMaterial(&cache, "unlit")));
}

// A texture object placed at an address of our choosing, so that the hash
// of a material can be steered to 0.
struct PlacedTexture : Texture {
    TextureFactory* factory() const override { return nullptr; }
    uint32_t width() const override { return 0; }
    uint32_t height() const override { return 0; }
    void writeLevel(int32_t, const void*, size_t, uint32_t) override {}
    void release() override { this->~PlacedTexture(); }
};

TEST(MaterialData, HashOfZeroIsStoredAsOne) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer refuses mappings at chosen addresses";
#endif
    // With shader s and one texture parameter "t" at address A, the value
    // hash is FNV(s) * P xor (((B * P) xor 't') * P * P) xor A. Search for a
    // shader name that makes the A giving 0 a free, aligned user address.
    constexpr uint64_t P = 0x100000001B3ull, B = 0xCBF29CE484222325ull;
    const uint64_t textureTerm = ((B * P) ^ 't') * P * P;
    const long page = sysconf(_SC_PAGESIZE);
    for (uint64_t n = 0; n < 50'000'000; ++n) {
        const std::string shader = "s" + std::to_string(n);
        uint64_t h = B;
        for (unsigned char c : shader) h = (h * P) ^ c;
        h *= P;
        const uint64_t address = h ^ textureTerm;
        if (address % alignof(PlacedTexture) != 0 || address < 0x100000000ull || address >= 0x7F0000000000ull) continue;
        const uint64_t pageStart = address & ~static_cast<uint64_t>(page - 1);
        if (address + sizeof(PlacedTexture) > pageStart + static_cast<uint64_t>(page)) continue;
        void* mapped = mmap(reinterpret_cast<void*>(pageStart), page, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
        if (mapped == MAP_FAILED) continue;
        if (mapped != reinterpret_cast<void*>(pageStart)) {
            munmap(mapped, page);
            continue;
        }
        {
            qe::Ref<Texture> texture(new (reinterpret_cast<void*>(address)) PlacedTexture);
            MaterialCache cache;
            auto m = createMaterial(&cache, shader);
            setTextureParameter(m, "t", texture);
            EXPECT_EQ(m->valueHash(), 1u);
            EXPECT_EQ(m->valueHash(), 1u) << "and not computed again as 0";
        }
        munmap(mapped, page);
        return;
    }
    GTEST_SKIP() << "no free address found for a zero hash";
}

TEST(MaterialCache, EqualMaterialsInternToOneObject) {
    MaterialCache cache;
    auto a = lit(cache, 1), b = lit(cache, 1);
    MaterialData* const rawA = a.get();
    internMaterial(a);
    EXPECT_EQ(a.get(), rawA) << "a raw object with one reference becomes canonical itself";
    EXPECT_TRUE(a->canonical());
    internMaterial(b);
    EXPECT_EQ(b, a);
    EXPECT_EQ(cache.canonicalCount(), 1u);

    qe::Ref<MaterialData> empty;
    internMaterial(empty);
    EXPECT_FALSE(empty);
    EXPECT_TRUE(sameMaterial(nullptr, nullptr));
    EXPECT_FALSE(sameMaterial(a.get(), nullptr));
}

TEST(MaterialCache, SharedRawObjectStaysRawAndItsCopyIsCanonical) {
    MaterialCache cache;
    auto raw = lit(cache, 3);
    auto handle = raw;
    internMaterial(handle);
    EXPECT_NE(handle, raw);
    EXPECT_FALSE(raw->canonical());
    EXPECT_TRUE(handle->canonical());
    EXPECT_TRUE(raw->equalValue(*handle));
    EXPECT_EQ(cache.recentCount(), 1u);
    EXPECT_EQ(raw->refCount(), 2u) << "the recent list holds the raw object";

    auto again = raw;
    internMaterial(again);
    EXPECT_EQ(again, handle);
    EXPECT_EQ(cache.recentCount(), 1u);
}

TEST(MaterialCache, RecentListKeepsThe32LatestAndAHitRenewsAnEntry) {
    MaterialCache cache;
    std::vector<qe::Ref<MaterialData>> raws;
    for (int i = 0; i < 33; ++i) raws.push_back(lit(cache, float(i)));
    auto intern = [](qe::Ref<MaterialData> handle) {  // a second reference keeps each raw object raw
        internMaterial(handle);
        return handle;
    };
    std::vector<qe::Ref<MaterialData>> canonicals;
    for (int i = 0; i < 32; ++i) canonicals.push_back(intern(raws[i]));
    EXPECT_EQ(cache.recentCount(), 32u);
    EXPECT_EQ(intern(raws[0]), canonicals[0]);  // a hit: raws[0] is the newest now
    canonicals.push_back(intern(raws[32]));
    EXPECT_EQ(cache.recentCount(), 32u);
    EXPECT_EQ(raws[1]->refCount(), 1u) << "the oldest entry, raws[1], was dropped";
    EXPECT_EQ(raws[0]->refCount(), 2u);

    // An evicted raw object that nobody holds is released with its entry.
    MaterialCache small;
    qe::Ref<MaterialData> keepCanonical = intern(lit(small, 100));
    EXPECT_EQ(keepCanonical->refCount(), 1u) << "a temporary raw object with 1 reference became canonical";
    auto dropped = lit(small, 101);
    auto dropCanonical = intern(dropped);
    dropped.reset();
    EXPECT_EQ(small.recentCount(), 1u);
    for (int i = 0; i < 32; ++i) {
        auto r = lit(small, float(200 + i));
        intern(r);
    }
    EXPECT_EQ(small.recentCount(), 32u);
    EXPECT_EQ(dropCanonical->refCount(), 1u) << "its node no longer holds the canonical object";
}

TEST(MaterialCache, CanonicalMaterialDiesWithItsLastUser) {
    MaterialCache cache;
    {
        auto a = lit(cache, 1);
        internMaterial(a);
        EXPECT_EQ(cache.canonicalCount(), 1u);
    }
    EXPECT_EQ(cache.canonicalCount(), 0u);
    auto b = lit(cache, 1);
    MaterialData* raw = b.get();
    internMaterial(b);
    EXPECT_EQ(b.get(), raw) << "a fresh canonical object, not a stale one";
}

TEST(MaterialCache, MaterialsOutliveTheirCache) {
    qe::Ref<MaterialData> canonical, raw;
    {
        MaterialCache cache;
        canonical = lit(cache, 1);
        internMaterial(canonical);
        raw = lit(cache, 2);
        auto second = raw;
        internMaterial(second);
    }
    EXPECT_EQ(canonical->cache(), nullptr);
    EXPECT_EQ(raw->refCount(), 1u) << "the recent list let go";
    canonical.reset();  // the release still finds the shared lock
}

// Pushes every earlier entry out of the recent list with 32 others, whose
// canonical objects the list keeps alive.
void flushRecent(MaterialCache& cache) {
    for (int i = 0; i < 32; ++i) {
        auto raw = createMaterial(&cache, "filler" + std::to_string(i));
        auto handle = raw;
        internMaterial(handle);
    }
}

TEST(MaterialCache, TwoThreadsInterningEqualMaterialsGetOneCanonicalObject) {
    MaterialCache cache;
    flushRecent(cache);
    const size_t fillers = cache.canonicalCount();
    for (int round = 0; round < 200; ++round) {
        qe::Ref<MaterialData> results[2];
        std::barrier start(2);
        auto work = [&](int i) {
            auto m = createMaterial(&cache, "lit");
            setVectorParameter(m, "Colour", {float(round), 0, 0, 1});
            auto extra = m;  // shared, so that interning makes a copy
            start.arrive_and_wait();
            internMaterial(m);
            results[i] = m;
        };
        std::thread a(work, 0), b(work, 1);
        a.join();
        b.join();
        ASSERT_EQ(results[0], results[1]) << "round " << round;
        ASSERT_TRUE(results[0]->canonical());
        // The two new recent entries pushed out two fillers, which died; the
        // round's value adds exactly one object.
        ASSERT_EQ(cache.canonicalCount(), fillers - 2 + 1) << "round " << round;
        results[0].reset();
        results[1].reset();
        flushRecent(cache);
        ASSERT_EQ(cache.canonicalCount(), fillers) << "the round's material died, round " << round;
    }
}

TEST(MaterialCache, LastReleasesRacingWithLookupsDestroyOnce) {
    // Each thread interns the same value and lets go of it, so that the
    // canonical object's count falls to 0 outside the cache lock while the
    // other thread may be finding it in the set. Sanitizer builds catch a
    // double destruction or a use after it.
    MaterialCache cache;
    flushRecent(cache);
    const size_t fillers = cache.canonicalCount();
    auto work = [&] {
        for (int i = 0; i < 300; ++i) {
            auto m = lit(cache, 7);
            internMaterial(m);
            ASSERT_TRUE(m->canonical());
            m.reset();
            if (i % 8 == 0) flushRecent(cache);
        }
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    flushRecent(cache);
    EXPECT_EQ(cache.canonicalCount(), fillers);
}

TEST(BoundParameterBlock, NamesBecomeIdsOfTheTable) {
    MaterialCache cache;
    auto m = createMaterial(&cache, "lit");
    setVectorParameter(m, "b", {1, 1, 1, 1});
    setVectorParameter(m, "a", {2, 2, 2, 2});
    setTextureParameter(m, "b", {});
    ParameterNameTable names;
    EXPECT_EQ(names.idOf("x"), 0u);
    BoundParameterBlock block(parameters(m), &names);
    ASSERT_EQ(block.vectors().size(), 2u);
    EXPECT_EQ(block.vectors()[0].nameId, 1u) << "'a' comes first";
    EXPECT_EQ(block.vectors()[1].nameId, 2u);
    EXPECT_EQ(block.textures()[0].nameId, 2u) << "a known name keeps its id";
    EXPECT_TRUE(BoundParameterBlock(parameters(m), nullptr).vectors().empty());
    EXPECT_TRUE(globalParameterBlock().vectors().empty());
}

}  // namespace
}  // namespace tarn
