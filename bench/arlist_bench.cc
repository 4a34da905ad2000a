// arlist_bench.cc: job i, the names of the 50000 members of an archive, beside
// ar and bsdtar, which run as programs; vop runs as a program too. All of them
// write the names to /dev/null. "blocks" is the file's bytes alone, 64 KB at a
// time; "headers" one pread of each header.
#include "support/ar_image.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <tovan/u_arlist.h>
#include <unistd.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int job_members = 50000;

// Members whose sizes are spread evenly up to twice the mean; every third
// name is a long one.
std::string make_archive(int members, unsigned mean_size) {
    std::mt19937 random(9);
    std::vector<support::ar_file> files;
    for (int i = 0; i < members; i++) {
        std::string name = "member" + std::to_string(i) + ".o";
        if (i % 3 == 0) name = "a-longer-name-of-" + name;
        size_t size = mean_size > 0 ? random() % (2 * mean_size) : 0;
        files.push_back({name, std::string(size, 'd')});
    }
    return support::ar_archive(files);
}

// A file that is gone when the program ends.
class archive_file {
  public:
    archive_file(int members, unsigned mean_size) {
        std::string bytes = make_archive(members, mean_size);
        int descriptor = mkstemp(name_);
        for (size_t at = 0; at < bytes.size();) {
            ssize_t put =
                write(descriptor, bytes.data() + at, bytes.size() - at);
            if (put <= 0) abort();
            at += static_cast<size_t>(put);
        }
        close(descriptor);
    }
    ~archive_file() {
        unlink(name_);
    }
    const char *name() const {
        return name_;
    }

  private:
    char name_[32] = "/tmp/arlist-bench-XXXXXX";
};

// The archives of the job: members of some 3 KB, as in the libraries of many
// small sources, of 60 KB, and empty ones.
const char *archive_of(unsigned mean_size) {
    static std::unique_ptr<archive_file> small, large, empty;
    auto &file = mean_size == 0 ? empty : mean_size < 10000 ? small : large;
    if (!file) {
        int members = mean_size < 10000 ? job_members : job_members / 25;
        file = std::make_unique<archive_file>(members, mean_size);
    }
    return file->name();
}

void ours(benchmark::State &state, unsigned mean_size) {
    const char *path = archive_of(mean_size);
    FILE *output = fopen("/dev/null", "w");
    for (auto _ : state) {
        for (const armember *m = getarlist(path, nullptr); m; m = m->next) {
            fputs_unlocked(m->name, output);
            putc_unlocked('\n', output);
        }
        fflush(output);
    }
    fclose(output);
}

void run_program(benchmark::State &state, std::vector<const char *> words) {
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        pid_t child;
        int status = -1;
        if (posix_spawnp(&child, words[0], &actions, nullptr,
                         const_cast<char **>(words.data()), environ) == 0)
            waitpid(child, &status, 0);
        if (status != 0) {
            state.SkipWithError("left out: the program does not run");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

void by_vop(benchmark::State &state, unsigned mean_size) {
    run_program(state, {TOVAN_BINARY_DIR "/bin/vop", "ar", "list",
                        archive_of(mean_size)});
}

void by_ar(benchmark::State &state, unsigned mean_size) {
    run_program(state, {"ar", "t", archive_of(mean_size)});
}

void by_bsdtar(benchmark::State &state, unsigned mean_size) {
    run_program(state, {"bsdtar", "-tf", archive_of(mean_size)});
}

void by_blocks(benchmark::State &state, unsigned mean_size) {
    const char *path = archive_of(mean_size);
    static char block[65536];
    for (auto _ : state) {
        int descriptor = open(path, O_RDONLY);
        while (read(descriptor, block, sizeof block) > 0)
            benchmark::DoNotOptimize(block[0]);
        close(descriptor);
    }
}

void by_headers(benchmark::State &state, unsigned mean_size) {
    const char *path = archive_of(mean_size);
    for (auto _ : state) {
        int descriptor = open(path, O_RDONLY);
        char header[61] = {};
        for (off_t at = 8; pread(descriptor, header, 60, at) == 60;) {
            long size = strtol(header + 48, nullptr, 10);
            at += 60 + size + size % 2;
        }
        close(descriptor);
    }
}

struct job {
    const char *who;
    void (*run)(benchmark::State &state, unsigned mean_size);
};

constexpr job jobs[] = {
    {"ours", ours},        {"vop", by_vop},       {"ar", by_ar},
    {"bsdtar", by_bsdtar}, {"blocks", by_blocks}, {"headers", by_headers},
};

struct kind {
    const char *what;
    unsigned mean_size;
};

constexpr kind kinds[] = {
    {"names_3k", 2900}, {"names_60k", 60000}, {"names_empty", 0}};

// ---- laws ----------------------------------------------------------------

void list_of_n(benchmark::State &state) {
    archive_file file(static_cast<int>(state.range(0)), 100);
    for (auto _ : state)
        benchmark::DoNotOptimize(getarlist(file.name(), nullptr));
}

void map_of_n(benchmark::State &state) {
    auto count = static_cast<int32_t>(state.range(0));
    std::vector<armember> members(static_cast<size_t>(count));
    std::vector<int32_t> map{count};
    std::string names;
    for (int32_t i = 0; i < count; i++) {
        map.push_back(0);
        map.push_back(static_cast<int32_t>(names.size()));
        names += "new-name-" + std::to_string(i) + '\0';
        if (i > 0) members[static_cast<size_t>(i) - 1].next = &members[i];
    }
    size_t words = map.size();
    map.resize(words + names.size() / 4 + 1);
    memcpy(map.data() + words, names.data(), names.size());
    for (auto _ : state) {
        state.PauseTiming();
        for (armember &member : members)
            member.name = "";
        state.ResumeTiming();
        arlmap(map.data(), members.data());
    }
}

// What the library makes permanent stays: few iterations.
#define LAW(job, name, first) \
    BENCHMARK(job)            \
        ->Name("law/" name)   \
        ->Iterations(3)       \
        ->Arg(first)          \
        ->Arg(2 * first)      \
        ->Arg(4 * first)

LAW(list_of_n, "arlist", 250000);
LAW(map_of_n, "arlmap", 250000);

}  // namespace

int main(int argc, char **argv) {
    for (const kind &k : kinds) {
        for (const job &j : jobs) {
            std::string name = std::string("i/") + k.what + "/" + j.who;
            benchmark::RegisterBenchmark(
                name.c_str(),
                [j, k](benchmark::State &s) { j.run(s, k.mean_size); })
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond)
                ->Iterations(10);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
