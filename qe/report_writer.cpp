#include "qe/report_writer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qe {

ReportWriter& ReportWriter::text(std::string_view text) {
    while (!text.empty()) {
        if (used_ == sizeof buffer_) flush();
        const size_t n = std::min(text.size(), sizeof buffer_ - used_);
        std::memcpy(buffer_ + used_, text.data(), n);
        used_ += n;
        text.remove_prefix(n);
    }
    return *this;
}

ReportWriter& ReportWriter::hex(uintptr_t value) {
    char digits[2 * sizeof value];
    size_t start = sizeof digits;
    do {
        digits[--start] = "0123456789abcdef"[value & 15];
        value >>= 4;
    } while (value);
    return text(std::string_view(digits + start, sizeof digits - start));
}

ReportWriter& ReportWriter::dec(intmax_t value) {
    char digits[24];
    size_t start = sizeof digits;
    // Through the unsigned magnitude, so that the most negative value works.
    uintmax_t magnitude = value < 0 ? 0 - uintmax_t(value) : uintmax_t(value);
    do {
        digits[--start] = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (value < 0) digits[--start] = '-';
    return text(std::string_view(digits + start, sizeof digits - start));
}

void ReportWriter::flush() {
    size_t done = 0;
    while (done < used_) {
        const ssize_t n = ::write(fd_, buffer_ + done, used_ - done);
        if (n > 0) {
            done += size_t(n);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else {
            break;  // nowhere to write to: the report is lost, the process still ends
        }
    }
    used_ = 0;
}

}  // namespace qe
