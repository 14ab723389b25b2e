#include "convert/error_reporter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "convert/dependency_set.h"

namespace {

TEST(ErrorReporter, HeadsEachMessageAndSummarisesLast) {
    for (int count : {0, 1, 2}) {
        std::ostringstream out;
        {
            ErrorReporter errors(out);
            if (count > 0) errors.error("a.png") << "could not load: x\n";
            if (count > 1) errors.errorAtLine("d/default.settings", 12) << "invalid setting\n";
        }
        const char* expected[] = {"", "a.png: could not load: x\n1 error\n",
                                  "a.png: could not load: x\nd/default.settings: line 12: invalid setting\n2 errors\n"};
        EXPECT_EQ(out.str(), expected[count]);
    }
}

TEST(DependencySet, SortedByteWiseWithoutDuplicates) {
    DependencySet deps;
    for (const char* p : {"b", "a/default.settings", "a", "B", "a\xe9", "a/", "b", "ab"}) deps.add(p);
    std::ostringstream out;
    deps.writeTo(out);
    // Unsigned bytes: 0xE9 sorts after every ASCII byte, upper case first.
    EXPECT_EQ(out.str(), "B\na\na/\na/default.settings\nab\na\xe9\nb\n");
}

}  // namespace
