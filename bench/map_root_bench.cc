// map_root_bench.cc: how root maps grow: adding n records is linear, and a
// path goes past each of them once.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <tovan/chkalloc.h>
#include <tovan/map_root.h>
#include <string>

namespace {

constexpr int type_of_roots = 3;

// Records stay for the process: each round adds names of its own.
void add_records(int count) {
    static int round = 0;
    std::string start = "/net/" + std::to_string(round++) + "/file.system.";
    for (int i = 0; i < count; ++i) {
        std::string from = start + std::to_string(i);
        add_map(type_of_roots, savestr(from.c_str()),
                static_cast<int>(from.size()), savestr("/mnt"));
    }
}

void add_n(benchmark::State &state) {
    int count = static_cast<int>(state.range(0));
    for (auto _ : state)
        add_records(count);
    state.SetItemsProcessed(state.iterations() * count);
}

void map_past_n(benchmark::State &state) {
    static int present = 0;
    load_rootmaps();
    int count = static_cast<int>(state.range(0));
    add_records(count - present);
    present = count;
    dy output;
    dynew(&output, 0);
    for (auto _ : state) {
        dytruncate(&output, 0);
        map_root("/net/0/file.system/x/y", &output);
        benchmark::DoNotOptimize(output.buffer);
    }
    free(output.buffer);
}

// A path that fits none, before anything else adds records.
BENCHMARK(map_past_n)
    ->Name("law/map_root_past_records")
    ->Arg(25000)
    ->Arg(50000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

BENCHMARK(add_n)
    ->Name("law/add_map")
    ->Arg(25000)
    ->Arg(50000)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    setenv("MORVA", "/nonexistent", 1);
    setenv("HOME_MORVA", "/nonexistent", 1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
