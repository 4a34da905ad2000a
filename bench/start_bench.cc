// start_bench.cc: job n, starting a tool and waiting for its end: a small one
// on the library, linked statically, beside the C library's least and a
// dynamic one in C++. The same tool on the shared library says what dynamic
// linking costs.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Standard output goes nowhere.
struct quiet {
    quiet() {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null",
                                         O_WRONLY, 0);
    }
    ~quiet() {
        posix_spawn_file_actions_destroy(&actions);
    }
    posix_spawn_file_actions_t actions;
};

void start(benchmark::State &state, const char *program) {
    quiet output;
    char *const words[] = {const_cast<char *>(program), nullptr};
    for (auto _ : state) {
        pid_t child;
        int status = -1;
        if (posix_spawn(&child, program, &output.actions, nullptr, words,
                        environ) != 0 ||
            waitpid(child, &status, 0) != child || status != 0)
            state.SkipWithError("the program failed");
    }
}

BENCHMARK_CAPTURE(start, ours, TOVAN_START_STATIC)
    ->Name("n/start/ours")
    ->UseRealTime();
BENCHMARK_CAPTURE(start, ours_shared, TOVAN_START_SHARED)
    ->Name("n/start/ours_shared")
    ->UseRealTime();
BENCHMARK_CAPTURE(start, least, "/bin/true")
    ->Name("n/start/true")
    ->UseRealTime();
BENCHMARK_CAPTURE(start, standard, TOVAN_START_STANDARD)
    ->Name("n/start/dynamic_c++")
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
