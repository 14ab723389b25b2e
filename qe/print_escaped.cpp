#include "qe/print_escaped.h"

namespace qe {

void printEscaped(std::ostream& out, std::string_view text) {
    // Gathered locally so that a long text takes few stream writes. An escape
    // is at most 4 bytes, so flushing at 1020 always leaves room for one.
    constexpr size_t kBufferSize = 1024;
    constexpr size_t kFlushAt = kBufferSize - 4;
    static const char kHex[] = "0123456789abcdef";
    static const char kControlLetters[] = "abtnvfr";  // bytes 7..13

    char buffer[kBufferSize];
    size_t used = 0;
    for (char ch : text) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c == '"' || c == '\\') {
            buffer[used++] = '\\';
            buffer[used++] = char(c);
        } else if (c >= 7 && c <= 13) {
            buffer[used++] = '\\';
            buffer[used++] = kControlLetters[c - 7];
        } else if (c < 32 || c >= 127) {
            buffer[used++] = '\\';
            buffer[used++] = 'x';
            buffer[used++] = kHex[c >> 4];
            buffer[used++] = kHex[c & 15];
        } else {
            buffer[used++] = char(c);
        }
        if (used >= kFlushAt) {
            out.write(buffer, std::streamsize(used));
            used = 0;
        }
    }
    if (used) out.write(buffer, std::streamsize(used));
}

}  // namespace qe
