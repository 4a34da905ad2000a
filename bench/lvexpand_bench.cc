// lvexpand_bench.cc: expanding texts.
//
// expand/names500/50MB    a text with a reference a line, from file to file;
//                         peers are whole processes that do the same in one
//                         pass with a table of the names
// expand/names500/1MB     the same, for one with a substitution a name
// expand/calls/1MB        a call a line
// law/...                 nested calls and subscripts, long texts
#include "support/heap_image.h"

#include <benchmark/benchmark.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/lvexpand.h>
#include <tovan/lvget.h>
#include <unistd.h>
#include <random>
#include <string>

namespace {

constexpr int name_count = 500;
constexpr size_t megabyte = 1 << 20;

std::string name_of(size_t i) {
    return "Name" + std::to_string(i);
}

std::string value_of(size_t i) {
    return "/net/tree/some/value" + std::to_string(i * 7919);
}

void write_file(const std::string &path, const std::string &content) {
    FILE *file = fopen(path.c_str(), "w");
    fwrite(content.data(), 1, content.size(), file);
    fclose(file);
}

// Lines of some fifty characters with one reference each.
std::string text_of(size_t size) {
    std::mt19937 random(7);
    std::string text;
    while (text.size() < size) {
        text.append(10 + random() % 20, 'x');
        text += " = @" + name_of(random() % name_count) + "/";
        text.append(random() % 20, 'y');
        text += ".c\n";
    }
    return text;
}

// A directory with the variables, the texts and the peers' programs.
struct workshop {
    std::string directory;

    workshop() {
        char name[] = "/tmp/lvexpand-bench-XXXXXX";
        directory = mkdtemp(name);
        std::vector<support::variable> variables = {{"X[a]", "a"}};
        std::string table, definitions, script;
        for (size_t i = 0; i < name_count; i++) {
            variables.push_back({name_of(i), value_of(i)});
            table += name_of(i) + " " + value_of(i) + "\n";
            definitions +=
                "define(`" + name_of(i) + "',`" + value_of(i) + "')dnl\n";
            script += "s,@" + name_of(i) + "/," + value_of(i) + "/,g\n";
        }
        write_file(path("heap"), support::heap_of(variables));
        write_file(path("table"), table);
        write_file(path("m4"), definitions);
        write_file(path("sed"), script);
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
void by_ours(benchmark::State &state, const std::string &text_name) {
    const workshop &here = shop();
    char *line = nullptr;
    size_t size = 0;
    dy output;
    dynew(&output, 0);
    for (auto _ : state) {
        FILE *in = fopen(here.path(text_name).c_str(), "r");
        FILE *out = fopen(here.path("ours").c_str(), "w");
        for (int number = 1; getline(&line, &size, in) > 0; number++) {
            dytruncate(&output, 0);
            lvexpand(line, &output, "bench", number);
            dyaddc(&output, '\n');
            fwrite(output.buffer, 1, static_cast<size_t>(output.length), out);
        }
        fclose(in);
        fclose(out);
    }
    free(line);
    free(output.buffer);
}

// `command` reads the text and writes what we write to the file "theirs".
void by_command(benchmark::State &state, const std::string &command) {
    const workshop &here = shop();
    std::string line = "cd " + here.directory + " && " + command + " >theirs";
    for (auto _ : state) {
        if (system(line.c_str()) != 0) state.SkipWithError("failed");
    }
    if (content_of(here.path("theirs")) != content_of(here.path("ours")))
        state.SkipWithError("another result than ours");
}

const char awk_program[] =
    "awk 'NR == FNR { value[$1] = $2; next }"
    " { out = \"\"; rest = $0;"
    "   while (i = index(rest, \"@\")) {"
    "     out = out substr(rest, 1, i - 1); rest = substr(rest, i + 1);"
    "     match(rest, /^[A-Za-z_][A-Za-z0-9_]*/);"
    "     out = out value[substr(rest, 1, RLENGTH)];"
    "     rest = substr(rest, RLENGTH + 1) }"
    "   print out rest }' table ";
const char perl_program[] =
    "perl -e 'open T, \"<\", \"table\"; while (<T>) { /(\\S+) (\\S+)/;"
    " $v{$1} = $2 } open F, \"<\", $ARGV[0];"
    " while (<F>) { s/@([A-Za-z_]\\w*)/$v{$1}/g; print }' ";

void calls(benchmark::State &state) {
    shop();
    std::string text;
    while (text.size() < megabyte)
        text += "@(take1st @Name7 xxxx) @(empty @Name9)\n";
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
            benchmark::RegisterBenchmark(peer.name, by_command, peer.command)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    benchmark::RegisterBenchmark("expand/calls/1MB/ours", calls)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
