// Arbitrary templates with a few arguments: the formatter never fails and
// never reads outside its template.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "qe/formatter.h"
#include "qe/print_escaped.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::ostringstream out;
    qe::Formatter f(text);
    f.arg(1).arg(-7).arg(int32_t(size));
    f.writeTo(out);
    qe::printEscaped(out, text);
    return 0;
}
