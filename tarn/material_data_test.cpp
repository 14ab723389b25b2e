#include "tarn/material_data.h"

#include <gtest/gtest.h>

#include <barrier>
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

TEST(MaterialData, WritesCopyWhatIsSharedOrCanonicalAndSkipPresentValues) {
    MaterialCache cache;
    auto a = createMaterial(&cache, "lit");
    MaterialData* const first = a.get();
    setVectorParameter(a, "Colour", {1, 0, 0, 1});
    setVectorParameter(a, "Zero", {0, 0, 0, 0});
    EXPECT_EQ(a.get(), first) << "an unshared object is written in place";
    EXPECT_EQ(parameters(a).vectors.size(), 2u) << "in place, even a zero vector is stored";

    auto b = a;
    setVectorParameter(b, "Colour", {1, 0, 0, 1});
    setVectorParameter(b, "Unset", {-0.0f, 0, 0, 0});
    setTextureParameter(b, "Diffuse", {});
    EXPECT_EQ(b, a) << "present values, and an absent name set to zero or no texture, change nothing";
    setVectorParameter(b, "Colour", {0, 1, 0, 1});
    EXPECT_NE(b, a);
    EXPECT_EQ(parameters(a).vectors.at("Colour")[0], 1.0f) << "the other holder sees no change";
    EXPECT_EQ(a->refCount(), 1u);

    internMaterial(a);
    ASSERT_TRUE(a->canonical());
    MaterialData* const canonical = a.get();
    setVectorParameter(a, "Colour", {0, 0, 1, 1});
    EXPECT_NE(a.get(), canonical) << "even the only handle of a canonical object gets a copy";
    EXPECT_FALSE(a->canonical());
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

TEST(MaterialCache, EqualMaterialsInternToOneObjectAndASharedRawOneStaysRaw) {
    MaterialCache cache;
    auto a = lit(cache, 1), b = lit(cache, 1);
    MaterialData* const rawA = a.get();
    internMaterial(a);
    EXPECT_EQ(a.get(), rawA) << "a raw object with one reference becomes canonical itself";
    internMaterial(b);
    EXPECT_EQ(b, a);
    EXPECT_EQ(cache.canonicalCount(), 1u);
    qe::Ref<MaterialData> empty;
    internMaterial(empty);
    EXPECT_FALSE(empty);

    auto raw = lit(cache, 3);
    auto handle = raw;
    internMaterial(handle);
    EXPECT_FALSE(raw->canonical());
    EXPECT_TRUE(handle->canonical());
    EXPECT_TRUE(raw->equalValue(*handle));
    EXPECT_EQ(raw->refCount(), 2u) << "the recent list holds the raw object";
    const size_t recent = cache.recentCount();
    auto again = raw;
    internMaterial(again);
    EXPECT_EQ(again, handle);
    EXPECT_EQ(cache.recentCount(), recent) << "a hit adds no entry";
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

TEST(MaterialCache, CanonicalMaterialsDieWithTheirLastUserAndMayOutliveTheCache) {
    qe::Ref<MaterialData> canonical, raw;
    {
        MaterialCache cache;
        {
            auto a = lit(cache, 1);
            internMaterial(a);
            EXPECT_EQ(cache.canonicalCount(), 1u);
        }
        EXPECT_EQ(cache.canonicalCount(), 0u);
        canonical = lit(cache, 1);
        MaterialData* const fresh = canonical.get();
        internMaterial(canonical);
        EXPECT_EQ(canonical.get(), fresh) << "a fresh canonical object, not a stale one";
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
