#include <iostream>

#include "qe/failure_handlers.h"
#include "tool/driver.h"

int main(int argc, char** argv) {
    qe::installFailureHandlers();
    return runKivatran(argc, argv, std::cerr, std::cout);
}
