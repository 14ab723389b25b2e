#include "qe/formatter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string format(std::string_view t, std::initializer_list<int> args = {}) {
    qe::Formatter f(t);
    for (int a : args) f.arg(a);
    std::ostringstream out;
    f.writeTo(out);
    return out.str();
}

TEST(Formatter, ErrorSummaryChoosesSingularOrPlural) {
    EXPECT_EQ(format("%0% error%0ps%\n", {1}), "1 error\n");
    EXPECT_EQ(format("%0% error%0ps%\n", {2}), "2 errors\n");
    EXPECT_EQ(format("%0% error%0ps%\n", {0}), "0 errors\n");
    EXPECT_EQ(format("%0% error%0ps%\n", {-1}), "-1 errors\n");
}

TEST(Formatter, PluralFieldWithTwoTexts) {
    EXPECT_EQ(format("%0% %0pchild;children%", {1}), "1 child");
    EXPECT_EQ(format("%0% %0pchild;children%", {4}), "4 children");
    // Only the first ';' splits.
    EXPECT_EQ(format("%0pa;b;c%", {2}), "b;c");
    EXPECT_EQ(format("%0ps%", {0}), "s");
    EXPECT_EQ(format("%0p;s%", {0}), "s");
    EXPECT_EQ(format("%0p;s%", {1}), "");
}

TEST(Formatter, LiteralsAndPercent) {
    EXPECT_EQ(format(""), "");
    EXPECT_EQ(format("plain text"), "plain text");
    EXPECT_EQ(format("100%%"), "100%");
    EXPECT_EQ(format("%%%%", {}), "%%");
}

TEST(Formatter, UnnumberedFieldsTakeTheNextArgument) {
    EXPECT_EQ(format("%d%-%d%", {7, 8}), "7-8");
    EXPECT_EQ(format("%1%,%d%", {7, 8, 9}), "8,9");
    EXPECT_EQ(format("%0%%0%", {5}), "55");
    // Other type characters ignore their field text.
    EXPECT_EQ(format("%0xignored%", {12}), "12");
}

TEST(Formatter, FieldsWithoutArgumentOrCutOffAreCopiedThrough) {
    EXPECT_EQ(format("%1%", {3}), "%1%");
    EXPECT_EQ(format("a %1ps% b", {3}), "a %1ps% b");
    EXPECT_EQ(format("x %0", {3}), "x %0");
    EXPECT_EQ(format("x %0ps", {3}), "x %0ps");
    EXPECT_EQ(format("x %", {3}), "x %");
    EXPECT_EQ(format("%99999999999999999999%", {3}), "%99999999999999999999%");
    EXPECT_EQ(format("%0%", {}), "%0%");
}

}  // namespace
