// globber_bench.cc: job k, globs over 100 000 files, beside glob(3), a loop of
// readdir(3) and fnmatch(3), and find.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <ftw.h>
#include <glob.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/globber.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

constexpr int all_files = 100000;

int remove_entry(const char *path, const struct stat *, int, struct FTW *) {
    return remove(path);
}

void make_file(const std::string &path) {
    close(open(path.c_str(), O_CREAT | O_WRONLY, 0600));
}

std::string file_name(int i) {
    static const char *const ends[] = {".c", ".h", ".cc", ".o", ".txt"};
    return "source_file_" + std::to_string(i) + ends[i % 5];
}

// flat/FILE, and deep/dNNN/FILE in 100 directories; grow/N/FILE for the law.
class tree {
  public:
    tree() {
        char name[] = "/tmp/globber-bench-XXXXXX";
        path = mkdtemp(name);
        if (chdir(path.c_str()) != 0) abort();
        fill("flat", all_files);
        mkdir("deep", 0700);
        for (int i = 0; i < 100; ++i)
            fill("deep/d" + std::to_string(i), all_files / 100);
        mkdir("grow", 0700);
        for (int n : {25000, 50000})
            fill("grow/" + std::to_string(n), n);
    }
    ~tree() {
        nftw(path.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
    }
    tree(const tree &) = delete;
    tree &operator=(const tree &) = delete;

    std::string path;

  private:
    static void fill(const std::string &directory, int count) {
        mkdir(directory.c_str(), 0700);
        for (int i = 0; i < count; ++i)
            make_file(directory + "/" + file_name(i));
    }
};

size_t by_ours(const std::string &pattern) {
    size_t found = 0;
    for (char *path = globber(pattern.c_str()); path != nullptr;
         path = globber(nullptr))
        ++found;
    return found;
}

size_t by_glob(const std::string &pattern) {
    glob_t result;
    size_t found = 0;
    if (glob(pattern.c_str(), GLOB_NOSORT, nullptr, &result) == 0)
        found = result.gl_pathc;
    globfree(&result);
    return found;
}

// One directory level of a pattern, as one would write it.
size_t read_level(const std::string &directory, const std::string &rest) {
    size_t slash = rest.find('/');
    std::string component = rest.substr(0, slash);
    DIR *handle = opendir(directory.c_str());
    if (handle == nullptr) return 0;
    size_t found = 0;
    while (const dirent *entry = readdir(handle)) {
        if (entry->d_name[0] == '.') continue;
        if (fnmatch(component.c_str(), entry->d_name, 0) != 0) continue;
        std::string path = directory + "/" + entry->d_name;
        benchmark::DoNotOptimize(path.data());
        found += slash == std::string::npos
                     ? 1
                     : read_level(path, rest.substr(slash + 1));
    }
    closedir(handle);
    return found;
}

size_t by_loop(const std::string &pattern) {
    size_t slash = pattern.find('/');
    return read_level(pattern.substr(0, slash), pattern.substr(slash + 1));
}

size_t by_find(const std::string &pattern) {
    std::string directory = pattern.substr(0, pattern.find('/'));
    std::string name = pattern.substr(pattern.rfind('/') + 1);
    int depth = pattern.find('/') == pattern.rfind('/') ? 1 : 2;
    std::string range = std::to_string(depth);
    std::string command = "find " + directory + " -mindepth " + range +
                          " -maxdepth " + range + " -name '" + name +
                          "' -printf . | wc -c";
    FILE *pipe = popen(command.c_str(), "r");
    size_t found = 0;
    if (fscanf(pipe, "%zu", &found) != 1) abort();
    pclose(pipe);
    return found;
}

struct job {
    const char *name;
    const char *pattern;
};

constexpr job jobs[] = {
    {"all-flat", "flat/*"},
    {"some-flat", "flat/*[05].c"},
    {"two-levels", "deep/d*/source*.c"},
    {"one-of-two-levels", "deep/*/source_file_7.cc"},
};

struct peer {
    const char *name;
    size_t (*count)(const std::string &pattern);
};

constexpr peer peers[] = {{"ours", by_ours},
                          {"glob-nosort", by_glob},
                          {"readdir-fnmatch", by_loop},
                          {"find", by_find}};

void run(benchmark::State &state, const job &each, const peer &who) {
    size_t expected = by_ours(each.pattern);
    for (auto _ : state) {
        if (who.count(each.pattern) != expected) {
            fprintf(stderr, "%s %s\n", each.pattern, who.name);
            abort();
        }
    }
}

void grow(benchmark::State &state, const char *pattern) {
    for (auto _ : state)
        benchmark::DoNotOptimize(by_ours(pattern));
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    tree files;
    for (const job &each : jobs) {
        for (const peer &who : peers) {
            std::string name = std::string("k/") + each.name + "/" + who.name;
            benchmark::RegisterBenchmark(
                name.c_str(),
                [&](benchmark::State &state) { run(state, each, who); })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    for (const auto &[n, pattern] : {std::pair{"25000", "grow/25000/*.c"},
                                     std::pair{"50000", "grow/50000/*.c"},
                                     std::pair{"100000", "flat/*.c"}}) {
        std::string name = std::string("law/glob/") + n;
        benchmark::RegisterBenchmark(
            name.c_str(),
            [pattern](benchmark::State &state) { grow(state, pattern); })
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
