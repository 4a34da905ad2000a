// archive_bench.cc: job h, archives of a tree to /dev/null and to a pipe,
// beside bsdtar, GNU cpio, GNU tar, and cat, which only copies. Everybody gets
// the same list of files and runs as a program of its own: ours is this one.
#include "law.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/cpioput.h>
#include <tovan/errexit.h>
#include <tovan/tarout.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

const char list_name[] = "list";

// A folder of files that is gone when the program ends, and the current
// directory; their names are in the file "list".
class scratch_tree {
  public:
    explicit scratch_tree(const std::vector<size_t> &sizes)
        : before_(open(".", O_RDONLY | O_DIRECTORY)) {
        if (mkdtemp(folder_) == nullptr || chdir(folder_) != 0) abort();
        std::ofstream list(list_name);
        std::mt19937_64 random(8);
        std::string content;
        for (size_t size : sizes) {
            while (content.size() < size) {
                uint64_t word = random();
                content.append(reinterpret_cast<char *>(&word), sizeof word);
            }
            std::string name = "file" + std::to_string(count_++);
            std::ofstream(name).write(content.data(),
                                      static_cast<std::streamsize>(size));
            list << name << '\n';
        }
    }
    ~scratch_tree() {
        if (fchdir(before_) != 0) abort();
        close(before_);
        std::filesystem::remove_all(folder_);
    }

  private:
    int before_;
    char folder_[40] = "/tmp/archive-bench-XXXXXX";
    int count_ = 0;
};

// 512 MB: a build tree's mixture of many small files and some large ones.
std::vector<size_t> mixed_sizes() {
    std::mt19937 random(7);
    std::vector<size_t> sizes;
    for (int i = 0; i < 4000; i++)
        sizes.push_back(random() % 32768);
    for (int i = 0; i < 180; i++)
        sizes.push_back(2500000);
    return sizes;
}

std::vector<std::string> listed_files() {
    std::ifstream list(list_name);
    std::vector<std::string> names;
    for (std::string name; std::getline(list, name);)
        names.push_back(name);
    return names;
}

void pack_tar(const std::vector<std::string> &names) {
    tarinit(-1, -1);
    for (const std::string &name : names)
        tarout(name.c_str(), nullptr, nullptr);
    tardone();
}

void pack_cpio(const std::vector<std::string> &names) {
    cpiosetup(0);
    for (const std::string &name : names)
        cpioput(name.c_str(), name.c_str(), nullptr);
    cpiofin();
}

std::string own_path() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

void by_command(benchmark::State &state, const std::string &command) {
    for (auto _ : state) {
        if (system(command.c_str()) != 0)
            state.SkipWithError("the command failed");
    }
}

bool is_installed(const std::string &program) {
    return access(("/usr/bin/" + program).c_str(), X_OK) == 0 ||
           access(("/bin/" + program).c_str(), X_OK) == 0;
}

struct peer {
    std::string name;
    std::string program;
    std::string command;
};

void add(const std::string &job, const std::vector<peer> &peers,
         const std::string &output) {
    for (const peer &each : peers) {
        if (!is_installed(each.program) && each.name != "ours") {
            fprintf(stderr, "peer left out: %s is not installed\n",
                    each.program.c_str());
            continue;
        }
        std::string command = each.command + output;
        benchmark::RegisterBenchmark(
            (job + "/" + each.name).c_str(),
            [command](benchmark::State &state) { by_command(state, command); })
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    }
}

void add_jobs() {
    std::string ours = own_path() + " --pack ";
    const peer cat = {"cat", "cat", "xargs cat <list"};
    const std::vector<peer> cpio = {
        {"ours", "", ours + "cpio"},
        {"bsdtar", "bsdtar", "bsdtar -cf - --format odc -T list"},
        {"gnu_cpio", "cpio", "cpio -o -H odc --quiet <list"},
        {"gnu_cpio_5120", "cpio", "cpio -o -H odc --quiet -C 5120 <list"},
        cat};
    const std::vector<peer> tar = {
        {"ours", "", ours + "tar"},
        {"gnu_tar", "tar", "tar -cf - -T list"},
        {"bsdtar", "bsdtar", "bsdtar -cf - --format v7tar -T list"},
        cat};
    const std::string null = " >/dev/null";
    const std::string pipe = " | cat >/dev/null";
    add("h/cpio_null", cpio, null);
    add("h/cpio_pipe", cpio, pipe);
    // GNU tar does not read what goes to /dev/null.
    add("h/tar_null", {tar[0], tar[2], tar[3]}, null);
    add("h/tar_pipe", tar, pipe);
}

// Runs `pack` with standard output at /dev/null.
void to_null(benchmark::State &state, const std::function<void()> &pack) {
    int kept = dup(1);
    int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    for (auto _ : state)
        pack();
    dup2(kept, 1);
    close(kept);
    close(null);
}

void tar_of_n_files(benchmark::State &state) {
    scratch_tree tree(
        std::vector<size_t>(static_cast<size_t>(state.range(0)), 1000));
    std::vector<std::string> names = listed_files();
    to_null(state, [&] { pack_tar(names); });
}

void cpio_of_n_files(benchmark::State &state) {
    scratch_tree tree(
        std::vector<size_t>(static_cast<size_t>(state.range(0)), 1000));
    std::vector<std::string> names = listed_files();
    to_null(state, [&] { pack_cpio(names); });
}

void tar_of_n_bytes(benchmark::State &state) {
    scratch_tree tree({static_cast<size_t>(state.range(0))});
    std::vector<std::string> names = listed_files();
    to_null(state, [&] { pack_tar(names); });
}

// n files with two names each, all names of the first kind before the others:
// one file stands for all of them, under made-up numbers.
template <typename Put>
void put_links(int64_t n, Put put) {
    struct stat status {};
    stat("file0", &status);
    status.st_nlink = 2;
    for (int64_t i = 0; i < 2 * n; i++) {
        status.st_ino = static_cast<ino_t>(i % n) + (ino_t{1} << 32);
        put("file0", "file0", &status);
    }
}

void tar_of_n_links(benchmark::State &state) {
    scratch_tree tree({0});
    to_null(state, [&] {
        tarinit(-1, -1);
        put_links(state.range(0), tarout);
        tardone();
    });
}

void cpio_of_n_links(benchmark::State &state) {
    scratch_tree tree({0});
    to_null(state, [&] {
        cpiosetup(0);
        put_links(state.range(0), cpioput);
        cpiofin();
    });
}

LAW(tar_of_n_files, "tar_files", 2500)->UseRealTime();
LAW(cpio_of_n_files, "cpio_files", 2500)->UseRealTime();
LAW(tar_of_n_bytes, "tar_bytes", 64 << 20)->UseRealTime();
LAW(tar_of_n_links, "tar_links", 100000)->UseRealTime();
LAW(cpio_of_n_links, "cpio_links", 50000)->UseRealTime();

}  // namespace

int main(int argc, char **argv) {
    progname = "archive_bench";
    if (argc == 3 && strcmp(argv[1], "--pack") == 0) {
        bool is_tar = strcmp(argv[2], "tar") == 0;
        is_tar ? pack_tar(listed_files()) : pack_cpio(listed_files());
        return 0;
    }
    add_jobs();
    benchmark::Initialize(&argc, argv);
    scratch_tree tree(mixed_sizes());
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
