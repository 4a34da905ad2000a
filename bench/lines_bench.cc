// lines_bench.cc: job b, the lines of a 200 MB file, beside getline(3),
// std::getline, fgets(3), and a bare loop of read, memchr and memcpy. The
// stream readers read the same file.
#include "law.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/getdylin.h>
#include <unistd.h>
#include <fstream>
#include <random>
#include <string>

namespace {

constexpr size_t file_size = 200 << 20;

// A file of lines of 20 to 160 characters, gone when the program ends.
class line_file {
  public:
    explicit line_file(size_t size) {
        descriptor_ = mkstemp(name_);
        std::mt19937 random(2);
        std::string text;
        while (text.size() < size) {
            text.append(20 + random() % 141,
                        static_cast<char>('a' + random() % 26));
            text += '\n';
        }
        text.resize(size);
        write_all(text);
    }
    ~line_file() {
        close(descriptor_);
        unlink(name_);
    }
    const char *name() const {
        return name_;
    }

  private:
    void write_all(const std::string &text) {
        for (size_t at = 0; at < text.size();) {
            ssize_t put =
                write(descriptor_, text.data() + at, text.size() - at);
            if (put <= 0) abort();
            at += static_cast<size_t>(put);
        }
    }

    char name_[32] = "/tmp/lines-bench-XXXXXX";
    int descriptor_;
};

const char *file_name() {
    static const line_file file(file_size);
    return file.name();
}

void finish(benchmark::State &state, int64_t lines) {
    state.counters["lines"] = static_cast<double>(lines);
}

void by_descriptor(benchmark::State &state, const char *name) {
    int64_t lines = 0;
    for (auto _ : state) {
        int descriptor = open(name, O_RDONLY);
        rdy *reader = rdy_init(descriptor);
        dy line{};
        for (lines = 0; rdy_getline(reader, &line, 0) != nullptr; lines++)
            benchmark::DoNotOptimize(line.length);
        free(line.buffer);
        free(reader);
        close(descriptor);
    }
    finish(state, lines);
}

void by_stream(benchmark::State &state, const char *name) {
    int64_t lines = 0;
    for (auto _ : state) {
        FILE *stream = fopen(name, "r");
        dy line{};
        for (lines = 0; getdyline(stream, &line, 0) != nullptr; lines++)
            benchmark::DoNotOptimize(line.length);
        free(line.buffer);
        fclose(stream);
    }
    finish(state, lines);
}

void ours(benchmark::State &state) {
    by_descriptor(state, file_name());
}

void ours_stream(benchmark::State &state) {
    by_stream(state, file_name());
}

void c_getline(benchmark::State &state) {
    int64_t lines = 0;
    for (auto _ : state) {
        FILE *stream = fopen(file_name(), "r");
        char *line = nullptr;
        size_t size = 0;
        for (lines = 0; getline(&line, &size, stream) != -1; lines++)
            benchmark::DoNotOptimize(line);
        free(line);
        fclose(stream);
    }
    finish(state, lines);
}

void std_getline(benchmark::State &state) {
    int64_t lines = 0;
    for (auto _ : state) {
        std::ifstream stream(file_name());
        std::string line;
        for (lines = 0; std::getline(stream, line); lines++)
            benchmark::DoNotOptimize(line.data());
    }
    finish(state, lines);
}

void c_fgets(benchmark::State &state) {
    int64_t lines = 0;
    for (auto _ : state) {
        FILE *stream = fopen(file_name(), "r");
        char line[4096];
        for (lines = 0; fgets(line, sizeof line, stream) != nullptr; lines++)
            benchmark::DoNotOptimize(line[0]);
        fclose(stream);
    }
    finish(state, lines);
}

// What must be done in any case: 4096 bytes a read, the newline found, the
// line copied.
void bare_loop(benchmark::State &state) {
    int64_t lines = 0;
    for (auto _ : state) {
        int descriptor = open(file_name(), O_RDONLY);
        char block[4096];
        char line[8192];
        size_t held = 0;
        lines = 0;
        for (ssize_t got; (got = read(descriptor, block, sizeof block)) > 0;) {
            const char *at = block;
            const char *end = block + got;
            while (at < end) {
                auto left = static_cast<size_t>(end - at);
                const char *newline =
                    static_cast<const char *>(memchr(at, '\n', left));
                size_t n = newline ? static_cast<size_t>(newline - at) : left;
                memcpy(line + held, at, n);
                held += n;
                at += n + (newline != nullptr);
                if (newline == nullptr) break;
                line[held] = '\0';
                benchmark::DoNotOptimize(line[0]);
                held = 0;
                lines++;
            }
        }
        close(descriptor);
    }
    finish(state, lines);
}

void file_of_n_bytes(benchmark::State &state) {
    line_file file(static_cast<size_t>(state.range(0)));
    by_descriptor(state, file.name());
}

void stream_of_n_bytes(benchmark::State &state) {
    line_file file(static_cast<size_t>(state.range(0)));
    by_stream(state, file.name());
}

// A file of one line of n NULs.
class long_line {
  public:
    explicit long_line(int64_t n) {
        int descriptor = mkstemp(name_);
        if (ftruncate(descriptor, n) != 0) abort();
        close(descriptor);
    }
    ~long_line() {
        unlink(name_);
    }
    const char *name() const {
        return name_;
    }

  private:
    char name_[32] = "/tmp/lines-bench-XXXXXX";
};

void line_of_n_bytes(benchmark::State &state) {
    by_descriptor(state, long_line(state.range(0)).name());
}

void stream_line_of_n_bytes(benchmark::State &state) {
    by_stream(state, long_line(state.range(0)).name());
}

BENCHMARK(ours)->Name("b/lines/ours");
BENCHMARK(bare_loop)->Name("b/lines/bare_loop");
BENCHMARK(c_getline)->Name("b/lines/getline");
BENCHMARK(std_getline)->Name("b/lines/std_getline");
BENCHMARK(c_fgets)->Name("b/lines/fgets");
BENCHMARK(ours_stream)->Name("b/stream_lines/ours");
BENCHMARK(c_getline)->Name("b/stream_lines/getline");
BENCHMARK(c_fgets)->Name("b/stream_lines/fgets");

LAW(file_of_n_bytes, "lines", 10 << 20);
LAW(stream_of_n_bytes, "stream_lines", 10 << 20);
LAW(line_of_n_bytes, "one_line", 25 << 20);
LAW(stream_line_of_n_bytes, "one_stream_line", 25 << 20);

}  // namespace

BENCHMARK_MAIN();
