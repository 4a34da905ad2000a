// execstr_bench.cc: starting commands from small and large tools, and waiting
// among many children.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <tovan/wait4pid.h>
#include <unistd.h>
#include <string>

namespace {

char program[] = "/bin/true";
char *const program_argv[] = {program, nullptr};
const char simple_line[] = "/bin/true";
const char shell_line[] = "/bin/true $HOME";

void reap(pid_t child, benchmark::State &state) {
    int status = -1;
    if (waitpid(child, &status, 0) != child || status != 0) {
        state.SkipWithError("the command failed");
    }
}

void by_ours(benchmark::State &state, const char *line) {
    for (auto _ : state) {
        if (execstr(0, 1, 2, 1, 0, line) != 0) {
            state.SkipWithError("the command failed");
        }
    }
}

void by_system(benchmark::State &state, const char *line) {
    for (auto _ : state) {
        if (system(line) != 0) state.SkipWithError("the command failed");
    }
}

void by_posix_spawn(benchmark::State &state) {
    for (auto _ : state) {
        pid_t child;
        posix_spawn(&child, program, nullptr, nullptr, program_argv, environ);
        reap(child, state);
    }
}

void by_vfork(benchmark::State &state) {
    for (auto _ : state) {
        pid_t child = vfork();
        if (child == 0) {
            execv(program, program_argv);
            _exit(127);
        }
        reap(child, state);
    }
}

void by_fork(benchmark::State &state) {
    for (auto _ : state) {
        pid_t child = fork();
        if (child == 0) {
            execv(program, program_argv);
            _exit(127);
        }
        reap(child, state);
    }
}

// Memory in small pages, all of them there, so that a copy of the process
// has page tables to copy.
struct ballast {
    explicit ballast(long megabytes)
        : size(static_cast<size_t>(megabytes) << 20) {
        if (size == 0) return;
        area = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED) abort();
        madvise(area, size, MADV_NOHUGEPAGE);
        memset(area, 1, size);
    }
    ~ballast() {
        if (size != 0) munmap(area, size);
    }
    size_t size;
    void *area = nullptr;
};

template <typename Run>
void add(const std::string &name, long megabytes, Run run) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        ballast weight(megabytes);
        run(state);
    })->UseRealTime();
}

void add_simple(const std::string &job, long megabytes) {
    add(job + "/ours", megabytes,
        [](auto &state) { by_ours(state, simple_line); });
    add(job + "/posix_spawn", megabytes, by_posix_spawn);
    add(job + "/vfork", megabytes, by_vfork);
    add(job + "/fork", megabytes, by_fork);
    add(job + "/system", megabytes,
        [](auto &state) { by_system(state, simple_line); });
}

void add_shell(const std::string &job) {
    add(job + "/ours", 0, [](auto &state) { by_ours(state, shell_line); });
    add(job + "/system", 0, [](auto &state) { by_system(state, shell_line); });
    // What our shell is told: the same line and two newlines.
    static const std::string whole = std::string(shell_line) + "\n\n";
    add(job + "/system_newlines", 0,
        [](auto &state) { by_system(state, whole.c_str()); });
}

// The next children that wait() reports, without any being there.
pid_t reported[2];
int reported_count = 0;

void keep(pid_t child) {
    constexpr pid_t last = 1 << 22;
    reported[0] = last;
    reported[1] = child;
    reported_count = 2;
    wait4pid(last, nullptr);
}

// One child among m kept ones is asked for, and becomes the newest.
void wait_among(benchmark::State &state) {
    pid_t count = static_cast<pid_t>(state.range(0));
    for (pid_t child = 1; child <= count; child++)
        keep(child);
    pid_t child = 1;
    for (auto _ : state) {
        child = static_cast<pid_t>((child * 7919L + 11) % count) + 1;
        if (wait4pid(child, nullptr) != child) {
            state.SkipWithError("a kept child was not found");
        }
        keep(child);
    }
    for (pid_t left = count; left > 0; left--)
        wait4pid(-1, nullptr);
}

}  // namespace

extern "C" pid_t wait(int *status) {
    if (status != nullptr) *status = 0;
    return reported[--reported_count];
}

int main(int argc, char **argv) {
    progname = "execstr_bench";
    setenv("_T_sh", "sh", 1);
    setenv("PATH", "/usr/bin:/bin", 1);
    add_simple("j/simple_small", 0);
    add_simple("j/simple_1gb", 1024);
    add_shell("j/shell");
    for (long megabytes : {1L, 256L, 512L, 1024L}) {
        add("law/start_by_megabytes/" + std::to_string(megabytes), megabytes,
            [](auto &state) { by_ours(state, simple_line); });
    }
    benchmark::RegisterBenchmark("law/wait_among_dead", wait_among)
        ->RangeMultiplier(2)
        ->Range(64, 8192);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
