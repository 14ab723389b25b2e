#pragma once

#include <cstdint>
#include <ostream>
#include <string_view>

// Every conversion step reports bad input here: one line headed by the file
// (and the line, for settings files). The count decides whether the run
// writes any output. Destroying a reporter with errors writes the summary
// line "N error" / "N errors", which is the last thing a run prints.
class ErrorReporter {
public:
    explicit ErrorReporter(std::ostream& out) : out_(out) {}
    ErrorReporter(const ErrorReporter&) = delete;
    ErrorReporter& operator=(const ErrorReporter&) = delete;
    ~ErrorReporter();

    // Counts one error and writes "source: "; the caller writes the message,
    // which ends in its own "\n".
    std::ostream& error(std::string_view source);
    // The same headed by "source: line N: ".
    std::ostream& errorAtLine(std::string_view source, int32_t line);

    uint32_t errorCount() const { return errorCount_; }

private:
    std::ostream& out_;
    uint32_t errorCount_ = 0;
};
