#include "convert/error_reporter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "convert/dependency_set.h"

namespace {

TEST(ErrorReporter, HeadsEachMessageAndSummarisesLast) {
    std::ostringstream out;
    {
        ErrorReporter errors(out);
        errors.error("a.png") << "could not load: x\n";
        errors.errorAtLine("d/default.settings", 12) << "invalid setting\n";
        EXPECT_EQ(errors.errorCount(), 2u);
    }
    EXPECT_EQ(out.str(), "a.png: could not load: x\nd/default.settings: line 12: invalid setting\n2 errors\n");
}

TEST(ErrorReporter, SingularSummaryAndNoneWithoutErrors) {
    std::ostringstream one, none;
    {
        ErrorReporter errors(one);
        errors.error("x") << "m\n";
    }
    { ErrorReporter errors(none); }
    EXPECT_EQ(one.str(), "x: m\n1 error\n");
    EXPECT_EQ(none.str(), "");
}

TEST(DependencySet, SortedByteWiseWithoutDuplicates) {
    DependencySet deps;
    for (const char* p : {"b", "a/default.settings", "a", "B", "a\xe9", "a/", "b", "ab"}) deps.add(p);
    std::ostringstream out;
    deps.writeTo(out);
    // Unsigned bytes: 0xE9 sorts after every ASCII byte, upper case first.
    EXPECT_EQ(out.str(), "B\na\na/\na/default.settings\nab\na\xe9\nb\n");
    EXPECT_EQ(deps.size(), 7u);
}

}  // namespace
