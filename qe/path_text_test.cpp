#include "qe/path_text.h"

#include <gtest/gtest.h>

namespace {

using qe::PathStyle;

TEST(PathText, ParentPathWindowsStyle) {
    const auto w = PathStyle::Windows;
    EXPECT_EQ(qe::parentPath("", w), "");
    EXPECT_EQ(qe::parentPath("a.png", w), "");
    EXPECT_EQ(qe::parentPath("a/b.png", w), "a");
    EXPECT_EQ(qe::parentPath("a\\b\\c.png", w), "a\\b");
    EXPECT_EQ(qe::parentPath("c:/data/assets/default.settings", w), "c:/data/assets");
    EXPECT_EQ(qe::parentPath("C:/x.png", w), "C:/");
    EXPECT_EQ(qe::parentPath("C:x.png", w), "C:");
    EXPECT_EQ(qe::parentPath("/x.png", w), "/");
    EXPECT_EQ(qe::parentPath("default.settings", w), "");
}

TEST(PathText, StripExtension) {
    const auto w = PathStyle::Windows;
    EXPECT_EQ(qe::stripExtension("/art/a.b.png", w), "/art/a.b");
    EXPECT_EQ(qe::stripExtension("/art/.hidden", w), "/art/.hidden");
    EXPECT_EQ(qe::stripExtension("/art/..x.y", w), "/art/..x");
    EXPECT_EQ(qe::stripExtension("a.dir/file", w), "a.dir/file");
    EXPECT_EQ(qe::stripExtension("a.dir\\file", w), "a.dir\\file");
    EXPECT_EQ(qe::stripExtension("a.dir\\file", PathStyle::Posix), "a");
    EXPECT_EQ(qe::stripExtension("c:x.png", w), "c:x");
    EXPECT_EQ(qe::stripExtension("", w), "");
}

TEST(PathText, ReplaceFirstAndAll) {
    std::string s = "c:/data/assets/props/crate.png";
    qe::replaceFirst(s, "c:/data/assets", "/art");
    EXPECT_EQ(s, "/art/props/crate.png");
    s = "abc";
    qe::replaceFirst(s, "x", "y");
    EXPECT_EQ(s, "abc");
    qe::replaceFirst(s, "", "/r");
    EXPECT_EQ(s, "/rabc");

    s = "a\\b\\\\c";
    qe::replaceAll(s, "\\", "/");
    EXPECT_EQ(s, "a/b//c");
    s = "aaa";
    qe::replaceAll(s, "a", "aa");  // goes on behind each replacement
    EXPECT_EQ(s, "aaaaaa");
    qe::replaceAll(s, "", "x");
    EXPECT_EQ(s, "aaaaaa");
}

TEST(PathTextDeathTest, StrangeStyleIsFatal) {
    EXPECT_DEATH(qe::parentPath("a", static_cast<PathStyle>(7)), "strange value for style");
}

}  // namespace
