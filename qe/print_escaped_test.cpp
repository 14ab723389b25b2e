#include "qe/print_escaped.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// Counts the stream writes so the batching can be checked.
class CountingBuf : public std::stringbuf {
public:
    int writes = 0;

protected:
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        ++writes;
        return std::stringbuf::xsputn(s, n);
    }
};

std::string escape(std::string_view text) {
    std::ostringstream out;
    qe::printEscaped(out, text);
    return out.str();
}

TEST(PrintEscaped, EscapesEachKindOfByte) {
    EXPECT_EQ(escape(std::string_view("\x22\x5c\x0a\x7f\xe9", 5)), "\\\"\\\\\\n\\x7f\\xe9");
    EXPECT_EQ(escape(std::string_view("\a\b\t\n\v\f\r", 7)), "\\a\\b\\t\\n\\v\\f\\r");
    EXPECT_EQ(escape(std::string_view("\x00\x01\x1f\x80\xff", 5)), "\\x00\\x01\\x1f\\x80\\xff");
    EXPECT_EQ(escape("plain ~ text {}"), "plain ~ text {}");
    EXPECT_EQ(escape(""), "");
}

TEST(PrintEscaped, LongTextGoesOutInFewWritesAndIntact) {
    std::string text;
    for (int i = 0; i < 5000; ++i) text += (i % 3 == 0) ? '\xe9' : 'a';
    CountingBuf buf;
    std::ostream out(&buf);
    qe::printEscaped(out, text);
    std::string expected;
    for (int i = 0; i < 5000; ++i) expected += (i % 3 == 0) ? "\\xe9" : "a";
    EXPECT_EQ(buf.str(), expected);
    EXPECT_LE(buf.writes, int(expected.size() / 1020) + 1);
    EXPECT_GE(buf.writes, int(expected.size() / 1024));
}

}  // namespace
