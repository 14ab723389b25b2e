#include "qe/formatter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

TEST(Formatter, FillsFieldsChoosesPluralsAndCopiesTheRestThrough) {
    struct Case {
        const char* text;
        std::vector<int> args;
        const char* expected;
    };
    const Case cases[] = {
        {"%0% error%0ps%\n", {1}, "1 error\n"},
        {"%0% error%0ps%\n", {2}, "2 errors\n"},
        {"%0% error%0ps%\n", {0}, "0 errors\n"},
        {"%0% error%0ps%\n", {-1}, "-1 errors\n"},
        {"%0% %0pchild;children%", {1}, "1 child"},
        {"%0% %0pchild;children%", {4}, "4 children"},
        {"%0pa;b;c%", {2}, "b;c"},  // only the first ';' splits
        {"%0ps%", {0}, "s"},
        {"%0p;s%", {0}, "s"},
        {"%0p;s%", {1}, ""},
        {"", {}, ""},
        {"100%%", {}, "100%"},
        {"%%%%", {}, "%%"},
        {"%d%-%d%", {7, 8}, "7-8"},  // unnumbered fields take the next argument
        {"%1%,%d%", {7, 8, 9}, "8,9"},
        {"%0%%0%", {5}, "55"},
        {"%0xignored%", {12}, "12"},  // other types ignore their text
        {"%1%", {3}, "%1%"},          // no such argument, or cut off: copied
        {"a %1ps% b", {3}, "a %1ps% b"},
        {"x %0", {3}, "x %0"},
        {"x %0ps", {3}, "x %0ps"},
        {"x %", {3}, "x %"},
        {"%99999999999999999999%", {3}, "%99999999999999999999%"},
        {"%0%", {}, "%0%"},
    };
    for (const Case& c : cases) {
        qe::Formatter f(c.text);
        for (int a : c.args) f.arg(a);
        std::ostringstream out;
        f.writeTo(out);
        EXPECT_EQ(out.str(), c.expected) << c.text;
    }
}

}  // namespace
