// fastout_bench.cc: job m: 10 million typed items to blocks of 2048 bytes,
// beside what a tool would use instead. Everything goes to /dev/null.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/fastout.h>
#include <unistd.h>
#include <fstream>

namespace {

constexpr int rounds = 2000000;  // of five items each

void typed_items_ours(benchmark::State &state) {
    for (auto _ : state) {
        fo *out = fo_init(open("/dev/null", O_WRONLY), nullptr);
        for (int i = 0; i < rounds; i++)
            fo_put(out, 1, "name", 2, '=', 6, i - rounds / 2, 3,
                   static_cast<unsigned>(i), 4, "text\n", 5, 0);
        fo_flush(out);
        close(out->descriptor);
        free(out);
    }
}
BENCHMARK(typed_items_ours)
    ->Name("m/typed-items/ours")
    ->Unit(benchmark::kMillisecond);

void typed_items_stdio(benchmark::State &state) {
    for (auto _ : state) {
        FILE *out = fopen("/dev/null", "w");
        char buffer[2048];
        setvbuf(out, buffer, _IOFBF, sizeof buffer);
        for (int i = 0; i < rounds; i++)
            fprintf(out, "%s%c%d%o%.*s", "name", '=', i - rounds / 2,
                    static_cast<unsigned>(i), 5, "text\n");
        fclose(out);
    }
}
BENCHMARK(typed_items_stdio)
    ->Name("m/typed-items/stdio")
    ->Unit(benchmark::kMillisecond);

void typed_items_ostream(benchmark::State &state) {
    for (auto _ : state) {
        char buffer[2048];
        std::ofstream out;
        out.rdbuf()->pubsetbuf(buffer, sizeof buffer);
        out.open("/dev/null");
        for (int i = 0; i < rounds; i++) {
            out << "name" << '=' << i - rounds / 2 << std::oct
                << static_cast<unsigned>(i) << std::dec;
            out.write("text\n", 5);
        }
    }
}
BENCHMARK(typed_items_ostream)
    ->Name("m/typed-items/ostream")
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
