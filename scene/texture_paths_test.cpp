#include "scene/texture_paths.h"

#include <gtest/gtest.h>

namespace {

TEST(TexturePaths, NamesAreJoinedToTheSceneFolderAndCleaned) {
    struct Case {
        const char* folder;
        const char* name;
        const char* cleaned;
    };
    const Case cases[] = {
        {"D:/art", "../textures/a.png", "D:\\textures\\a.png"},
        {"D:/art/", "./b//c.png", "D:\\art\\b\\c.png"},
        {"/work/scenes", "tex\\a.png", "\\work\\scenes\\tex\\a.png"},
        {"/work/scenes", "/tex/a.png", "\\work\\scenes\\tex\\a.png"},  // one separator: still relative
        {"/work/scenes", "C:\\maps\\a.png", "C:\\maps\\a.png"},        // a drive stands for itself
        {"/work/scenes", "\\\\server\\share\\..\\a.png", "\\\\server\\a.png"},
        {"/work/scenes", "//server/a.png", "\\\\server\\a.png"},
        {"scenes", "../../../a.png", "..\\..\\a.png"},  // a relative path keeps its climbs
        {"", "x/../a.png", "a.png"},
        {"/work", "../../a.png", ""},  // an absolute path cannot climb above its root
        {"/work", "C:\\..\\a.png", ""},
        {"/work", "C:", "C:\\"},
        {"/work", "//", "\\\\"},
        {"/", ".", "\\"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(cleanPath(bindPath(c.folder, c.name)), c.cleaned) << c.folder << " + " << c.name;
    EXPECT_EQ(hostPath("\\\\server\\a.png"), "//server/a.png");
    EXPECT_EQ(hostPath("C:\\maps\\a.png"), "C:/maps/a.png");
}

}  // namespace
