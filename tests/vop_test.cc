// vop_test.cc: the library's services on the command line: for each
// subcommand the command, what it writes to both outputs, and its status.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/program.h"
#include "support/traces.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

struct row {
    std::vector<std::string> words;
    std::string input;
    std::string out;
    std::string err;
    int status;
};

support::outcome vop(std::vector<std::string> words,
                     const std::string &input = "") {
    words.insert(words.begin(), program);
    return support::run_program(words, input);
}

void check(const std::vector<row> &rows) {
    for (const row &each : rows) {
        std::vector<std::string> words = each.words;
        words.insert(words.begin(), program);
        support::check_run(words, each.input,
                           {each.out, each.err, each.status});
    }
}

// A heap with a few variables, in the file that KIVS_FILE names.
void prepare_heap() {
    support::write_file("src/main.c", "");
    support::write_file("lib/util.c", "");
    support::write_file("heap", support::heap_of({{"CC", "cc"},
                                                  {"CurDir", "/build"},
                                                  {"SrcPath", ". src lib"},
                                                  {"Tree[a]", "first"},
                                                  {"Tree[b]", "second"}}));
    setenv("KIVS_FILE", "heap", 1);
}

TEST(vop, expands_arguments_and_lines) {
    prepare_heap();
    check({
        {{"expand", "@(findfile main.c)", "@CC -c"},
         "",
         "src/main.c\ncc -c\n",
         "",
         0},
        {{"expand"}, "one @CC\n\n@Tree[b]\n", "one cc\n\nsecond\n", "", 0},
        {{"expand", "-f", "heap", "@CC"}, "", "cc\n", "", 0},
        {{"expand", "-f-", "@CC"}, support::read_file("heap"), "cc\n", "", 0},
    });
}

TEST(vop, expansion_errors_name_the_place) {
    prepare_heap();
    const std::string end =
        "vop: aborted due to above error in kivs expansion\n";
    check({
        {{"expand"},
         "fine\n@(nothing here)\n",
         "fine\n",
         "vop:standard input:2: unsupported kivs function `nothing'\n" + end,
         255},
        {{"expand", "a", "@(home)"},
         "",
         "a\n",
         "vop:argument:2: @(home ...) not supported in this program\n" + end,
         255},
    });
}

TEST(vop, a_missing_heap_is_named) {
    check({{{"expand", "-f", "no-heap", "x"},
            "",
            "",
            "vop: no-heap: No such file or directory\n",
            255}});
}

TEST(vop, lists_variables_by_pattern) {
    prepare_heap();
    check({
        {{"vars", "T*", "CC"},
         "",
         "CC = cc\nTree[a] = first\nTree[b] = second\n",
         "",
         0},
        {{"vars", "none*"}, "", "", "", 1},
    });
}

TEST(vop, finds_sources) {
    prepare_heap();
    check({
        {{"srcs", "main.c", "util.c"}, "", "src/main.c\nlib/util.c\n", "", 0},
        {{"srcs", "none.c", "main.c"},
         "",
         "src/main.c\n",
         "vop: none.c: not found along SrcPath\n",
         1},
    });
}

TEST(vop, evaluates_expressions) {
    check({
        {{"expr", "(1 + 2) * 3 << 1", "-3", "09"}, "", "18\n-3\n9\n", "", 0},
        {{"expr", "1", "1 2"}, "", "1\n", "vop: `1 2': syntax error\n", 255},
        {{"expr", "8 / 0"}, "", "", "vop: `8 / 0': division by zero\n", 255},
    });
}

TEST(vop, matches_names) {
    check({
        {{"match", "main.c", "*.{c,cc}"}, "", "", "", 0},
        {{"match", "main.o", "*.{c,cc}"}, "", "", "", 1},
        {{"match", "-rxp", "main.o", "\\.o$"}, "", "", "", 0},
        {{"match", "-exact", "-reverse", "a", "b", "a"}, "", "", "", 0},
    });
}

TEST(vop, searches_lines) {
    const std::string text = "one\nTwo two\nthree\n";
    support::write_file("a", text);
    support::write_file("b", "tw\n");
    check({
        {{"rx", "t"}, text, "Two two\nthree\n", "", 0},
        {{"rx", "-v", "t"}, text, "one\n", "", 0},
        {{"rx", "-i", "^t"}, text, "Two two\nthree\n", "", 0},
        {{"rx", "-o", "t[a-z]+"}, text, "two\nthree\n", "", 0},
        {{"rx", "-r", "<\\1>", "\\([A-Z]\\)"}, text, "<T>\n", "", 0},
        {{"rx", "!o"}, text, "three\n", "", 0},
        {{"rx", "tw", "a", "b"}, "", "a:Two two\nb:tw\n", "", 0},
        {{"rx", "zz", "a"}, "", "", "", 1},
        {{"rx", "tw", "none"},
         "",
         "",
         "vop: none: No such file or directory\n",
         255},
        {{"rx", "--dump", "a"},
         "",
         "0:\tSTA\t1\t2\tdon't invert\n1:\tMch\t'a'\t2\t?\n"
         "2:\tEND, minnop=1, maxnop=1\n",
         "",
         0},
    });
}

TEST(vop, says_what_is_wrong_with_a_regular_expression) {
    check({
        {{"rx", "[b-a]"}, "", "", "vop: `[b-a]': bad bracket\n", 255},
        {{"rx", "\\1"},
         "",
         "",
         "vop: `\\1': reference to a sub-match that is not closed\n",
         255},
        {{"rx", "<a"},
         "",
         "",
         "vop: `<a': unbalanced groups, brackets or sub-matches\n",
         255},
        {{"rx", "a\\"},
         "",
         "",
         "vop: `a\\': the pattern ends too early\n",
         255},
        {{"rx", std::string(256, 'a')},
         "",
         "",
         "vop: `" + std::string(256, 'a') + "': pattern too long\n",
         255},
    });
}

TEST(vop, writes_matching_paths) {
    support::write_file("d/x.c", "");
    check({
        {{"glob", "*/*.c"}, "", "d/x.c\n", "", 0},
        {{"glob", "*/*.h"}, "", "", "", 1},
    });
}

TEST(vop, makes_paths_plain) {
    check({
        {{"path", "a/./b//../c", "/.."}, "", "a/c\n/\n", "", 0},
        {{"path", "--resolve", "/a/../b"}, "", "/b\n", "", 0},
    });
    char here[4096];
    ASSERT_NE(getcwd(here, sizeof here), nullptr);
    check(
        {{{"path", "--resolve", "x"}, "", std::string(here) + "/x\n", "", 0}});
}

// An installation with maps and a table of system names.
void prepare_installation() {
    support::write_file("morva/data/roots.map",
                        "/u /net/u\nD>/build d:\nU>e: /net/e\n");
    support::write_file("morva/data/sysnames.tab",
                        "* box box-1 base MyOS 1 cpu ^\n");
}

TEST(vop, maps_roots) {
    prepare_installation();
    check({{{"map", "/u/src", "/usr"}, "", "/net/u/src\n/usr\n", "", 0}});
}

TEST(vop, converts_foreign_paths) {
    prepare_installation();
    check({
        {{"dos", "//D/src/a.c", "/build/x"},
         "",
         "d:\\src\\a.c\nd:\\x\n",
         "",
         0},
        {{"dos", "-0", "/build/x"}, "", "d:/x\n", "", 0},
        {{"dos", "-2", "-e", ".obj", "/x/a.c"}, "", "\\\\x\\\\a.obj\n", "", 0},
        {{"ix", "d:\\src\\\\a.c", "e:\\out"},
         "",
         "//D/src/a.c\n/net/e/out\n",
         "",
         0},
    });
}

TEST(vop, writes_the_eight_names) {
    prepare_installation();
    const std::string record =
        "Name\tbox\nSysVrs\tbox-1\nBase\tbase\nOS\tMyOS\nRelease\t1\n"
        "CPU\tcpu\nConfig\tMyOS-1-cpu\nPlatform\t^\n";
    check({
        {{"names"}, "", record, "", 0},
        {{"names", "-f", "morva/data/sysnames.tab"}, "", record, "", 0},
        {{"names", "-l"}, "", "*\tbox\tbox-1\tbase\tMyOS\t1\tcpu\t^\n", "", 0},
    });
}

TEST(vop, lists_traits_and_the_environment_counts) {
    support::write_file(
        "traits",
        support::heap_of({{"A_ONE", "1"}, {"A_TWO", "2"}, {"B", "3"}}));
    setenv("TRAITS_FILE", "traits", 1);
    setenv("A_TWO", "here", 1);
    check({
        {{"traits", "A*"}, "", "A_ONE = 1\nA_TWO = here\n", "", 0},
        {{"traits", "none"}, "", "", "", 1},
    });
}

TEST(vop, runs_commands_and_passes_their_status) {
    check({
        {{"run", "echo 'a  b'"}, "", "a  b\n", "", 0},
        {{"run", "echo a | tr a b"}, "", "b\n", "", 0},
        {{"run", "exit", "3;"}, "", "", "", 3},
        {{"run", "kill -9 $$"}, "", "", "", 137},
        {{"run", "no-such-program"},
         "",
         "",
         "vop: no-such-program: not found\n",
         255},
    });
}

TEST(vop, shows_how_a_command_would_run) {
    check({
        {{"run", "-n", "cc -c \"my file.c\""},
         "",
         "directly:\n\tcc\n\t-c\n\tmy file.c\n",
         "",
         0},
        {{"run", "-n", "ls *"}, "", "through the shell\n", "", 0},
    });
}

const std::vector<std::string> subcommands = {
    "expand", "vars", "srcs", "expr", "match", "rx",     "glob",
    "path",   "map",  "dos",  "ix",   "names", "traits", "run",
    "fix",    "dict", "tmp",  "db",   "ar",    "tar",    "cpio"};

TEST(vop, help_lists_the_subcommands_in_columns) {
    check({{{"help"},
            "",
            "Subcommands:\n"
            "\n"
            "    expand expr   glob   map    ix     traits fix    tmp    ar    "
            " cpio\n"
            "    vars   match  path   dos    names  run    dict   db     tar   "
            " help\n"
            "    srcs   rx\n"
            "\n"
            "vop help SUBCOMMAND explains one, vop -x each in a line.\n",
            "",
            0}});
}

TEST(vop, help_explains_every_subcommand_with_an_example) {
    std::string list = vop({"-x"}).out;
    for (const std::string &name : subcommands) {
        EXPECT_NE(list.find("\n" + name + "\t"), std::string::npos) << name;
        support::outcome end = vop({"help", name});
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_EQ(end.out.rfind("vop " + name, 0), 0u) << end.out;
        EXPECT_NE(end.out.find("\nExample: vop " + name), std::string::npos);
        for (const char *flag : {"--help", "-x"})
            EXPECT_EQ(vop({name, flag}).out, end.out) << name << flag;
    }
}

TEST(vop, help_and_version_go_to_standard_output) {
    EXPECT_EQ(vop({"--version"}).out, "vop (libtovan) 8.4.1\n");
    support::outcome end = vop({"--help"});
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.out.rfind("vop SUBCOMMAND [ARGUMENT...]\n\n", 0), 0u);
    EXPECT_EQ(vop({"-x"}).out, end.out);
}

TEST(vop, traces_what_its_packages_say) {
    prepare_heap();
    support::check_traces(
        program,
        {{"heap",
          {"expand", "x"},
          "",
          "vop: heap(1) from heap\nvop: heap(1) 5 variables, from 0 lines\n"},
         {"heap=2",
          {"vars", "-f-", "CC"},
          support::heap_of({{"CC", "cc"}}),
          "vop: heap(1) from standard input\nvop: heap(2) CC = cc\n"
          "vop: heap(1) 1 variables, from 0 lines\n"},
         {"expand",
          {"expand", "a", "@CC"},
          "",
          "vop: expand(1) argument:1: a\nvop: expand(1) argument:2: @CC\n"},
         {"search",
          {"srcs", "main.c"},
          "",
          "vop: search(1) main.c: src/main.c\n"},
         {"search=2",
          {"srcs", "util.c"},
          "",
          "vop: search(2) src/util.c?\nvop: search(2) lib/util.c?\n"
          "vop: search(1) util.c: lib/util.c\n"},
         {"match",
          {"match", "a", "a"},
          "",
          "0000: 0: p=a; f=a; pc=NULL\n-0000: 0: p=a; f=a; pc=NULL\n"},
         {"rx",
          {"rx", "b"},
          "a\nb\nab\n",
          "vop: rx(1) b: 14 bytes\nvop: rx(1) -: 2 of 3 lines\n"},
         {"run",
          {"run", "false"},
          "",
          "vop: run(1) false\nvop: run(1) 0x0100\n"},
         {"fix",
          {"fix", "-d", "/dev/null", "-"},
          "a\n@{ x\n@| *\nb\n@}\n",
          "vop: fix(1) /dev/null: dictionary, status 0\n"
          "vop: fix(1) -: 5 lines, status 0\n"},
         {"output",
          {"fix", "-onew", "heap"},
          "",
          "vop: output(1) new.######\nvop: output(1) it is new now\n"}});
}

TEST(vop, trace_flags_stand_before_or_behind_the_subcommand) {
    const std::string trace = "vop: run(1) true\nvop: run(1) 0x0000\n";
    check({{{"-V", "run", "run", "true"}, "", "", trace, 0},
           {{"-Vrun", "run", "true"}, "", "", trace, 0},
           {{"run", "-V", "all", "true"}, "", "", trace, 0},
           {{"-V", "run", "run", "-V", "run-", "true"}, "", "", "", 0}});
}

TEST(vop, trace_flags_explain_themselves) {
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"-V", "x"}, {"run", "-Vx", "true"}}) {
        support::outcome end = vop(words);
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.out.rfind("A debug flag string is a comma", 0), 0u);
    }
}

TEST(vop, misuse_goes_to_standard_error_with_status_255) {
    const std::string hint = "Use -x flag for explanations\n";
    const std::string usage = "Usage: vop SUBCOMMAND [ARGUMENT...]\n" + hint;
    check({
        {{}, "", "", "no subcommand (vop help lists them)\n" + usage, 255},
        {{"nothing"},
         "",
         "",
         "nothing: unknown subcommand (vop help lists them)\n" + usage,
         255},
        {{"-q"}, "", "", "-q: invalid flag\n" + usage, 255},
        {{"-V"}, "", "", "-V: value missing\n" + usage, 255},
        {{"map"},
         "",
         "",
         "arguments are missing\nUsage: vop map PATH...\n" + hint,
         255},
        {{"expand", "-f"},
         "",
         "",
         "-f: value missing\nUsage: vop expand [-f HEAP] [TEXT...]\n" + hint,
         255},
        {{"expand", "-f", "-"},
         "",
         "",
         "texts and variables cannot both come from standard input\n"
         "Usage: vop expand [-f HEAP] [TEXT...]\n" +
             hint,
         255},
        {{"path", "--nothing", "x"},
         "",
         "",
         "--nothing: invalid flag\nUsage: vop path [--resolve] PATH...\n" +
             hint,
         255},
    });
}

TEST(vop, a_full_disk_is_noticed) {
    support::outcome end =
        support::run_program({"sh", "-c", program + " expr 1 >/dev/full"});
    EXPECT_EQ(end.err, "vop: standard output: No space left on device\n");
    EXPECT_EQ(end.exit_status, 255);
    end = support::run_program({"sh", "-c", program + " expr 1 >&-"});
    EXPECT_EQ(end.err, "vop: standard output: Bad file descriptor\n");
    EXPECT_EQ(end.exit_status, 255);
}

TEST(vop, reports_output_that_is_lost_on_every_way_out) {
    prepare_heap();
    for (const char *words :
         {"-V x", "-x", "--help", "--version", "help", "help rx", "rx -x",
          "vars -V x", "expand text", "expr 1", "vars", "srcs main.c",
          "glob '/*'", "path a", "rx a src/../heap", "run -n true"}) {
        support::check_run(
            {"sh", "-c", program + " " + words + " >/dev/full"}, "",
            {"", "vop: standard output: No space left on device\n", 255});
    }
}

TEST(vop, says_nothing_about_output_that_it_does_not_write) {
    support::check_run({"sh", "-c", program + " match a a >/dev/full"}, "",
                       {"", "", 0});
    support::check_run({"sh", "-c", program + " match a b >/dev/full"}, "",
                       {"", "", 1});
    support::check_run({"sh", "-c", program + " run true >&-"}, "",
                       {"", "", 0});
}

}  // namespace
