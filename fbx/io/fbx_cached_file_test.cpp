#include "fbx/io/fbx_cached_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qe/scratch_dir_testing.h"

namespace {

TEST(FbxCachedFile, TheCacheSizeCountsKiBAndTheLimitsApplyToBytes) {
    EXPECT_EQ(FbxCachedFile::BufferSizeForKiB(8), 8192u);
    EXPECT_EQ(FbxCachedFile::BufferSizeForKiB(32), 32768u);
    EXPECT_EQ(FbxCachedFile::BufferSizeForKiB(33), 33554432u);
    EXPECT_EQ(FbxCachedFile::EffectiveBufferSize(0), 8192u);
    EXPECT_EQ(FbxCachedFile::EffectiveBufferSize(100), 100u);
}

// Random reads and seeks through the cache give the bytes of the file.
TEST(FbxCachedFile, ReadsAndSeeksMatchThePlainFile) {
    std::vector<char> bytes(100000);
    std::mt19937 random(7);
    for (char& c : bytes) c = static_cast<char>(random());
    for (size_t i = 500; i < bytes.size(); i += 997) bytes[i] = '\n';
    ScratchDir dir;
    std::string path = dir.write("cached.bin", std::string(bytes.begin(), bytes.end()));

    for (size_t bufferSize : {16u, 4096u, 0u}) {
        FbxFile plain;
        FbxCachedFile cached(bufferSize);
        ASSERT_TRUE(plain.Open(path.c_str()));
        ASSERT_TRUE(cached.Open(path.c_str()));
        std::vector<char> a(20000), b(20000);
        for (int step = 0; step < 3000; ++step) {
            switch (random() % 5) {
            case 0: {
                int64_t to = static_cast<int64_t>(random() % (bytes.size() + 10));
                ASSERT_EQ(plain.Seek(to), cached.Seek(to));
                break;
            }
            case 1: {
                int64_t by = static_cast<int64_t>(random() % 200) - 100;
                if (plain.Tell() + by < 0) by = 0;
                ASSERT_EQ(plain.Seek(by, FbxFile::eCurrent), cached.Seek(by, FbxFile::eCurrent));
                break;
            }
            case 2: {
                size_t size = random() % 3 == 0 ? random() % 20000 : random() % 40;
                size_t got = plain.Read(a.data(), size);
                ASSERT_EQ(got, cached.Read(b.data(), size));
                ASSERT_EQ(0, std::memcmp(a.data(), b.data(), got));
                break;
            }
            case 3: {
                char* x = plain.ReadLine(a.data(), 300);
                char* y = cached.ReadLine(b.data(), 300);
                ASSERT_EQ(x == nullptr, y == nullptr);
                if (x) {
                    ASSERT_EQ(std::string(x), std::string(y));
                }
                break;
            }
            default: {
                int64_t back = -static_cast<int64_t>(random() % 50);
                ASSERT_EQ(plain.Seek(back, FbxFile::eEnd), cached.Seek(back, FbxFile::eEnd));
                break;
            }
            }
            ASSERT_EQ(plain.Tell(), cached.Tell()) << "step " << step;
        }
        EXPECT_EQ(cached.Write("x", 1), 0u);
    }
}

}  // namespace
