#include "qe/path_text.h"

#include <gtest/gtest.h>

namespace {

using qe::PathStyle;

TEST(PathText, ParentPathAndStripExtensionWorkOnTheText) {
    const auto w = PathStyle::Windows;
    const std::pair<const char*, const char*> parents[] = {
        {"", ""},
        {"a.png", ""},
        {"a/b.png", "a"},
        {"a\\b\\c.png", "a\\b"},
        {"C:/x.png", "C:/"},
        {"C:x.png", "C:"},
        {"/x.png", "/"},
        {"c:/data/assets/default.settings", "c:/data/assets"},
    };
    for (const auto& [path, parent] : parents) EXPECT_EQ(qe::parentPath(path, w), parent) << path;
    const std::pair<const char*, const char*> stems[] = {
        {"/art/a.b.png", "/art/a.b"},
        {"/art/.hidden", "/art/.hidden"},
        {"/art/..x.y", "/art/..x"},
        {"a.dir/file", "a.dir/file"},
        {"a.dir\\file", "a.dir\\file"},
        {"c:x.png", "c:x"},
        {"", ""},
    };
    for (const auto& [path, stem] : stems) EXPECT_EQ(qe::stripExtension(path, w), stem) << path;
    EXPECT_EQ(qe::stripExtension("a.dir\\file", PathStyle::Posix), "a");
}

TEST(PathText, ReplaceFirstAndAll) {
    std::string s = "c:/data/assets/props/crate.png";
    qe::replaceFirst(s, "c:/data/assets", "/art");
    EXPECT_EQ(s, "/art/props/crate.png");
    s = "abc";
    qe::replaceFirst(s, "x", "y");
    qe::replaceFirst(s, "", "/r");
    EXPECT_EQ(s, "/rabc");
    s = "aaa";
    qe::replaceAll(s, "a", "aa");  // goes on behind each replacement
    qe::replaceAll(s, "", "x");
    EXPECT_EQ(s, "aaaaaa");
}

TEST(PathTextDeathTest, StrangeStyleIsFatal) {
    EXPECT_DEATH(qe::parentPath("a", static_cast<PathStyle>(7)), "strange value for style");
}

}  // namespace
