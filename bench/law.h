// law.h: how the cost of a job grows.
#ifndef TOVAN_BENCH_LAW_H
#define TOVAN_BENCH_LAW_H

#include <benchmark/benchmark.h>

// The job at `first`, twice and four times as much.
#define LAW(job, name, first) \
    BENCHMARK(job)            \
        ->Name("law/" name)   \
        ->Arg(first)          \
        ->Arg(2 * first)      \
        ->Arg(4 * first)

#endif
