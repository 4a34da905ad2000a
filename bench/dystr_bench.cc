// dystr_bench.cc: job a, growing strings, beside std::string (appends inlined
// and behind a call) and GLib's GString; laws of growth of strings, pointer
// arrays and the string cache.
#include "law.h"

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <random>
#include <string>
#include <vector>
#ifdef TOVAN_PEER_GLIB
#include <glib.h>
#endif

namespace {

// One append function a peer, all with the same jobs.
struct ours {
    dy string{};
    ours() {
        dynew(&string, 0);
    }
    ~ours() {
        free(string.buffer);
    }
    void add(char c) {
        dyaddc(&string, c);
    }
    void add(const char *bytes, size_t n) {
        dynstr(&string, bytes, static_cast<int>(n));
    }
    const char *text() const {
        return string.buffer;
    }
};

struct standard {
    std::string string;
    void add(char c) {
        string += c;
    }
    void add(const char *bytes, size_t n) {
        string.append(bytes, n);
    }
    const char *text() const {
        return string.c_str();
    }
};

struct standard_called : standard {
    [[gnu::noinline]] void add(char c) {
        string += c;
    }
    [[gnu::noinline]] void add(const char *bytes, size_t n) {
        string.append(bytes, n);
    }
};

#ifdef TOVAN_PEER_GLIB
struct glib {
    GString *string = g_string_new(nullptr);
    glib() = default;
    glib(const glib &) = delete;
    glib &operator=(const glib &) = delete;
    ~glib() {
        g_string_free(string, TRUE);
    }
    void add(char c) {
        g_string_append_c(string, c);
    }
    void add(const char *bytes, size_t n) {
        g_string_append_len(string, bytes, static_cast<gssize>(n));
    }
    const char *text() const {
        return string->str;
    }
};
#endif

// Lengths from 1 to 15, and bytes to take them from.
constexpr char letters[] =
    "the quick brown fox jumps over the lazy dog 0123456";

const std::vector<unsigned char> &lengths() {
    static const std::vector<unsigned char> all = [] {
        std::mt19937 random(1);
        std::vector<unsigned char> made(1000000);
        for (unsigned char &length : made)
            length = static_cast<unsigned char>(1 + random() % 15);
        return made;
    }();
    return all;
}

template <typename String>
void one_character_at_a_time(benchmark::State &state) {
    for (auto _ : state) {
        String string;
        for (int i = 0; i < 10000000; i++)
            string.add(static_cast<char>('a' + i % 16));
        benchmark::DoNotOptimize(string.text());
    }
}

template <typename String>
void short_pieces(benchmark::State &state) {
    const auto &pieces = lengths();
    for (auto _ : state) {
        String string;
        for (unsigned char length : pieces)
            string.add(letters, length);
        benchmark::DoNotOptimize(string.text());
    }
}

template <typename String>
void strings_of_eight_pieces(benchmark::State &state) {
    const auto &pieces = lengths();
    for (auto _ : state) {
        for (size_t i = 0; i < 1000000; i++) {
            String string;
            for (size_t k = 0; k < 8; k++)
                string.add(letters + k, pieces[(i + k * 7919) % 1000000]);
            benchmark::DoNotOptimize(string.text());
        }
    }
}

// Records of the pool, as the library's own code takes them.
void pooled_strings_of_eight_pieces(benchmark::State &state) {
    const auto &pieces = lengths();
    for (auto _ : state) {
        for (size_t i = 0; i < 1000000; i++) {
            dy *string = dyalloc();
            for (size_t k = 0; k < 8; k++)
                dynstr(string, letters + k, pieces[(i + k * 7919) % 1000000]);
            benchmark::DoNotOptimize(string->buffer);
            dyfree(string);
        }
    }
}

template <typename String>
void grow_in_turn(size_t count, size_t size) {
    std::vector<String> strings(count);
    const auto &pieces = lengths();
    size_t done = 0;
    for (size_t i = 0; done < size; i++) {
        size_t length = pieces[i % pieces.size()];
        for (String &string : strings)
            string.add(letters, length);
        done += length;
    }
    benchmark::DoNotOptimize(strings.data());
}

template <typename String>
void large_strings_in_turn(benchmark::State &state) {
    for (auto _ : state)
        grow_in_turn<String>(16, 4 << 20);
}

// A large block that was released makes the allocator keep others to itself,
// so that growing copies.
template <typename String>
void strings_in_turn_after_a_release(benchmark::State &state) {
    for (auto _ : state) {
        char *block = static_cast<char *>(malloc(30 << 20));
        benchmark::DoNotOptimize(block);
        free(block);
        grow_in_turn<String>(64, 1 << 20);
    }
}

void one_string(benchmark::State &state) {
    for (auto _ : state) {
        ours string;
        for (int64_t n = 0; n < state.range(0); n += 50)
            string.add(letters, 50);
    }
}

void two_strings_in_turn(benchmark::State &state) {
    for (auto _ : state)
        grow_in_turn<ours>(2, static_cast<size_t>(state.range(0)));
}

void inserts_at_the_front(benchmark::State &state) {
    ours string;
    std::string text(static_cast<size_t>(state.range(0)), 'x');
    string.add(text.data(), text.size());
    for (auto _ : state) {
        dyinsert(&string.string, 0, "some bytes", 10);
        dycut(&string.string, string.string.buffer, string.string.buffer + 10);
    }
}

void pointers(benchmark::State &state) {
    for (auto _ : state) {
        dyp array{};
        for (int64_t i = 0; i < state.range(0); i++)
            dypadd(&array, letters);
        benchmark::DoNotOptimize(array.array);
        free(array.array);
    }
}

// The cache only grows: each step adds to what the steps before left, as a
// long-running tool would.
void cached_strings(benchmark::State &state) {
    const auto &pieces = lengths();
    for (auto _ : state) {
        for (int64_t i = 0; i < state.range(0); i++)
            dycache(letters, pieces[static_cast<size_t>(i) % pieces.size()]);
    }
}

#ifdef TOVAN_PEER_GLIB
#define WITH_GLIB(job, name) BENCHMARK(job<glib>)->Name(name "/glib")
#else
#define WITH_GLIB(job, name) static_assert(true)
#endif

#define BESIDE_PEERS(job, name)                                \
    BENCHMARK(job<ours>)->Name(name "/ours");                  \
    BENCHMARK(job<standard>)->Name(name "/std_inlined");       \
    BENCHMARK(job<standard_called>)->Name(name "/std_called"); \
    WITH_GLIB(job, name)

BESIDE_PEERS(one_character_at_a_time, "a1/char10m");
BESIDE_PEERS(short_pieces, "a2/short1m");
BENCHMARK(pooled_strings_of_eight_pieces)->Name("a3/build/ours");
BENCHMARK(strings_of_eight_pieces<standard>)->Name("a3/build/std_inlined");
BENCHMARK(strings_of_eight_pieces<standard_called>)
    ->Name("a3/build/std_called");
WITH_GLIB(strings_of_eight_pieces, "a3/build");
BESIDE_PEERS(large_strings_in_turn, "a4/16x4MB");
BESIDE_PEERS(strings_in_turn_after_a_release, "a5/64x1MB");

// Below 32 MB: from there on the allocator maps fresh pages for each block.
LAW(one_string, "string", 1 << 22);
LAW(two_strings_in_turn, "strings_in_turn", 1 << 21);
LAW(inserts_at_the_front, "insert_and_cut", 1 << 20);
LAW(pointers, "pointers", 1 << 19);
LAW(cached_strings, "cache", 1 << 19)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
