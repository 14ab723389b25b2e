// Writes the hostile scenes into the seed folders of the fuzz targets. Run by
// hand from the repository root when the scenes change:
//
//     build/bin/fbxio_tests --gtest_also_run_disabled_tests --gtest_filter='FuzzSeeds.*'
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "fbx/io/fbx_test_scenes_testing.h"

namespace {

TEST(FuzzSeeds, DISABLED_WriteFromTheTestScenes) {
    struct Seed {
        const char* name;
        std::vector<uint8_t> bytes;
        std::vector<const char*> targets;
    };
    const char* imports[] = {"fbx_importer_fuzz", "fbxdump_fuzz"};
    const Seed seeds[] = {
        {"cycles", cyclesFile(), {imports[0], imports[1]}},
        {"diamonds", nodeDiamondsFile(32), {imports[0], imports[1]}},
        {"chain", nodeChainFile(300), {imports[0], imports[1]}},
        {"many_type_words", manyTypeWordsFile(200), {imports[0], imports[1]}},
        {"many_properties", manyPropertiesFile(200), {imports[0], imports[1], "fbx_property_records_fuzz"}},
        {"nested_blocks", nestedBlocksFile(300), {"fbx_field_stream_fuzz", "fbxdump_fuzz"}},
    };
    for (const Seed& seed : seeds) {
        for (const char* target : seed.targets) {
            std::filesystem::path folder = std::filesystem::path(KIVA_SOURCE_DIR) / "testdata/fuzz" / target;
            std::filesystem::create_directories(folder);
            std::ofstream(folder / seed.name, std::ios::binary)
                .write(reinterpret_cast<const char*>(seed.bytes.data()),
                       static_cast<std::streamsize>(seed.bytes.size()));
        }
    }
}

}  // namespace
