#include "tarn/kivadump/kivadump.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tarn/kivadump/kiva_file_builder_testing.h"

namespace tarn::kivaread {
namespace {

using namespace testing;

class KivadumpTest : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ =
            std::filesystem::temp_directory_path() / ("kivadump_test_" + std::to_string(::getpid()) + "_" +
                                                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        const std::string path = (directory_ / name).string();
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        return path;
    }
    int run(std::vector<const char*> args) {
        std::ostringstream out, err;
        const int code = runKivadump(args, out, err);
        out_ = out.str();
        err_ = err.str();
        return code;
    }

    std::filesystem::path directory_;
    std::string out_, err_;
};

TEST_F(KivadumpTest, ValidFileGivesZeroAndADump) {
    const std::string path = write("sample.kiva", sampleKiva().build());
    EXPECT_EQ(run({path.c_str()}), 0);
    EXPECT_EQ(err_, "");
    EXPECT_EQ(out_.rfind("header: magic 0x4B697661", 0), 0u) << out_;
    EXPECT_EQ(run({"--json", path.c_str()}), 0);
    EXPECT_EQ(out_.front(), '{');
    EXPECT_NE(out_.find("\"animations\": ["), std::string::npos);
}

TEST_F(KivadumpTest, DamagedFilesGiveOneFaultLineAndExitOne) {
    KivaFileBuilder builder = sampleKiva();
    std::vector<std::uint8_t> bytes = builder.build();
    struct Case {
        std::vector<std::uint8_t> bytes;
        std::string fault;
    };
    std::vector<Case> cases;
    cases.push_back({{}, "header: size: the file has 0 bytes, fewer than the 104 of the header"});
    cases.push_back({std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 200), ""});
    std::vector<std::uint8_t> badIndex = bytes;
    poke16(badIndex, builder.layout().row(5, 0), 7);
    cases.push_back({badIndex, "mesh 0: vertex buffer: index 7 is not below the vertex buffer count 1"});
    std::vector<std::uint8_t> badOffset = bytes;
    poke64(badOffset, builder.layout().row(6, 0) + 8, 0x10000);
    cases.push_back({badOffset, "skeleton 0: bones: 396 bytes at 0x10000 run past the end of the file (" +
                                    std::to_string(bytes.size()) + " bytes)"});
    for (const Case& c : cases) {
        const std::string path = write("damaged.kiva", c.bytes);
        for (bool json : {false, true}) {
            EXPECT_EQ(json ? run({"--json", path.c_str()}) : run({path.c_str()}), 1);
            EXPECT_EQ(out_, "");
            const std::string prefix = "kivadump: " + path + ": ";
            EXPECT_EQ(err_.rfind(prefix, 0), 0u) << err_;
            EXPECT_EQ(err_.find('\n'), err_.size() - 1) << err_;
            if (!c.fault.empty()) {
                EXPECT_EQ(err_, prefix + c.fault + "\n");
            }
        }
    }
}

TEST_F(KivadumpTest, UsageErrorsExitTwo) {
    const std::string path = write("sample.kiva", sampleKiva().build());
    EXPECT_EQ(run({}), 2);
    EXPECT_EQ(err_, "kivadump: no file given\n" + std::string(kKivadumpUsage) + "\n");
    EXPECT_EQ(run({"--yaml", path.c_str()}), 2);
    EXPECT_EQ(err_.rfind("kivadump: unknown option --yaml\n", 0), 0u);
    EXPECT_EQ(run({path.c_str(), path.c_str()}), 2);
    EXPECT_EQ(run({path.c_str(), "--extract-textures"}), 2);
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_EQ(out_, std::string(kKivadumpUsage) + "\n");
    EXPECT_EQ(run({(directory_ / "missing.kiva").string().c_str()}), 1);
    EXPECT_EQ(err_, "kivadump: " + (directory_ / "missing.kiva").string() + ": cannot read the file\n");
    EXPECT_EQ(run({directory_.c_str()}), 1);  // a directory is no file
    EXPECT_EQ(err_, "kivadump: " + directory_.string() + ": cannot read the file\n");
}

TEST_F(KivadumpTest, ExtractTexturesWritesPngsBesideTheDump) {
    const std::string path = write("sample.kiva", sampleKiva().build());
    const std::string pictures = (directory_ / "pictures").string();
    EXPECT_EQ(run({"--extract-textures", pictures.c_str(), path.c_str()}), 0) << err_;
    EXPECT_TRUE(std::filesystem::exists(directory_ / "pictures" / "1_tex_stone.png_mip2.png"));
    EXPECT_NE(out_.find("textures: 3"), std::string::npos);
}

// The built program itself, as a build script runs it.
TEST_F(KivadumpTest, BuiltProgramReportsThroughItsExitCode) {
    const std::string program = std::string(KIVA_BIN_DIR) + "/kivadump";
    ASSERT_TRUE(std::filesystem::exists(program)) << program;
    const std::string good = write("good.kiva", sampleKiva().build());
    std::vector<std::uint8_t> bytes = sampleKiva().build();
    bytes.resize(bytes.size() - 8);
    const std::string bad = write("bad.kiva", bytes);
    const std::string output = (directory_ / "out.json").string();
    auto status = [&](const std::string& arguments) {
        const int raw = std::system((program + " " + arguments + " >" + output + " 2>&1").c_str());
        return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    };
    EXPECT_EQ(status("--json " + good), 0);
    std::stringstream json;
    json << std::ifstream(output).rdbuf();
    EXPECT_NE(json.str().find("\"name\": \"Body\""), std::string::npos) << json.str();
    EXPECT_EQ(status(bad), 1);
    std::stringstream fault;
    fault << std::ifstream(output).rdbuf();
    EXPECT_EQ(fault.str().rfind("kivadump: " + bad + ": string ", 0), 0u) << fault.str();
    EXPECT_EQ(status("--bogus " + good), 2);
}

}  // namespace
}  // namespace tarn::kivaread
