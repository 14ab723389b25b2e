#include <iostream>
#include <string>
#include <vector>

#include "fbx/dump/fbxdump.h"
#include "qe/failure_handlers.h"

int main(int argc, char** argv) {
    qe::installFailureHandlers();
    std::vector<std::string> args(argv + 1, argv + argc);
    return runFbxDump(args, std::cout, std::cerr);
}
