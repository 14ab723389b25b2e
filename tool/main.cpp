#include <iostream>

#include "tool/driver.h"

int main(int argc, char** argv) { return runKivatran(argc, argv, std::cerr, std::cout); }
