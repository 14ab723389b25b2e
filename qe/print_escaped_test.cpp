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

std::string escape(std::string_view text, int* writes = nullptr) {
    CountingBuf buf;
    std::ostream out(&buf);
    qe::printEscaped(out, text);
    if (writes) *writes = buf.writes;
    return buf.str();
}

TEST(PrintEscaped, EscapesEachKindOfByteInFewWrites) {
    EXPECT_EQ(escape(std::string_view("\x22\x5c\x0a\x7f\xe9", 5)), "\\\"\\\\\\n\\x7f\\xe9");
    EXPECT_EQ(escape(std::string_view("\a\b\t\n\v\f\r", 7)), "\\a\\b\\t\\n\\v\\f\\r");
    EXPECT_EQ(escape(std::string_view("\x00\x01\x1f\x80\xff", 5)), "\\x00\\x01\\x1f\\x80\\xff");
    EXPECT_EQ(escape("plain ~ text {}"), "plain ~ text {}");
    EXPECT_EQ(escape(""), "");

    std::string text, expected;
    for (int i = 0; i < 5000; ++i) {
        text += i % 3 == 0 ? '\xe9' : 'a';
        expected += i % 3 == 0 ? "\\xe9" : "a";
    }
    int writes = 0;
    EXPECT_EQ(escape(text, &writes), expected);
    EXPECT_LE(writes, int(expected.size() / 1020) + 1);
    EXPECT_GE(writes, int(expected.size() / 1024));
}

}  // namespace
