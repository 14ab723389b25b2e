#pragma once

namespace qe {

// Makes every failure that nothing recovers from end in a report on the
// standard error stream, after which the process dies with the status that
// the failure gives (never exit 0 or 1):
// - a fault (SIGSEGV, SIGBUS, SIGILL, SIGFPE): "fatal signal" with its name,
//   cause and address, stack overflow included;
// - abort (so fatalError too): "Aborting...";
// - an exception that nothing catches: its type, what() for a
//   std::exception, and the exceptions nested in it.
// Then the failing thread's stack and those of the other registered threads.
// A signal that already has a handler (a sanitizer's) is left to it.
// Called first thing in main; it registers the calling thread (see
// registerCurrentThread). A second call does nothing.
void installFailureHandlers();

}  // namespace qe
