#include <iostream>
#include <span>

#include "qe/failure_handlers.h"
#include "tarn/kivadump/kivadump.h"

int main(int argc, char** argv) {
    qe::installFailureHandlers();
    std::ios::sync_with_stdio(false);
    return tarn::kivaread::runKivadump(std::span<const char* const>(argv + 1, argc > 0 ? argc - 1 : 0), std::cout,
                                       std::cerr);
}
