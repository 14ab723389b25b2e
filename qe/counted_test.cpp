#include "qe/counted.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "qe/fatal_error.h"

namespace {

struct Probe : qe::Counted {
    explicit Probe(int* deaths) : deaths(deaths) {}
    ~Probe() override { ++*deaths; }
    int* deaths;
};

TEST(Counted, RefTakesAndDropsOneReferenceAndLastDropDestroys) {
    int deaths = 0;
    auto* p = new Probe(&deaths);
    EXPECT_EQ(p->refCount(), 0u);
    {
        qe::Ref<Probe> a(p);
        qe::Ref<Probe> b = a;
        EXPECT_EQ(p->refCount(), 2u);
        qe::Ref<Probe> c = std::move(b);
        EXPECT_FALSE(b);
        EXPECT_EQ(p->refCount(), 2u);
        a.reset();
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
    // adopt keeps the reference a factory took.
    p = new Probe(&deaths);
    p->addRef();
    { EXPECT_EQ(qe::Ref<Probe>::adopt(p)->refCount(), 1u); }
    EXPECT_EQ(deaths, 2);
}

TEST(Counted, TryAddRefRefusesAnObjectWhoseCountFellToZero) {
    struct Kept : qe::Counted {
        void release() override {}  // stays alive so the test can look at it
    } kept;
    EXPECT_FALSE(kept.tryAddRef());
    kept.addRef();
    EXPECT_TRUE(kept.tryAddRef());
    kept.dropRef();
    kept.dropRef();
    EXPECT_FALSE(kept.tryAddRef());
}

TEST(Counted, CountsStayExactAcrossThreads) {
    int deaths = 0;
    qe::Ref<Probe> root(new Probe(&deaths));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) qe::Ref<Probe> copy = root;
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(root->refCount(), 1u);
    root.reset();
    EXPECT_EQ(deaths, 1);
}

TEST(FatalErrorDeathTest, WritesTheTextAndAborts) {
    EXPECT_DEATH(qe::fatalError("broken invariant"), "broken invariant");
}

}  // namespace
