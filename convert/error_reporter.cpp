#include "convert/error_reporter.h"

#include "qe/formatter.h"

ErrorReporter::~ErrorReporter() {
    if (errorCount_ == 0) return;
    qe::Formatter("%0% error%0ps%\n").arg(int32_t(errorCount_)).writeTo(out_);
    out_.flush();
}

std::ostream& ErrorReporter::error(std::string_view source) {
    ++errorCount_;
    return out_ << source << ": ";
}

std::ostream& ErrorReporter::errorAtLine(std::string_view source, int32_t line) {
    ++errorCount_;
    return out_ << source << ": line " << line << ": ";
}
