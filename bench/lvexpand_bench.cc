// lvexpand_bench.cc: expanding texts.
//
// expand/names500/50MB    the text of job f, from file to file; peers are
//                         whole processes that do the same in one pass with a
//                         table of the names; what they write is compared
//                         first, and thrown away while the time is taken
// expand/names500/1MB     the same, for one with a substitution a name
// expand/calls/1MB        a call a line
// law/...                 nested calls and subscripts, long texts
#include "names_text.h"
#include "support/heap_image.h"

#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/lvexpand.h>
#include <tovan/lvget.h>
#include <unistd.h>
#include <string>

namespace {

constexpr size_t megabyte = 1 << 20;

void write_file(const std::string &path, const std::string &content) {
    FILE *file = fopen(path.c_str(), "w");
    fwrite(content.data(), 1, content.size(), file);
    fclose(file);
}

std::string text_of(size_t size) {
    return bench::text_of(size, "@", "/");
}

// A directory with the variables, the texts and the peers' programs.
struct workshop {
    std::string directory;

    workshop() {
        char name[] = "/tmp/lvexpand-bench-XXXXXX";
        directory = mkdtemp(name);
        std::vector<support::variable> variables = {{"X[a]", "a"}};
        for (int i = 0; i < bench::name_count; i++)
            variables.push_back({bench::name_of(i), bench::value_of(i)});
        write_file(path("heap"), support::heap_of(variables));
        write_file(path("table"), bench::names_script("", " ", ""));
        write_file(path("m4"), bench::names_script("define(`", "',`", "')dnl"));
        write_file(path("sed"), bench::names_script("s,@", "/,", "/,g"));
        std::string text = text_of(50 * megabyte);
        write_file(path("50MB"), text);
        std::erase(text, '@');
        write_file(path("50MB.m4"), text);
        write_file(path("1MB"), text_of(megabyte));
        lvget(0, nullptr, 0, path("heap").c_str(), nullptr);
    }
    ~workshop() {
        if (system(("rm -r " + directory).c_str()) != 0) abort();
    }

    std::string path(const std::string &name) const {
        return directory + "/" + name;
    }
};

const workshop &shop() {
    static const workshop one;
    return one;
}

std::string content_of(const std::string &path) {
    FILE *file = fopen(path.c_str(), "r");
    fseek(file, 0, SEEK_END);
    std::string content(static_cast<size_t>(ftell(file)), '\0');
    rewind(file);
    if (fread(content.data(), 1, content.size(), file) != content.size())
        abort();
    fclose(file);
    return content;
}

// As a tool expands a file: line by line.
void expand_file(const std::string &from, const std::string &to) {
    FILE *in = fopen(from.c_str(), "r");
    FILE *out = fopen(to.c_str(), "w");
    char *line = nullptr;
    size_t size = 0;
    dy output;
    dynew(&output, 0);
    for (int number = 1; getline(&line, &size, in) > 0; number++) {
        dytruncate(&output, 0);
        lvexpand(line, &output, "bench", number);
        dyaddc(&output, '\n');
        fwrite(output.buffer, 1, static_cast<size_t>(output.length), out);
    }
    free(line);
    free(output.buffer);
    fclose(in);
    fclose(out);
}

void by_ours(benchmark::State &state, const std::string &text_name) {
    const workshop &here = shop();
    for (auto _ : state)
        expand_file(here.path(text_name), "/dev/null");
}

// `command` reads the text and writes what we write.
void by_command(benchmark::State &state, const std::string &text_name,
                const std::string &command) {
    const workshop &here = shop();
    std::string line = "cd " + here.directory + " && " + command + " >";
    expand_file(here.path(text_name), here.path("ours"));
    bool is_done = system((line + "theirs").c_str()) == 0;
    if (!is_done ||
        content_of(here.path("theirs")) != content_of(here.path("ours"))) {
        state.SkipWithError("another result than ours");
        return;
    }
    line += "/dev/null";
    for (auto _ : state) {
        if (system(line.c_str()) != 0) abort();
    }
}

const char awk_program[] =
    "awk 'NR == FNR { value[$1] = $2; next }"
    " FNR == 1 { FS = \"@\"; $0 = $0 }"
    " NF < 2 { print; next }"
    " { out = $1;"
    "   for (i = 2; i <= NF; i++) {"
    "     end = index($i, \"/\");"
    "     out = out value[substr($i, 1, end - 1)] substr($i, end) }"
    "   print out }' table ";
const char perl_program[] =
    "perl -e 'open T, \"<\", \"table\"; while (<T>) { /(\\S+) (\\S+)/;"
    " $v{$1} = $2 } open F, \"<\", $ARGV[0];"
    " while (<F>) { s/@([A-Za-z_]\\w*)/$v{$1}/g; print }' ";

void calls(benchmark::State &state) {
    shop();
    std::string text;
    while (text.size() < megabyte)
        text += "@(take1st @NAME_7 xxxx) @(empty @NAME_9)\n";
    dy output;
    dynew(&output, 0);
    for (auto _ : state) {
        dytruncate(&output, 0);
        lvexpand(text.c_str(), &output, "bench", 1);
    }
    free(output.buffer);
}

void expand_nested(benchmark::State &state, const char *open,
                   const char *close) {
    shop();
    std::string text;
    for (int64_t i = 0; i < state.range(0); i++)
        text += open;
    text += "a";
    for (int64_t i = 0; i < state.range(0); i++)
        text += close;
    dy output;
    dynew(&output, 0);
    for (auto _ : state) {
        dytruncate(&output, 0);
        lvexpand(text.c_str(), &output, "bench", 1);
    }
    free(output.buffer);
}

void nested_calls(benchmark::State &state) {
    expand_nested(state, "@(take1st ", ")");
}
BENCHMARK(nested_calls)
    ->Name("law/nested-calls")
    ->Arg(25'000)
    ->Arg(50'000)
    ->Arg(100'000);

void nested_subscripts(benchmark::State &state) {
    expand_nested(state, "@X[", "]");
}
BENCHMARK(nested_subscripts)
    ->Name("law/nested-subscripts")
    ->Arg(25'000)
    ->Arg(50'000)
    ->Arg(100'000);

void long_text(benchmark::State &state) {
    shop();
    std::string text = text_of(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        dy output;
        dynew(&output, 0);
        lvexpand(text.c_str(), &output, "bench", 1);
        free(output.buffer);
    }
}
BENCHMARK(long_text)
    ->Name("law/long-text")
    ->Arg(2 * megabyte)
    ->Arg(4 * megabyte)
    ->Arg(8 * megabyte);

}  // namespace

int main(int argc, char **argv) {
    progname = "bench";
    const struct {
        const char *name;
        std::string command;
    } peers[] = {
        {"expand/names500/50MB/awk", std::string(awk_program) + "50MB"},
        {"expand/names500/50MB/perl", std::string(perl_program) + "50MB"},
        {"expand/names500/50MB/m4", "m4 m4 50MB.m4"},
        {"expand/names500/1MB/sed", "sed -f sed 1MB"},
    };
    for (const char *size : {"50MB", "1MB"}) {
        std::string group = std::string("expand/names500/") + size;
        benchmark::RegisterBenchmark((group + "/ours").c_str(), by_ours,
                                     std::string(size))
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        for (const auto &peer : peers) {
            if (!std::string(peer.name).starts_with(group + "/")) continue;
            benchmark::RegisterBenchmark(peer.name, by_command,
                                         std::string(size), peer.command)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    benchmark::RegisterBenchmark("expand/calls/1MB/ours", calls)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
