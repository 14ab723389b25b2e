#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "qe/failure_handlers.h"

namespace {

// What main pays: the first call in a fresh process. Each iteration forks a
// child that installs the handlers and sends back the time the call took.
void BM_InstallFailureHandlersInAFreshProcess(benchmark::State& state) {
    for (auto _ : state) {
        int fds[2];
        if (pipe(fds) != 0) {
            state.SkipWithError("no pipe");
            break;
        }
        const pid_t child = fork();
        if (child == 0) {
            const auto start = std::chrono::steady_clock::now();
            qe::installFailureHandlers();
            const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            const bool sent = write(fds[1], &seconds, sizeof seconds) == sizeof seconds;
            _exit(sent ? 0 : 1);
        }
        close(fds[1]);
        double seconds = 0;
        const bool received = read(fds[0], &seconds, sizeof seconds) == sizeof seconds;
        close(fds[0]);
        waitpid(child, nullptr, 0);
        if (!received) {
            state.SkipWithError("no time from the child");
            break;
        }
        state.SetIterationTime(seconds);
    }
}
BENCHMARK(BM_InstallFailureHandlersInAFreshProcess)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
