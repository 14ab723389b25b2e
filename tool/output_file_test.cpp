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

WriteOutcome writeReplacing(const std::string& path, std::string_view bytes) {
    StagedFile file;
    const WriteOutcome staged = file.stage(path, bytes);
    return staged == WriteOutcome::Written ? file.commit() : staged;
}

TEST(StagedFile, TargetKeepsItsBytesUntilCommitAndNoTemporaryFileStays) {
    ScratchDir dir;
    const std::string target = dir.write("out.kiva", "old bytes that are longer");
    {
        StagedFile file;
        ASSERT_EQ(file.stage(target, std::string_view("new\0bytes", 9)), WriteOutcome::Written);
        EXPECT_EQ(readFile(target), "old bytes that are longer");
        EXPECT_EQ(entries(dir.path()), 2u);
        EXPECT_EQ(file.commit(), WriteOutcome::Written);
    }
    EXPECT_EQ(readFile(target), std::string("new\0bytes", 9));
    {
        StagedFile dropped;
        ASSERT_EQ(dropped.stage(target, "never"), WriteOutcome::Written);
    }
    EXPECT_EQ(readFile(target), std::string("new\0bytes", 9));
    EXPECT_EQ(entries(dir.path()), 1u);
}

TEST(StagedFile, ReadOnlyTargetsAreRefusedBeforeAnythingIsWritten) {
    if (::geteuid() == 0) GTEST_SKIP() << "permissions do not bind the superuser";
    ScratchDir dir;
    const std::string ro = dir.write("ro.kiva", "keep");
    ::chmod(ro.c_str(), 0444);
    EXPECT_EQ(writeReplacing(ro, "x"), WriteOutcome::CouldNotOpen);
    EXPECT_EQ(readFile(ro), "keep");
    EXPECT_EQ(entries(dir.path()), 1u);
}

TEST(StagedFile, LinksAtTheTargetAreWrittenThroughButNeverAtTheTemporaryName) {
    ScratchDir dir;
    const std::string real = dir.write("real.kiva", "old");
    fs::create_symlink(real, dir.file("link.kiva"));
    EXPECT_EQ(writeReplacing(dir.file("link.kiva"), "new"), WriteOutcome::Written);
    EXPECT_TRUE(fs::is_symlink(dir.file("link.kiva")));
    EXPECT_EQ(readFile(real), "new");
    EXPECT_EQ(writeReplacing("/dev/null", "discarded"), WriteOutcome::Written);

    // A link and a file planted where the temporary file would go are left
    // alone: the bytes go through a fresh name.
    const std::string victim = dir.write("victim", "precious");
    const std::string planted = dir.file("out.kiva.tmp") + std::to_string(::getpid());
    fs::create_symlink(victim, planted);
    EXPECT_EQ(writeReplacing(dir.file("out.kiva"), "output"), WriteOutcome::Written);
    EXPECT_EQ(readFile(dir.file("out.kiva")), "output");
    EXPECT_EQ(readFile(victim), "precious");
    EXPECT_TRUE(fs::is_symlink(planted));
    fs::remove(planted);
    dir.write("out.kiva.tmp" + std::to_string(::getpid()), "someone's");
    EXPECT_EQ(writeReplacing(dir.file("out.kiva"), "again"), WriteOutcome::Written);
    EXPECT_EQ(readFile(planted), "someone's");
    EXPECT_EQ(readFile(dir.file("out.kiva")), "again");
}

}  // namespace
