// sfixfile_bench.cc: job f: 50 MB of text with 500 names replaced, beside
// what else replaces names, and the laws of the dictionary.
#include "names_text.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/errexit.h>
#include <tovan/sfdict.h>
#include <tovan/sfixfile.h>
#include <unistd.h>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

using bench::name_count;
using bench::name_of;
using bench::names_script;
using bench::text_of;
using bench::value_of;

namespace {

constexpr size_t large = 50000000;
constexpr size_t small = 5000000;  // for what takes seconds a megabyte

// Files of the run, removed at its end.
class workplace {
  public:
    workplace() {
        char name[] = "/tmp/sfixfile-bench-XXXXXX";
        folder_ = mkdtemp(name);
    }

    ~workplace() {
        for (const std::string &file : files_)
            unlink(file.c_str());
        rmdir(folder_.c_str());
    }

    // The path of a file with this content, made at the first call.
    std::string file(const std::string &name,
                     const std::function<std::string()> &content) {
        std::string path = folder_ + "/" + name;
        if (access(path.c_str(), F_OK) == 0) return path;
        std::ofstream(path) << content();
        files_.push_back(path);
        return path;
    }

  private:
    std::string folder_;
    std::vector<std::string> files_;
};

workplace files;

std::string text_file(size_t size) {
    return files.file("text" + std::to_string(size),
                      [size] { return text_of(size, "@", "@"); });
}

FILE *nowhere() {
    static FILE *stream = [] {
        FILE *opened = fopen("/dev/null", "w");
        setvbuf(opened, nullptr, _IOFBF, 65536);
        return opened;
    }();
    return stream;
}

void write_line(const char *text, int length) {
    fwrite_unlocked(text, 1, static_cast<size_t>(length), nowhere());
}

void define(int count) {
    for (int i = 0; i < count; ++i)
        sf_dictext(name_of(i).c_str(), value_of(i).c_str(), "bench", 1, 0);
}

void undefine(int count) {
    for (int i = 0; i < count; ++i)
        sf_dictext(name_of(i).c_str(), nullptr, "bench", 1, 0);
}

void fix_ours(benchmark::State &state, size_t size) {
    progname = "bench";
    std::string path = text_file(size);
    define(name_count);
    setsfwrite(write_line);
    for (auto _ : state) {
        if (sfixfile(path.c_str(), 0) != 0) abort();
    }
    undefine(name_count);
}

// What the job costs at least: each byte searched once, each name hashed
// once, each run copied once to a block that is written.
class bare_loop {
  public:
    bare_loop() : out_(open("/dev/null", O_WRONLY)) {
        for (int i = 0; i < name_count; ++i) {
            std::string name = name_of(i);
            size_t place = hash(name.data(), name.size());
            while (!values_[place % places].empty())
                ++place;
            names_[place % places] = name;
            values_[place % places] = value_of(i);
        }
    }

    ~bare_loop() {
        close(out_);
    }

    void run(const std::string &path) {
        int in = open(path.c_str(), O_RDONLY);
        std::string block(1 << 18, '\0');
        size_t kept = 0;
        for (ssize_t n;
             (n = read(in, block.data() + kept, block.size() - kept)) > 0;) {
            size_t length = kept + static_cast<size_t>(n);
            const char *end =
                static_cast<const char *>(memrchr(block.data(), '\n', length)) +
                1;
            replace(block.data(), end);
            kept = static_cast<size_t>(block.data() + length - end);
            memmove(block.data(), end, kept);
        }
        close(in);
        flush();
    }

  private:
    static constexpr size_t places = 2048;

    static size_t hash(const char *name, size_t n) {
        size_t sum = n;
        for (size_t i = 0; i < n; ++i)
            sum = (sum ^ static_cast<unsigned char>(name[i])) * 0x9e3779b1;
        return sum ^ sum >> 15;
    }

    const std::string &value(const char *name, size_t n) const {
        size_t place = hash(name, n);
        while (names_[place % places].compare(0, std::string::npos, name, n))
            ++place;
        return values_[place % places];
    }

    void replace(const char *next, const char *end) {
        while (next < end) {
            auto rest = static_cast<size_t>(end - next);
            const auto *at = static_cast<const char *>(memchr(next, '@', rest));
            if (at == nullptr) return append(next, rest);
            append(next, static_cast<size_t>(at - next));
            const auto *close = static_cast<const char *>(
                memchr(at + 1, '@', static_cast<size_t>(end - at - 1)));
            const std::string &found =
                value(at + 1, static_cast<size_t>(close - at - 1));
            append(found.data(), found.size());
            next = close + 1;
        }
    }

    void append(const char *text, size_t n) {
        if (length_ + n > sizeof block_) flush();
        if (n > sizeof block_) {
            if (write(out_, text, n) < 0) abort();
            return;
        }
        memcpy(block_ + length_, text, n);
        length_ += n;
    }

    void flush() {
        if (write(out_, block_, length_) < 0) abort();
        length_ = 0;
    }

    int out_;
    size_t length_ = 0;
    char block_[65536];
    std::string names_[places];
    std::string values_[places];
};

void fix_bare(benchmark::State &state) {
    std::string path = text_file(large);
    auto loop = std::make_unique<bare_loop>();
    for (auto _ : state)
        loop->run(path);
}

// A whole program, its output thrown away.
void fix_by_program(benchmark::State &state, const char *program,
                    const std::function<std::string()> &command) {
    std::string found = std::string("command -v ") + program + " >/dev/null";
    if (system(found.c_str()) != 0) {
        state.SkipWithError("not installed");
        return;
    }
    std::string line = command() + " >/dev/null";
    for (auto _ : state) {
        if (system(line.c_str()) != 0) abort();
    }
}

std::string awk_command() {
    std::string dictionary =
        files.file("awk.dict", [] { return names_script("", " ", ""); });
    std::string program = files.file("awk.script", [dictionary] {
        return "BEGIN { while ((getline < \"" + dictionary +
               "\") > 0) value[$1] = $2; FS = \"@\" }\n"
               "NF < 3 { print; next }\n"
               "{ line = $1\n"
               "  for (i = 2; i < NF; i += 2) line = line value[$i] $(i + 1)\n"
               "  print line }\n";
    });
    return "awk -f " + program + " " + text_file(large);
}

std::string perl_command() {
    std::string program = files.file("perl.script", [] {
        return "my %value = (" + names_script("'", "', '", "',") +
               ");\nwhile (<>) { s/\\@(\\w+)\\@/$value{$1}/g; print; }\n";
    });
    return "perl " + program + " " + text_file(large);
}

std::string m4_command() {
    std::string definitions = files.file(
        "m4.dict", [] { return names_script("define(`", "', `", "')dnl"); });
    std::string text =
        files.file("m4.text", [] { return text_of(large, "", ""); });
    return "m4 " + definitions + " " + text;
}

std::string sed_command() {
    std::string program = files.file(
        "sed.script", [] { return names_script("s,@", "@,", ",g"); });
    return "sed -f " + program + " " + text_file(small);
}

BENCHMARK_CAPTURE(fix_ours, large, large)
    ->Name("f/50MB/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(fix_bare)->Name("f/50MB/bare-loop")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fix_by_program, awk, "awk", awk_command)
    ->Name("f/50MB/awk")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(fix_by_program, perl, "perl", perl_command)
    ->Name("f/50MB/perl")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(fix_by_program, m4, "m4", m4_command)
    ->Name("f/50MB/m4")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(fix_ours, small, small)
    ->Name("f/5MB/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fix_by_program, sed, "sed", sed_command)
    ->Name("f/5MB/sed")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

// O(1) a definition: the quotient of neighbours is below 2.1.
void definitions(benchmark::State &state) {
    auto count = static_cast<int>(state.range(0));
    std::string path = files.file("dict" + std::to_string(count), [count] {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += name_of(i) + " " + value_of(i) + "\n";
        return all;
    });
    for (auto _ : state) {
        if (sfdict(path.c_str()) != 0) abort();
        state.PauseTiming();
        undefine(count);
        state.ResumeTiming();
    }
}

// O(1): the quotient of neighbours is near 1, but for caches.
void look_ups(benchmark::State &state) {
    auto count = static_cast<int>(state.range(0));
    define(count);
    std::mt19937 random(3);
    std::vector<std::string> wanted;
    for (int i = 0; i < 4096; ++i)
        wanted.push_back(
            name_of(static_cast<int>(random() % static_cast<unsigned>(count))));
    for (auto _ : state) {
        for (const std::string &name : wanted)
            benchmark::DoNotOptimize(sf_valvar(
                name.data(), static_cast<int>(name.size()), nullptr, nullptr));
    }
    undefine(count);
}

// O(input + output).
void substitutions(benchmark::State &state) {
    define(name_count);
    std::string text = text_of(static_cast<size_t>(state.range(0)), "@", "@");
    dy output{};
    for (auto _ : state)
        sf_proc(text.c_str(), &output, 1, nullptr, "bench", 1);
    free(output.buffer);
    undefine(name_count);
}

// O(n log n): below 2.4.
void listings(benchmark::State &state) {
    auto count = static_cast<int>(state.range(0));
    define(count);
    FILE *kept = stdout;
    stdout = nowhere();
    for (auto _ : state)
        sf_putdict(0);
    stdout = kept;
    undefine(count);
}

BENCHMARK(definitions)
    ->Name("law/dictionary-read")
    ->Arg(25000)
    ->Arg(50000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(look_ups)
    ->Name("law/dictionary-look-up")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(substitutions)
    ->Name("law/substitution")
    ->Arg(1000000)
    ->Arg(2000000)
    ->Arg(4000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(listings)
    ->Name("law/dictionary-list")
    ->Arg(25000)
    ->Arg(50000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
