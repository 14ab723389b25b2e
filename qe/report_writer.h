#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qe {

// Gathers the text of a failure report in a fixed buffer and hands it to a
// file descriptor with write(2). It neither allocates nor locks, so a report
// can use it inside a signal handler and when the allocator is broken.
class ReportWriter {
public:
    explicit ReportWriter(int fd) : fd_(fd) {}
    ~ReportWriter() { flush(); }
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;

    ReportWriter& text(std::string_view text);
    ReportWriter& hex(uintptr_t value);  // lower-case digits, no prefix
    ReportWriter& dec(intmax_t value);
    // Writes what is gathered. Called before anything that may hang or end
    // the process, so that the report so far is out.
    void flush();

private:
    int fd_;
    size_t used_ = 0;
    char buffer_[512];
};

}  // namespace qe
