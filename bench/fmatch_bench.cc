// fmatch_bench.cc: job d, twenty file-name patterns over the same names,
// beside fnmatch(3) and a loop that retries the last star only.
#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/fmatch.h>
#include <random>
#include <string>
#include <vector>

namespace {

// A pattern, and how fnmatch writes it.
struct job {
    const char *pattern;
    const char *for_fnmatch;
};

constexpr job plain_jobs[] = {
    {"Makefile", "Makefile"},   {"*.c", "*.c"},
    {"lib*", "lib*"},           {"*.[ch]", "*.[ch]"},
    {"[a-m]*.h", "[a-m]*.h"},   {"test_??.cc", "test_??.cc"},
    {"*.tar.gz", "*.tar.gz"},   {"[^.]*", "[^.]*"},
    {"*_test.cc", "*_test.cc"}, {"main.?", "main.?"},
};

constexpr job brace_jobs[] = {
    {"*.{c,h,cc}", "*.@(c|h|cc)"},
    {"{lib,src}*", "@(lib|src)*"},
    {"lib{util,core,tovan}.so", "lib@(util|core|tovan).so"},
    {"{Makefile,*.mk}", "@(Makefile|*.mk)"},
    {"*.{tar.{gz,bz2},zip}", "*.@(tar.@(gz|bz2)|zip)"},
};

constexpr job star_jobs[] = {
    {"*a*e*", "*a*e*"},
    {"*lib*.so*", "*lib*.so*"},
    {"*-*-*.*", "*-*-*.*"},
    {"s*r*c*.c", "s*r*c*.c"},
    {"*[0-9]*.[0-9]*", "*[0-9]*.[0-9]*"},
};

// As long as in a source tree: 16 characters on average.
const std::vector<std::string> &names() {
    static const std::vector<std::string> all = [] {
        const char *const stems[] = {"main", "lib",   "test",  "source",
                                     "a",    "parse", "util",  "archive",
                                     "core", "tovan", "index", "Makefile"};
        const char *const ends[] = {".c",   ".h",      ".cc",     "_test.cc",
                                    ".so",  ".so.1.2", ".tar.gz", ".mk",
                                    ".zip", "",        "-1.2.3",  "-x86-64.o"};
        std::mt19937 random(1);
        std::vector<std::string> made = {"Makefile", "main.c", "test_01.cc",
                                         "libtovan.so", "x.tar.bz2"};
        while (made.size() < 64) {
            std::string name = stems[random() % std::size(stems)];
            for (size_t n = random() % 4; n > 0; --n) {
                name += "_-"[random() % 2];
                name += stems[random() % std::size(stems)];
            }
            made.push_back(name + ends[random() % std::size(ends)]);
        }
        return made;
    }();
    return all;
}

// What one would write instead: the last star is tried again, alternatives
// by recursion.
bool loop_class(const char **pattern, char c) {
    const char *p = *pattern + 1;
    bool negated = *p == '^', found = false;
    if (negated) ++p;
    for (; *p != '\0' && *p != ']'; ++p) {
        if (p[1] == '-' && p[2] != ']' && p[2] != '\0') {
            found |= *p <= c && c <= p[2];
            p += 2;
        } else {
            found |= *p == c;
        }
    }
    *pattern = p;
    return found != negated;
}

bool loop_match(const char *p, const char *f, const char *rest);

bool loop_brace(const char *p, const char *f) {
    int depth = 0;
    const char *close = p;
    for (;; ++close) {
        if (*close == '{') ++depth;
        if (*close == '}' && --depth == 0) break;
    }
    for (const char *from = p + 1; from < close;) {
        const char *to = from;
        for (int inner = 0; to < close && (inner > 0 || *to != ','); ++to)
            inner += (*to == '{') - (*to == '}');
        std::string one(from, to);
        if (loop_match(one.c_str(), f, close + 1)) return true;
        from = to + 1;
    }
    return false;
}

bool loop_match(const char *p, const char *f, const char *rest) {
    const char *star = nullptr, *again = nullptr;
    for (;;) {
        if (*p == '\0' && rest != nullptr) {
            p = rest;
            rest = nullptr;
        }
        if (*p == '*') {
            star = ++p;
            again = f;
            continue;
        }
        if (*p == '{' && loop_brace(p, f)) return true;
        if (*p == '\0' && *f == '\0') return true;
        bool fits = *f != '\0' && *p != '{' &&
                    (*p == '?' || (*p == '[' ? loop_class(&p, *f) : *p == *f));
        if (fits) {
            ++p;
            ++f;
        } else if (star != nullptr && *again != '\0') {
            p = star;
            f = ++again;
        } else {
            return false;
        }
    }
}

bool by_ours(const job &each, const std::string &name) {
    return fmatch(name.c_str(), each.pattern) != 0;
}

bool by_fnmatch(const job &each, const std::string &name) {
    return fnmatch(each.for_fnmatch, name.c_str(), FNM_EXTMATCH) == 0;
}

bool by_loop(const job &each, const std::string &name) {
    return loop_match(each.pattern, name.c_str(), nullptr);
}

template <size_t count>
void check(const job (&jobs)[count]) {
    for (const job &each : jobs) {
        for (const std::string &name : names()) {
            if (by_ours(each, name) != by_fnmatch(each, name) ||
                by_ours(each, name) != by_loop(each, name)) {
                fprintf(stderr, "%s %s\n", each.pattern, name.c_str());
                abort();
            }
        }
    }
}

// Time and items are those of single matches.
template <size_t count, typename Matcher>
void run(benchmark::State &state, const job (&jobs)[count], Matcher matches) {
    check(jobs);
    for (auto _ : state) {
        for (const job &each : jobs) {
            for (const std::string &name : names())
                benchmark::DoNotOptimize(matches(each, name));
        }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<int64_t>(count * names().size()));
}

#define TOVAN_JOB(kind, jobs)                                \
    BENCHMARK_CAPTURE(run, ours_##jobs, jobs, by_ours)       \
        ->Name("d/" kind "/ours");                           \
    BENCHMARK_CAPTURE(run, fnmatch_##jobs, jobs, by_fnmatch) \
        ->Name("d/" kind "/fnmatch");                        \
    BENCHMARK_CAPTURE(run, loop_##jobs, jobs, by_loop)       \
        ->Name("d/" kind "/one-star-loop")

TOVAN_JOB("plain", plain_jobs);
TOVAN_JOB("braces", brace_jobs);
TOVAN_JOB("stars", star_jobs);

// Each pattern by itself, for the worst of them.
template <size_t count>
void add_single(const job (&jobs)[count]) {
    for (const job &each : jobs) {
        const job single[] = {each};
        for (bool ours : {true, false}) {
            std::string name = std::string("d-single/") + each.pattern +
                               (ours ? "/ours" : "/fnmatch");
            benchmark::RegisterBenchmark(
                name.c_str(), [single, ours](benchmark::State &state) {
                    run(state, single, ours ? by_ours : by_fnmatch);
                });
        }
    }
}

// Subjects of n letters "a".
const job hard_jobs[] = {
    {"*a*a*a*a*b", "*a*a*a*a*b"},
    {"a*a*a*ba*a", "a*a*a*ba*a"},
    {"*[ab]*[ab]*c?", "*[ab]*[ab]*c?"},
};

void hard(benchmark::State &state, const job &each, bool ours) {
    std::string name(10000, 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(ours ? by_ours(each, name)
                                      : by_fnmatch(each, name));
}

void add_hard() {
    for (const job &each : hard_jobs) {
        for (bool ours : {true, false}) {
            std::string name = std::string("d-pathological/") + each.pattern +
                               (ours ? "/ours" : "/fnmatch");
            benchmark::RegisterBenchmark(
                name.c_str(), [&each, ours](benchmark::State &state) {
                    hard(state, each, ours);
                });
        }
    }
}

// O(pattern x subject): the quotient of neighbours is below 2.2.
void growing(benchmark::State &state, const char *pattern) {
    std::string name(static_cast<size_t>(state.range(0)), 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(fmatch(name.c_str(), pattern));
}

#define TOVAN_LAW(which, pattern)              \
    BENCHMARK_CAPTURE(growing, which, pattern) \
        ->Name("law/fmatch-" #which)           \
        ->Arg(100000)                          \
        ->Arg(200000)                          \
        ->Arg(400000)                          \
        ->Unit(benchmark::kMicrosecond)

TOVAN_LAW(stars, "*a*aab*a?");
TOVAN_LAW(braces, "*{a,aa}{a,aa}{a,aa}b");
TOVAN_LAW(braces_and_stars, "*{a,b}*{a*,b}*{a,aa}b{c,d}");
TOVAN_LAW(nested, "{a*,{a*,{*a,*{aa,a}}}}b");

}  // namespace

int main(int argc, char **argv) {
    add_single(plain_jobs);
    add_single(brace_jobs);
    add_single(star_jobs);
    add_hard();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
