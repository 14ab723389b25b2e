#include "tool/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "qe/scratch_dir_testing.h"

namespace {

namespace fs = std::filesystem;

size_t entries(const std::string& dir) {
    return size_t(std::distance(fs::directory_iterator(dir), fs::directory_iterator()));
}

TEST(OutputFile, ReplacesTheTargetAndLeavesNoTemporaryFile) {
    ScratchDir dir;
    const std::string target = dir.write("out.kiva", "old bytes that are longer");
    EXPECT_EQ(writeFileReplacing(target, std::string_view("new\0bytes", 9)), WriteOutcome::Written);
    EXPECT_EQ(readFile(target), std::string("new\0bytes", 9));
    EXPECT_EQ(entries(dir.path()), 1u);
    EXPECT_EQ(writeFileReplacing(dir.file("fresh"), ""), WriteOutcome::Written);
    EXPECT_EQ(readFile(dir.file("fresh")), "");
}

TEST(OutputFile, UnwritableTargetsAreRefusedBeforeAnythingIsWritten) {
    ScratchDir dir;
    dir.makeDir("sub");
    EXPECT_EQ(writeFileReplacing(dir.file("sub"), "x"), WriteOutcome::CouldNotOpen);
    EXPECT_EQ(writeFileReplacing(dir.file("none/out.kiva"), "x"), WriteOutcome::CouldNotOpen);
    EXPECT_EQ(entries(dir.path()), 1u);
    EXPECT_TRUE(fs::is_directory(dir.file("sub")));
    if (::geteuid() != 0) {  // permissions do not bind the superuser
        const std::string ro = dir.write("ro.kiva", "keep");
        ::chmod(ro.c_str(), 0444);
        EXPECT_EQ(writeFileReplacing(ro, "x"), WriteOutcome::CouldNotOpen);
        EXPECT_EQ(readFile(ro), "keep");
    }
}

TEST(OutputFile, LinksAndDevicesAreWrittenThrough) {
    ScratchDir dir;
    const std::string real = dir.write("real.kiva", "old");
    fs::create_symlink(real, dir.file("link.kiva"));
    EXPECT_EQ(writeFileReplacing(dir.file("link.kiva"), "new"), WriteOutcome::Written);
    EXPECT_TRUE(fs::is_symlink(dir.file("link.kiva")));
    EXPECT_EQ(readFile(real), "new");
    EXPECT_EQ(writeFileReplacing("/dev/null", "discarded"), WriteOutcome::Written);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
