#include "qe/stack_trace.h"

#include <unwind.h>

#include <algorithm>
#include <cstring>

#if KIVA_HAVE_LIBBACKTRACE
extern "C" {
// GCC's libbacktrace, which comes with the compiler: it reads the DWARF line
// tables and the symbol tables of the loaded modules and takes its memory from
// mmap, never from malloc, so a signal handler may use it.
struct backtrace_state;
using backtrace_error_callback = void (*)(void* data, const char* message, int error);
using backtrace_full_callback = int (*)(void* data, uintptr_t pc, const char* file, int line, const char* function);
using backtrace_syminfo_callback = void (*)(void* data, uintptr_t pc, const char* symbol, uintptr_t start,
                                            uintptr_t size);
backtrace_state* backtrace_create_state(const char* file, int threaded, backtrace_error_callback onError, void* data);
int backtrace_pcinfo(backtrace_state* state, uintptr_t pc, backtrace_full_callback onLocation,
                     backtrace_error_callback onError, void* data);
int backtrace_syminfo(backtrace_state* state, uintptr_t pc, backtrace_syminfo_callback onSymbol,
                      backtrace_error_callback onError, void* data);
// The C++ runtime's demangler in the form that allocates nothing: it hands
// the text out in pieces and returns 0 when the name was demangled.
int __gcclibcxx_demangle_callback(const char* mangled, void (*sink)(const char* piece, size_t size, void* opaque),
                                  void* opaque);
}
#else
#include <dlfcn.h>
#endif

namespace qe {
namespace {

// Stands in the frame list for the code through which a signal handler
// returns into the code that the signal interrupted.
constexpr uintptr_t kSignalTrampoline = ~uintptr_t(0);

struct Capture {
    uintptr_t* frames;
    int maxFrames;
    int count;
};

_Unwind_Reason_Code takeFrame(_Unwind_Context* context, void* data) {
    auto& capture = *static_cast<Capture*>(data);
    int beforeInstruction = 0;
    uintptr_t pc = _Unwind_GetIPInfo(context, &beforeInstruction);
    if (pc == 0) return _URC_END_OF_STACK;
    // A return address points behind its call; one byte back lies in the
    // call, whose line is the one to show. The frame that a signal
    // interrupted holds the address of the failing instruction itself.
    if (!beforeInstruction) {
        --pc;
    } else if (capture.count > 0) {
        // Interrupted by a signal: the frame before is the trampoline through
        // which the handler returns.
        capture.frames[capture.count - 1] = kSignalTrampoline;
    }
    capture.frames[capture.count++] = pc;
    return capture.count < capture.maxFrames ? _URC_NO_REASON : _URC_END_OF_STACK;
}

#if KIVA_HAVE_LIBBACKTRACE

// Symbols are read on first need, by the thread that fails. A failure is
// remembered and not tried again.
bool g_symbolsTried = false;
backtrace_state* g_symbols = nullptr;

// A module without debug information is no failure: its frames fall back to
// the symbol table.
void ignoreSymbolError(void*, const char*, int) {}

backtrace_state* symbols() {
    if (!g_symbolsTried) {
        g_symbolsTried = true;
        g_symbols = backtrace_create_state(nullptr, 0, ignoreSymbolError, nullptr);
    }
    return g_symbols;
}

struct Demangled {
    char text[2048];
    size_t used = 0;
    bool cut = false;
};

void appendDemangled(const char* piece, size_t size, void* opaque) {
    auto& d = *static_cast<Demangled*>(opaque);
    const size_t room = sizeof d.text - d.used;
    if (size > room) d.cut = true;
    std::memcpy(d.text + d.used, piece, std::min(size, room));
    d.used += std::min(size, room);
}

// Writes a mangled name in source form, or as it is where it does not
// demangle. The demangler keeps its tables in arrays on the stack sized by the
// name, so a long name stays mangled rather than overrun a signal stack.
void printDemangled(ReportWriter& out, const char* name) {
    if (std::strlen(name) < 1024) {
        Demangled d;
        if (__gcclibcxx_demangle_callback(name, appendDemangled, &d) == 0) {
            out.text(std::string_view(d.text, d.used));
            if (d.cut) out.text("...");
            return;
        }
    }
    out.text(name);
}

void printSymbolName(ReportWriter& out, const char* name) {
    if (std::strncmp(name, "_Z", 2) == 0) {
        printDemangled(out, name);
    } else {
        out.text(name);  // a C function such as main
    }
}

struct Symbol {
    const char* name = nullptr;
    uintptr_t start = 0;
};

void takeSymbol(void* data, uintptr_t, const char* name, uintptr_t start, uintptr_t) {
    if (name) *static_cast<Symbol*>(data) = {name, start};
}

// The places that the debug information gives for one address: one per call
// inlined there, innermost first, and last the function that holds the
// address. All but the last are written as they come.
struct Places {
    ReportWriter* out;
    const char* function = nullptr;
    const char* file = nullptr;
    int line = 0;
};

void printPlace(ReportWriter& out, const char* file, int line) {
    if (file) out.text(", ").text(file).text(", line ").dec(line);
}

int takePlace(void* data, uintptr_t, const char* file, int line, const char* function) {
    auto& places = *static_cast<Places*>(data);
    if (places.function) {
        printSymbolName(*places.out, places.function);
        places.out->text(" [inlined]");
        printPlace(*places.out, places.file, places.line);
        places.out->text("\n");
    }
    places.function = function;
    places.file = file;
    places.line = line;
    return 0;
}

void printFrame(ReportWriter& out, uintptr_t pc) {
    Places places{&out};
    Symbol symbol;
    if (backtrace_state* state = symbols()) {
        backtrace_pcinfo(state, pc, takePlace, ignoreSymbolError, &places);
        backtrace_syminfo(state, pc, takeSymbol, ignoreSymbolError, &symbol);
    }
    // The symbol table's name is the whole one, with namespaces, class and
    // parameters; the debug information may hold the bare name alone.
    const char* name = symbol.name ? symbol.name : places.function;
    if (!name) {
        out.text("0x").hex(pc).text("\n");
        return;
    }
    printSymbolName(out, name);
    if (symbol.name) out.text("+0x").hex(pc - symbol.start);
    printPlace(out, places.file, places.line);
    out.text("\n");
}

#else  // Without libbacktrace: what the dynamic linker knows, names mangled.

void printFrame(ReportWriter& out, uintptr_t pc) {
    Dl_info info;
    if (!dladdr(reinterpret_cast<void*>(pc), &info) || !info.dli_fname) {
        out.text("0x").hex(pc);
    } else if (info.dli_sname) {
        out.text(info.dli_sname).text("+0x").hex(pc - uintptr_t(info.dli_saddr));
    } else {
        out.text(info.dli_fname).text("+0x").hex(pc - uintptr_t(info.dli_fbase));
    }
    out.text("\n");
}

#endif

}  // namespace

int captureStack(uintptr_t* frames, int maxFrames) {
    Capture capture{frames, maxFrames, 0};
    if (maxFrames > 0) _Unwind_Backtrace(takeFrame, &capture);
    return capture.count;
}

void printFrames(ReportWriter& out, const uintptr_t* frames, int count) {
    for (int i = 0; i < count; ++i) {
        if (frames[i] == kSignalTrampoline) {
            out.text("[signal handler called]\n");
        } else {
            printFrame(out, frames[i]);
        }
        // Line by line, so that a fault while reading the symbols of a later
        // frame loses nothing written before it.
        out.flush();
    }
}

void printCurrentStack(ReportWriter& out) {
    uintptr_t frames[kMaxStackFrames];
    printFrames(out, frames, captureStack(frames, kMaxStackFrames));
}

void printTypeName(ReportWriter& out, const char* mangledName) {
#if KIVA_HAVE_LIBBACKTRACE
    printDemangled(out, mangledName);
#else
    out.text(mangledName);
#endif
}

}  // namespace qe
