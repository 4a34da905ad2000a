// ddt_bench.cc: what a trace point costs that is off, beside a call of a
// function that does nothing.
#include <benchmark/benchmark.h>
#include <string.h>
#include <tovan/ddt.h>

namespace {

constexpr int points = 1000;  // a round

ddt package() {
    ddt made{};
    made.level = 65535;
    memcpy(made.name, "bench", 5);
    made.name_length = 5;
    made.initialiser = ddt_level_init;
    return made;
}

void trace_point_off(benchmark::State &state) {
    static ddt off = package();
    ddt_setup();
    int traced = 0;
    for (auto _ : state) {
        for (int i = 0; i < points; i++)
            traced += ddt_trace(&off, 1, 1);
    }
    benchmark::DoNotOptimize(traced);
}
BENCHMARK(trace_point_off)->Name("trace/1000-points-off/ours");

[[gnu::noipa]] int nothing(ddt *, unsigned, int) {
    return 0;
}

void empty_call(benchmark::State &state) {
    static ddt off = package();
    int traced = 0;
    for (auto _ : state) {
        for (int i = 0; i < points; i++)
            traced += nothing(&off, 1, 1);
    }
    benchmark::DoNotOptimize(traced);
}
BENCHMARK(empty_call)->Name("trace/1000-points-off/empty-call");

}  // namespace

BENCHMARK_MAIN();
