#pragma once

#include "qe/report_writer.h"

namespace qe {

// Enters the calling thread in the process-wide registry, under its kernel
// thread id, so that a failure report on any other thread lists its stack.
// Once giveRegisteredThreadsAlternateStacks was called, a thread without an
// alternate signal stack gets one, so that its stack overflow is reported too. A second call from the same thread
// changes nothing. Returns false when the registry is full (64 threads); the thread is then left out of reports.
// Entries of ended threads stay: a report says such a thread ended.
bool registerCurrentThread();

// Writes the stack of each registered thread but the caller, in order of
// thread id, each under "\nThread id N:\n". Each thread is asked in turn,
// through a signal, to capture its own stack, and the report waits for it at
// most a second.
void printOtherThreads(ReportWriter& out);

// Called once the handler of the faults that a stack overflow gives runs on
// an alternate signal stack. Never called while another handler (a
// sanitizer's) owns those faults: it brings its own stacks, and it would
// unmap ours.
void giveRegisteredThreadsAlternateStacks();

// Installs the handler of the signal with which a report asks a registered
// thread for its stack.
void installThreadStackHandler();

}  // namespace qe
