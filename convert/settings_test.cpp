#include "convert/settings.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>
#include <vector>

#include "convert/dependency_set.h"
#include "convert/error_reporter.h"
#include "qe/scratch_dir_testing.h"

namespace {

struct Split {
    bool valid;
    std::string key, value;
};

Split split(std::string_view line) {
    std::string_view k, v;
    bool empty = false;
    bool ok = splitSettingLine(line, k, v, empty);
    return {ok, std::string(k), std::string(v)};
}

TEST(SettingsGrammar, KeysValuesAndWhiteSpace) {
    EXPECT_EQ(split("key:value").value, "value");
    EXPECT_EQ(split("key:   value  ").value, "value");
    EXPECT_EQ(split("  key: a b\tc \r").value, "a b\tc");
    EXPECT_EQ(split("key: \"quoted: # not a comment\"").value, "\"quoted: # not a comment\"");
    Split empty = split("key:");
    EXPECT_TRUE(empty.valid);
    EXPECT_EQ(empty.value, "");
    EXPECT_TRUE(split("key:   ").valid);
    for (const char* good : {"1: x", "1a: x", "$a-b: x", "-x: y", "A-Z$: q"}) EXPECT_TRUE(split(good).valid) << good;
    for (const char* bad :
         {"  key : v", "a1: x", "11: x", "a_b: x", "# comment", "key", "key value", ": v", "k\xe9y: v", "_a: b"})
        EXPECT_FALSE(split(bad).valid) << bad;
    EXPECT_EQ(split("$a-b: x").key, "$a-b");
}

TEST(SettingsFile, ParsesLinesReportsInvalidOnesAndKeepsTheFirstOfAKey) {
    std::ostringstream err;
    ErrorReporter errors(err);
    SettingsFile file("dir/x.settings");
    std::istringstream in("a: 1\r\n\n   \nbad line\na: 2\n#c\nb:\nlast: no newline");
    file.parse(in, errors);
    EXPECT_EQ(errors.errorCount(), 2u);
    EXPECT_EQ(err.str(), "dir/x.settings: line 4: invalid setting\ndir/x.settings: line 6: invalid setting\n");
    SettingValue v;
    ASSERT_TRUE(file.find("a", v));
    EXPECT_EQ(v.value, "1");
    EXPECT_EQ(v.line, 1);
    EXPECT_EQ(v.source, "dir/x.settings");
    ASSERT_TRUE(file.find("b", v));
    EXPECT_EQ(v.value, "");
    ASSERT_TRUE(file.find("last", v));
    EXPECT_EQ(v.line, 8);
    EXPECT_FALSE(file.find("A", v));  // keys are case-sensitive
}

TEST(ParseInteger, AcceptsOnlyPlainDecimalsIn32Bits) {
    const std::pair<const char*, int32_t> good[] = {
        {"0", 0}, {"-17", -17}, {"2147483647", INT32_MAX}, {"-2147483648", INT32_MIN}, {"000123", 123}};
    int32_t v = 99;
    for (const auto& [text, value] : good) {
        EXPECT_TRUE(parseInteger(text, v)) << text;
        EXPECT_EQ(v, value) << text;
    }
    v = 5;
    for (const char* bad :
         {"2147483648", "-2147483649", "99999999999", "", "-", "+1", " 1", "1 ", "1x", "0x10", "--1", "4294967296"}) {
        EXPECT_FALSE(parseInteger(bad, v)) << bad;
        EXPECT_EQ(v, 5) << bad;
    }
}

std::vector<std::string> walk(std::string_view input) {
    std::ostringstream err;
    ErrorReporter errors(err);
    DependencySet deps;
    SettingsStore store(deps, errors);
    store.settingsFor(input);
    return {deps.paths().begin(), deps.paths().end()};
}

TEST(SettingsStore, WalkFollowsTheTextOfThePath) {
    using V = std::vector<std::string>;
    EXPECT_EQ(walk("b.png"), (V{"b.png.settings", "default.settings"}));
    EXPECT_EQ(walk("a/b.png"), (V{"a/b.png.settings", "a/default.settings", "default.settings"}));
    EXPECT_EQ(walk("art/crate/skin.png"), (V{"art/crate/default.settings", "art/crate/skin.png.settings",
                                             "art/default.settings", "default.settings"}));
    EXPECT_EQ(walk("C:/a/b.png"), (V{"C:/a/b.png.settings", "C:/a/default.settings", "C:/default.settings"}));
    EXPECT_EQ(walk("C:\\a\\b.png"), (V{"C:\\a/default.settings", "C:\\a\\b.png.settings", "C:\\default.settings"}));
    EXPECT_EQ(walk("/no-such-dir-kiva/x/b.tga"),
              (V{"/default.settings", "/no-such-dir-kiva/default.settings", "/no-such-dir-kiva/x/b.tga.settings",
                 "/no-such-dir-kiva/x/default.settings"}));
    EXPECT_EQ(walk("a//b.png"), (V{"a//b.png.settings", "a/default.settings", "default.settings"}));
    EXPECT_EQ(walk("c:b.png"), (V{"c:/default.settings", "c:b.png.settings"}));
}

struct StoreFixture : ::testing::Test {
    ScratchDir dir;
    std::ostringstream err;
    ErrorReporter errors{err};
    DependencySet deps;
    SettingsStore store{deps, errors};
};

TEST_F(StoreFixture, NearestFileWinsAndInheritEndsTheWalk) {
    dir.write("default.settings", "resource-root: /top\ntexture-max-size: 64\nfar: top\n");
    dir.write("art/default.settings", "inherit: no\nresource-root: /art\ntexture-max-size: 128\n");
    dir.write("art/props/default.settings", "texture-max-size: 256\n");
    dir.write("art/props/crate.png.settings", "texture-is-normalmap: YES\n");
    const SettingsChain& chain = store.settingsFor(dir.file("art/props/crate.png"));
    ASSERT_EQ(chain.files().size(), 3u);

    int32_t size = 0;
    EXPECT_TRUE(chain.getInt("texture-max-size", size));
    EXPECT_EQ(size, 256);
    bool normal = false;
    EXPECT_TRUE(chain.getBool("texture-is-normalmap", normal));
    EXPECT_TRUE(normal);
    SettingValue root;
    ASSERT_TRUE(chain.findSetting("resource-root", root));
    EXPECT_EQ(root.value, "/art");
    EXPECT_EQ(root.source, dir.file("art/default.settings"));
    EXPECT_EQ(root.line, 2);
    std::string far;
    EXPECT_FALSE(chain.getString("far", far));  // beyond "inherit: no"
    EXPECT_FALSE(deps.contains(dir.file("default.settings")));
    EXPECT_TRUE(deps.contains(dir.file("art/props/crate.png.settings")));
    EXPECT_EQ(errors.errorCount(), 0u);
}

TEST_F(StoreFixture, BadInheritIsReportedAndEndsTheWalk) {
    dir.write("default.settings", "a: top\n");
    dir.write("sub/default.settings", "inherit: maybe\n");
    const SettingsChain& chain = store.settingsFor(dir.file("sub/x.png"));
    EXPECT_EQ(chain.files().size(), 1u);
    EXPECT_EQ(errors.errorCount(), 1u);
    EXPECT_EQ(err.str(), dir.file("sub/default.settings") +
                             ": line 1: invalid boolean value (\"maybe\").  Expected one of \"yes\", \"true\", "
                             "\"no\", or \"false\".\n");
    dir.write("sub2/default.settings", "inherit: TRUE\n");
    EXPECT_EQ(store.settingsFor(dir.file("sub2/x.png")).files().size(), 3u - 1u);  // sub2 and the top file
}

TEST_F(StoreFixture, EachFileIsParsedOnceAndEachChainBuiltOnce) {
    dir.write("default.settings", "oops\n");
    const SettingsChain& a = store.settingsFor(dir.file("a.png"));
    const SettingsChain& b = store.settingsFor(dir.file("b.png"));
    EXPECT_EQ(&store.settingsFor(dir.file("a.png")), &a);
    EXPECT_NE(&a, &b);
    EXPECT_EQ(a.files()[0], b.files()[0]);
    EXPECT_EQ(errors.errorCount(), 1u);  // the bad line is reported once
    EXPECT_EQ(store.loadSettingsFile(dir.file("missing.settings")), nullptr);
    EXPECT_TRUE(deps.contains(dir.file("missing.settings")));
    // A directory with the name of a settings file is no settings file.
    dir.makeDir("d.png.settings");
    EXPECT_EQ(store.loadSettingsFile(dir.file("d.png.settings")), nullptr);
}

TEST_F(StoreFixture, TypedGettersReportBadValuesEscapedAndLeaveTheOutValue) {
    dir.write("x.png.settings", "n: 1\t2a\t\nb: perhaps\ns: text with: colon\ngood: -5\nt: False\n");
    const SettingsChain& chain = store.settingsFor(dir.file("x.png"));
    int32_t n = 7;
    EXPECT_FALSE(chain.getInt("n", n));
    EXPECT_FALSE(chain.getInt("absent", n));
    EXPECT_EQ(n, 7);
    EXPECT_TRUE(chain.getInt("good", n));
    EXPECT_EQ(n, -5);
    bool b = true;
    EXPECT_FALSE(chain.getBool("b", b));
    EXPECT_TRUE(b);
    EXPECT_TRUE(chain.getBool("t", b));
    EXPECT_FALSE(b);
    std::string s;
    EXPECT_TRUE(chain.getString("s", s));
    EXPECT_EQ(s, "text with: colon");
    // Trailing white space was trimmed; a tab inside stays, in escaped form.
    const std::string f = dir.file("x.png.settings");
    EXPECT_EQ(err.str(), f + ": line 1: invalid integer value (\"1\\t2a\").\n" + f +
                             ": line 2: invalid boolean value (\"perhaps\").  Expected one of \"yes\", \"true\", "
                             "\"no\", or \"false\".\n");
}

}  // namespace
