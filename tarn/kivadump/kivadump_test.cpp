#include "tarn/kivadump/kivadump.h"

#include <gtest/gtest.h>

#include <sstream>

#include "qe/scratch_dir_testing.h"
#include "tarn/kivadump/kiva_sample_testing.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

class KivadumpTest : public ::testing::Test {
protected:
    std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        return dir_.write(name, std::string(bytes.begin(), bytes.end()));
    }
    int run(std::vector<const char*> args) {
        std::ostringstream out, err;
        const int code = runKivadump(args, out, err);
        out_ = out.str();
        err_ = err.str();
        return code;
    }

    ScratchDir dir_;
    std::string out_, err_;
};

TEST_F(KivadumpTest, ValidFileGivesZeroAndADumpAndPngsOnRequest) {
    const std::string path = write("sample.kiva", sampleKiva());
    EXPECT_EQ(run({path.c_str()}), 0);
    EXPECT_EQ(err_, "");
    EXPECT_EQ(out_.rfind("header: magic 0x4B697661", 0), 0u) << out_;
    EXPECT_EQ(run({"--json", path.c_str()}), 0);
    EXPECT_EQ(out_.front(), '{');
    const std::string pictures = dir_.file("pictures");
    EXPECT_EQ(run({"--extract-textures", pictures.c_str(), path.c_str()}), 0) << err_;
    EXPECT_TRUE(fileExists(dir_.file("pictures/1_tex_stone.png_mip2.png")));
    EXPECT_NE(out_.find("textures: 3"), std::string::npos);
}

TEST_F(KivadumpTest, DamagedFilesGiveOneFaultLineAndExitOne) {
    const ReadKiva sample = readKiva(sampleKiva());
    std::vector<std::uint8_t> badIndex = sample.bytes, badOffset = sample.bytes;
    poke16(badIndex, sample.row(Table::Meshes, 0), 7);
    poke64(badOffset, sample.row(Table::Skeletons, 0) + 8, 0x10000);
    const std::pair<std::vector<std::uint8_t>, std::string> cases[] = {
        {{}, "header: size: the file has 0 bytes, fewer than the 104 of the header"},
        {badIndex, "mesh 0: vertex buffer: index 7 is not below the vertex buffer count 1"},
        {badOffset, "skeleton 0: bones: 396 bytes at 0x10000 run past the end of the file (" +
                        std::to_string(sample.bytes.size()) + " bytes)"},
    };
    for (const auto& [bytes, fault] : cases) {
        const std::string path = write("damaged.kiva", bytes);
        for (bool json : {false, true}) {
            EXPECT_EQ(json ? run({"--json", path.c_str()}) : run({path.c_str()}), 1);
            EXPECT_EQ(out_, "");
            EXPECT_EQ(err_, "kivadump: " + path + ": " + fault + "\n");
        }
    }
}

TEST_F(KivadumpTest, UsageErrorsExitTwoAndUnreadableFilesOne) {
    const std::string path = write("sample.kiva", sampleKiva());
    EXPECT_EQ(run({}), 2);
    EXPECT_EQ(err_, "kivadump: no file given\n" + std::string(kKivadumpUsage) + "\n");
    EXPECT_EQ(run({"--yaml", path.c_str()}), 2);
    EXPECT_EQ(err_.rfind("kivadump: unknown option --yaml\n", 0), 0u);
    EXPECT_EQ(run({path.c_str(), path.c_str()}), 2);
    EXPECT_EQ(run({path.c_str(), "--extract-textures"}), 2);
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_EQ(out_, std::string(kKivadumpUsage) + "\n");
    for (const std::string& unreadable : {dir_.file("missing.kiva"), dir_.path()}) {
        EXPECT_EQ(run({unreadable.c_str()}), 1);
        EXPECT_EQ(err_, "kivadump: " + unreadable + ": cannot read the file\n");
    }
}

}  // namespace
}  // namespace tarn::kivaread
