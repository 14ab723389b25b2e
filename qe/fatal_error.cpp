#include "qe/fatal_error.h"

#include <cstdio>
#include <cstdlib>

namespace qe {

void fatalError(const char* text) {
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
    std::abort();
}

}  // namespace qe
