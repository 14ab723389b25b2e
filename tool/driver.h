#pragma once

#include <ostream>

// One run of the converter: parses the command line, converts every input
// in order into one container, and, when no error at all was reported,
// writes the output file and then the dependency list. Messages go to err,
// the dependency list under "--dependencies -" to out. Returns the exit
// code: 0 when everything was written, 1 otherwise.
int runKivatran(int argc, const char* const* argv, std::ostream& err, std::ostream& out);
