#include "qe/thread_registry.h"

#include <signal.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>

#include "qe/stack_trace.h"

namespace qe {
namespace {

constexpr int kMaxThreads = 64;
// Room for a whole report after the thread's own stack ran out: reading the
// debug information and demangling long names take tens of kilobytes.
constexpr size_t kAlternateStackSize = 256 * 1024;

struct Entry {
    pid_t tid;
    void* alternateStack;  // mapped here for the thread, or null
};

// The registry, ordered by thread id. Constant-initialised, so that it exists
// before the first constructor runs and after the last destructor.
Entry g_entries[kMaxThreads];
int g_count = 0;
std::atomic_flag g_lock = ATOMIC_FLAG_INIT;

void sleepOneMillisecond() {
    timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
}

// A spin lock, because a report takes it inside a signal handler. False after
// that many failed attempts, one millisecond apart.
bool lockRegistry(int attempts) {
    for (int i = 0; g_lock.test_and_set(std::memory_order_acquire); ++i) {
        if (i == attempts) return false;
        sleepOneMillisecond();
    }
    return true;
}

void unlockRegistry() { g_lock.clear(std::memory_order_release); }

// The first thread to ask (the one that installs the handlers) takes this
// one, which costs nothing until a signal uses it; later ones get theirs
// mapped.
alignas(64) char g_firstAlternateStack[kAlternateStackSize];
std::atomic<bool> g_firstAlternateStackTaken{false};
std::atomic<bool> g_giveAlternateStacks{false};

void releaseAlternateStack(void* stack) {
    if (stack != g_firstAlternateStack) munmap(stack, kAlternateStackSize);
}

// Gives the calling thread an alternate signal stack; returns it, or null.
void* giveAlternateStack() {
    void* stack = g_firstAlternateStack;
    if (g_firstAlternateStackTaken.exchange(true)) {
        stack = mmap(nullptr, kAlternateStackSize, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
        if (stack == MAP_FAILED) return nullptr;
    }
    stack_t alternate{};
    alternate.ss_sp = stack;
    alternate.ss_size = kAlternateStackSize;
    if (sigaltstack(&alternate, nullptr) != 0) {
        releaseAlternateStack(stack);
        return nullptr;
    }
    return stack;
}

// One request for a stack at a time: the report asks a thread, which captures
// its own stack in its handler of the request signal.
enum RequestState : int { kIdle, kAsked, kCapturing, kAnswered };

struct StackRequest {
    std::atomic<pid_t> tid;
    std::atomic<int> state;
    int count;
    uintptr_t frames[kMaxStackFrames];
};

StackRequest g_request;
int g_requestSignal = 0;

void answerStackRequest(int, siginfo_t* info, void*) {
    const int savedErrno = errno;
    // Only a request from this process: a stray signal from outside is ignored.
    int asked = kAsked;
    if (info->si_code == SI_TKILL && info->si_pid == getpid() && g_request.tid.load() == gettid() &&
        g_request.state.compare_exchange_strong(asked, kCapturing)) {
        g_request.count = captureStack(g_request.frames, kMaxStackFrames);
        g_request.state.store(kAnswered);
    }
    errno = savedErrno;
}

bool awaitAnswer() {
    for (int i = 0; i < 1000 && g_request.state.load() != kAnswered; ++i) sleepOneMillisecond();
    return g_request.state.load() == kAnswered;
}

// Asks one thread for its stack and writes it. False when the thread may
// still write into the request later, so that no other thread can be asked.
bool printThreadStack(ReportWriter& out, pid_t tid) {
    out.flush();
    g_request.tid.store(tid);
    g_request.state.store(kAsked);
    if (tgkill(getpid(), tid, g_requestSignal) != 0) {
        out.text(errno == ESRCH ? "    the thread has ended\n" : "    signalling the thread failed\n");
        g_request.state.store(kIdle);
        return true;
    }
    if (!awaitAnswer()) {
        int asked = kAsked;
        if (g_request.state.compare_exchange_strong(asked, kIdle)) {
            out.text("    the thread did not answer\n");  // it blocks the signal, or is stopped
            return true;
        }
        if (!awaitAnswer()) {
            out.text("    the thread did not finish its answer\n");
            return false;
        }
    }
    printFrames(out, g_request.frames, g_request.count);
    g_request.state.store(kIdle);
    return true;
}

}  // namespace

bool registerCurrentThread() {
    const pid_t tid = gettid();
    stack_t current{};
    const bool hasAlternateStack = sigaltstack(nullptr, &current) == 0 && !(current.ss_flags & SS_DISABLE);
    lockRegistry(INT_MAX);
    int i = 0;
    while (i < g_count && g_entries[i].tid < tid) ++i;
    if (i < g_count && g_entries[i].tid == tid) {
        // A stack that is not this thread's was mapped for an ended thread
        // that had the same id.
        void*& old = g_entries[i].alternateStack;
        if (old && !(hasAlternateStack && current.ss_sp == old)) {
            releaseAlternateStack(old);
            old = nullptr;
        }
    } else if (g_count == kMaxThreads) {
        unlockRegistry();
        return false;
    } else {
        std::memmove(&g_entries[i + 1], &g_entries[i], sizeof(Entry) * size_t(g_count - i));
        g_entries[i] = {tid, nullptr};
        ++g_count;
    }
    if (!hasAlternateStack && g_giveAlternateStacks.load()) g_entries[i].alternateStack = giveAlternateStack();
    unlockRegistry();
    return true;
}

void printOtherThreads(ReportWriter& out) {
    if (g_requestSignal == 0) return;
    // A thread that failed while registering holds the lock for good.
    if (!lockRegistry(1000)) {
        out.text("\nthe thread registry stays locked: other threads are not listed\n");
        return;
    }
    const pid_t self = gettid();
    for (int i = 0; i < g_count; ++i) {
        if (g_entries[i].tid == self) continue;
        out.text("\nThread id ").dec(g_entries[i].tid).text(":\n");
        if (!printThreadStack(out, g_entries[i].tid)) break;
    }
    unlockRegistry();
}

void giveRegisteredThreadsAlternateStacks() { g_giveAlternateStacks.store(true); }

void installThreadStackHandler() {
    // A real-time signal that nothing else in the program uses. On the
    // alternate stack, so that a thread deep in its own stack can answer.
    const int signal = SIGRTMIN + 3;
    struct sigaction action {};
    action.sa_sigaction = answerStackRequest;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    if (sigaction(signal, &action, nullptr) == 0) g_requestSignal = signal;
}

}  // namespace qe
