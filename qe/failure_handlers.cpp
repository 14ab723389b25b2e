#include "qe/failure_handlers.h"

#include <cxxabi.h>
#include <signal.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <exception>
#include <ostream>
#include <streambuf>
#include <typeinfo>

#include "qe/print_escaped.h"
#include "qe/report_writer.h"
#include "qe/stack_trace.h"
#include "qe/thread_registry.h"

namespace qe {
namespace {

std::atomic<pid_t> g_reportingThread{0};

// Makes the calling thread the one that reports. False when it already is:
// a failure inside the report itself, which then ends the process at once.
// A failure on another thread while a report runs waits for that report to
// end the process, and still answers when asked for its stack.
bool beginReport() {
    const pid_t self = gettid();
    pid_t none = 0;
    if (g_reportingThread.compare_exchange_strong(none, self)) return true;
    if (none == self) return false;
    for (;;) pause();
}

void restoreDefaultAction(int signal) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

const char* signalName(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    default:
        return "SIGABRT";
    }
}

struct FaultCause {
    int signal;
    int code;
    const char* text;
};

constexpr FaultCause kFaultCauses[] = {
    {SIGSEGV, SEGV_MAPERR, "address not mapped"},
    {SIGSEGV, SEGV_ACCERR, "no access permission"},
    {SIGBUS, BUS_ADRALN, "misaligned address"},
    {SIGBUS, BUS_ADRERR, "no such physical address"},
    {SIGBUS, BUS_OBJERR, "hardware error on a mapped object"},
    {SIGILL, ILL_ILLOPC, "illegal opcode"},
    {SIGILL, ILL_ILLOPN, "illegal operand"},
    {SIGILL, ILL_ILLADR, "illegal addressing mode"},
    {SIGILL, ILL_ILLTRP, "illegal trap"},
    {SIGILL, ILL_PRVOPC, "privileged opcode"},
    {SIGILL, ILL_PRVREG, "privileged register"},
    {SIGILL, ILL_COPROC, "coprocessor error"},
    {SIGILL, ILL_BADSTK, "internal stack error"},
    {SIGFPE, FPE_INTDIV, "integer divide by zero"},
    {SIGFPE, FPE_INTOVF, "integer overflow"},
    {SIGFPE, FPE_FLTDIV, "floating-point divide by zero"},
    {SIGFPE, FPE_FLTOVF, "floating-point overflow"},
    {SIGFPE, FPE_FLTUND, "floating-point underflow"},
    {SIGFPE, FPE_FLTRES, "inexact floating-point result"},
    {SIGFPE, FPE_FLTINV, "invalid floating-point operation"},
    {SIGFPE, FPE_FLTSUB, "subscript out of range"},
};

// "fatal signal SIGSEGV (address not mapped) at 0x55d2c3a1b4ec" and, for a
// bad memory access, a line on the address: "while writing address 0x0".
void describeSignal(ReportWriter& out, int signal, const siginfo_t& info, const void* context) {
    out.text("fatal signal ").text(signalName(signal));
    if (info.si_code <= 0) {  // sent with kill or tgkill, not raised by a fault
        out.text(" sent by process ").dec(info.si_pid).text("\n");
        return;
    }
    for (const FaultCause& cause : kFaultCauses) {
        if (cause.signal == signal && cause.code == info.si_code) out.text(" (").text(cause.text).text(")");
    }
    const uintptr_t address = uintptr_t(info.si_addr);
#if defined(__x86_64__)
    const greg_t* registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
    const uintptr_t sp = uintptr_t(registers[REG_RSP]);
    out.text(" at 0x").hex(uintptr_t(registers[REG_RIP])).text("\n");
    if (signal != SIGSEGV && signal != SIGBUS) return;
    if (registers[REG_TRAPNO] == 13) {  // a non-canonical pointer, for one
        out.text("general protection fault, the address is not known\n");
        return;
    }
    // Below the stack pointer, or above it where the stack must be mapped:
    // the stack pointer has left the stack.
    if (signal == SIGSEGV && address + 4096 >= sp && address < sp + 256 * 1024) out.text("stack overflow ");
    const greg_t error = registers[REG_ERR];  // of a page fault: bit 1 a write, bit 4 a fetch
    const char* access = error & 16  ? "while executing address 0x"
                         : error & 2 ? "while writing address 0x"
                                     : "while reading address 0x";
    out.text(registers[REG_TRAPNO] == 14 ? access : "at address 0x").hex(address).text("\n");
#else
    (void)context;
    out.text(" at address 0x").hex(address).text("\n");
#endif
}

void reportSignal(int signal, siginfo_t* info, void* context) {
    ReportWriter out(STDERR_FILENO);
    if (beginReport()) {
        if (signal == SIGABRT) {
            out.text("\n\nAborting...\n\n");
        } else {
            out.text("\n");
            describeSignal(out, signal, *info, context);
            out.text("\n");
        }
        printCurrentStack(out);
        printOtherThreads(out);
    } else {
        out.text("\n").text(signalName(signal)).text(" inside the failure report\n");
    }
    out.flush();
    // With the default action back, the signal ends the process when it comes
    // again: this one, pending until the handler returns, or the fault of the
    // instruction that runs again.
    restoreDefaultAction(signal);
    raise(signal);
}

// Lets printEscaped, which writes to a stream, write into a report.
class ReportStreamBuf : public std::streambuf {
public:
    explicit ReportStreamBuf(ReportWriter& out) : out_(out) {}

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        const char ch = traits_type::to_char_type(c);
        out_.text(std::string_view(&ch, 1));
        return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        out_.text(std::string_view(s, size_t(n)));
        return n;
    }

private:
    ReportWriter& out_;
};

// The type of the exception being handled.
void printExceptionType(ReportWriter& out) {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (!type) {
        out.text("uncaught C++ exception of unrecognized type\n");
        return;
    }
    out.text("uncaught C++ exception of type \"");
    printTypeName(out, type->name());
    out.text("\"\n");
}

// Writes the exception's type and, for a std::exception, its what() text;
// returns the exception nested in it, if any.
std::exception_ptr printException(ReportWriter& out, const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception& e) {
        printExceptionType(out);
        out.text("what(): \"");
        ReportStreamBuf buffer(out);
        std::ostream stream(&buffer);
        printEscaped(stream, e.what() ? e.what() : "");
        out.text("\"\n");
        if (auto* nested = dynamic_cast<const std::nested_exception*>(&e)) return nested->nested_ptr();
    } catch (const std::nested_exception& nested) {
        printExceptionType(out);
        return nested.nested_ptr();
    } catch (...) {
        printExceptionType(out);
    }
    return nullptr;
}

[[noreturn]] void reportUncaughtException() {
    {
        ReportWriter out(STDERR_FILENO);
        if (beginReport()) {
            out.text("\n");
            std::exception_ptr exception = std::current_exception();
            if (!exception) out.text("terminate called without an active exception\n");
            for (bool outermost = true; exception; outermost = false) {
                if (!outermost) out.text("nested exception:\n");
                exception = printException(out, exception);
            }
            out.text("\n");
            printCurrentStack(out);
            printOtherThreads(out);
        }
    }
    restoreDefaultAction(SIGABRT);  // no second report from the abort handler
    std::abort();
}

// Takes the signal unless a handler was in place already: AddressSanitizer's
// for SIGSEGV, SIGBUS and SIGFPE gets it back and gives its own, better report.
// Returns whether it took the signal.
bool takeSignal(int signal, int flags) {
    struct sigaction action {};
    action.sa_sigaction = reportSignal;
    action.sa_flags = SA_SIGINFO | flags;
    sigemptyset(&action.sa_mask);
    struct sigaction previous;
    if (sigaction(signal, &action, &previous) != 0) return false;
    if (previous.sa_handler == SIG_DFL) return true;
    sigaction(signal, &previous, nullptr);
    return false;
}

}  // namespace

void installFailureHandlers() {
    static std::atomic<bool> installed{false};
    if (installed.exchange(true)) return;
    std::set_terminate(reportUncaughtException);
    // The faults that a stack overflow gives run their handler on an
    // alternate stack, as the thread's own has no room left.
    if (takeSignal(SIGSEGV, SA_ONSTACK)) giveRegisteredThreadsAlternateStacks();
    takeSignal(SIGBUS, SA_ONSTACK);
    takeSignal(SIGILL, 0);
    takeSignal(SIGFPE, 0);
    takeSignal(SIGABRT, 0);
    installThreadStackHandler();
    registerCurrentThread();
}

}  // namespace qe
