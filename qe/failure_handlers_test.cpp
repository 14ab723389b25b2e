#include "qe/failure_handlers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "qe/fatal_error.h"
#include "qe/thread_registry.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

struct Ending {
    int signal;  // 0 when the process ended without one
    std::string report;
};

// Runs a failure in a child process with the handlers installed, as main
// installs them, and returns how the child ended and what it wrote to
// standard error.
Ending runFailure(void (*failure)()) {
    int fds[2];
    if (pipe(fds) != 0) return {};
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        dup2(fds[1], STDERR_FILENO);
        qe::installFailureHandlers();
        failure();
        _exit(0);
    }
    close(fds[1]);
    Ending ending{0, ""};
    char buffer[4096];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof buffer)) > 0;) ending.report.append(buffer, size_t(n));
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) ending.signal = WTERMSIG(status);
    return ending;
}

// A sanitizer that handles the signal reports it itself.
bool sanitizerOwns(int signal) {
    struct sigaction current;
    return sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_DFL;
}

// The line of a frame of ours; file and line are there when the test has
// debug information, and then they must be right.
std::string frameOf(const std::string& function, int line) {
    return "\n[^\n]*" + function + "\\([^\n]*\\)\\+0x[0-9a-f]+(, [^\n]*failure_handlers_test\\.cpp, line " +
           std::to_string(line) + ")?\n";
}

// The failures, each in a function with a name of its own that must show up
// in its report. Out of line, and never a tail call, so that each keeps a frame.
#define KEEP_FRAME() asm volatile("" ::: "memory")

constexpr int kNullWriteLine = __LINE__ + 3;
__attribute__((noinline)) void writeThroughNull() {
    int* volatile target = nullptr;
    *target = 1;
    KEEP_FRAME();
}

volatile bool g_deeper = true;  // always, unknown to the compiler

__attribute__((noinline)) int recurseWithoutEnd(int depth) {
    volatile char frame[512];
    frame[depth % 512] = char(depth);
    return g_deeper ? recurseWithoutEnd(depth + 1) + frame[0] : 0;
}

void overflowTheStack() { recurseWithoutEnd(0); }

constexpr int kAbortLine = __LINE__ + 2;
__attribute__((noinline)) void abortOnPurpose() {
    std::abort();
    KEEP_FRAME();
}

__attribute__((noinline)) void breakAnInvariant() {
    qe::fatalError("broken invariant in the test");
    KEEP_FRAME();
}

struct UnknownFailure {};

constexpr int kThrowLine = __LINE__ + 6;
__attribute__((noinline)) void throwNested() {
    try {
        throw UnknownFailure{};
    } catch (...) {
        // Nothing catches this one: the thread has no handler.
        std::throw_with_nested(std::runtime_error("bad \"quote\""));
    }
    KEEP_FRAME();
}

__attribute__((noinline)) void joinThrowingThread() {
    std::thread(throwNested).join();
    KEEP_FRAME();
}

constexpr int kTrapLine = __LINE__ + 3;
__attribute__((noinline)) void trapOnRegisteredThread() {
    qe::registerCurrentThread();
    __builtin_trap();
}

__attribute__((noinline)) void joinTrappingThread() {
    std::thread(trapOnRegisteredThread).join();
    KEEP_FRAME();
}

void abortAfterARegisteredThreadEnded() {
    std::thread(qe::registerCurrentThread).join();
    std::abort();
}

TEST(FailureReport, NullWriteNamesTheAccessAndTheFunction) {
    if (sanitizerOwns(SIGSEGV)) GTEST_SKIP() << "the sanitizer reports SIGSEGV";
    const Ending ending = runFailure(writeThroughNull);
    EXPECT_EQ(ending.signal, SIGSEGV);
    EXPECT_THAT(ending.report, ContainsRegex("^\nfatal signal SIGSEGV \\(address not mapped\\) at 0x[0-9a-f]+\n"
                                             "while writing address 0x0\n\n"));
    EXPECT_THAT(ending.report, ContainsRegex(frameOf("writeThroughNull", kNullWriteLine)));
    EXPECT_THAT(ending.report, Not(HasSubstr("Thread id")));  // the main thread is the one reporting
}

TEST(FailureReport, StackOverflowIsReportedFromTheAlternateStack) {
    if (sanitizerOwns(SIGSEGV)) GTEST_SKIP() << "the sanitizer reports SIGSEGV";
    const Ending ending = runFailure(overflowTheStack);
    EXPECT_EQ(ending.signal, SIGSEGV);
    EXPECT_THAT(ending.report, ContainsRegex("\nstack overflow while (writing|reading) address 0x[0-9a-f]+\n"));
    EXPECT_THAT(ending.report, ContainsRegex("\n[^\n]*recurseWithoutEnd\\(int\\)[^\n]*\\+0x"));
}

TEST(FailureReport, AbortAndFatalErrorReportTheStack) {
    Ending ending = runFailure(abortOnPurpose);
    EXPECT_EQ(ending.signal, SIGABRT);
    EXPECT_THAT(ending.report, ContainsRegex("^\n\nAborting\\.\\.\\.\n\n"));
    EXPECT_THAT(ending.report, ContainsRegex(frameOf("abortOnPurpose", kAbortLine)));
    EXPECT_THAT(ending.report, Not(HasSubstr("Thread id")));

    ending = runFailure(breakAnInvariant);
    EXPECT_EQ(ending.signal, SIGABRT);
    EXPECT_THAT(ending.report, ContainsRegex("^broken invariant in the test\n\n\nAborting\\.\\.\\.\n\n"
                                             "(.*\n)*qe::fatalError\\(char const\\*\\)(.*\n)*[^\n]*breakAnInvariant"));
}

TEST(FailureReport, UncaughtExceptionGivesItsChainAndTheThrowingStack) {
    const Ending ending = runFailure(joinThrowingThread);
    EXPECT_EQ(ending.signal, SIGABRT);
    EXPECT_THAT(ending.report,
                HasSubstr("\nuncaught C++ exception of type \"std::_Nested_exception<std::runtime_error>\"\n"
                          "what(): \"bad \\\"quote\\\"\"\n"
                          "nested exception:\n"
                          "uncaught C++ exception of type \"(anonymous namespace)::UnknownFailure\"\n\n"));
    EXPECT_THAT(ending.report, ContainsRegex(frameOf("throwNested", kThrowLine)));
    // The main thread, registered, waits for the thread that failed.
    EXPECT_THAT(ending.report, ContainsRegex("\nThread id [0-9]+:\n(.*\n)*[^\n]*joinThrowingThread"));
    EXPECT_THAT(ending.report, Not(HasSubstr("Aborting")));  // one report only
}

TEST(FailureReport, FaultOnASecondThreadListsTheMainThread) {
    const Ending ending = runFailure(joinTrappingThread);
    EXPECT_EQ(ending.signal, SIGILL);
    EXPECT_THAT(ending.report, ContainsRegex("^\nfatal signal SIGILL \\(illegal operand\\) at 0x[0-9a-f]+\n\n"));
    EXPECT_THAT(ending.report, ContainsRegex(frameOf("trapOnRegisteredThread", kTrapLine) +
                                             "(.*\n)*\nThread id [0-9]+:\n(.*\n)*[^\n]*joinTrappingThread"));

    const Ending ended = runFailure(abortAfterARegisteredThreadEnded);
    EXPECT_THAT(ended.report, ContainsRegex("\nThread id [0-9]+:\n    the thread has ended\n"));
}

}  // namespace
