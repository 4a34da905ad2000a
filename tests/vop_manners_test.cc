// vop_manners_test.cc: what every subcommand has in common: misuse is
// explained, output that cannot be written is noticed, and nothing but plain
// text goes to a terminal.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/terminal.h"
#include "support/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

support::outcome vop(std::vector<std::string> words) {
    words.insert(words.begin(), program);
    return support::run_program(words);
}

// The subcommands, as the explanation lists them.
std::set<std::string> listed_subcommands() {
    std::set<std::string> names;
    std::istringstream lines(vop({"--help"}).out);
    bool on = false;
    for (std::string line; std::getline(lines, line);) {
        if (on) names.insert(line.substr(0, line.find('\t')));
        if (line == "Subcommands:") on = true;
    }
    return names;
}

// What the subcommands below work on.
void prepare() {
    support::write_file("src/main.c", "int x;\n");
    support::write_file("heap",
                        support::heap_of({{"CC", "cc"}, {"SrcPath", ". src"}}));
    support::write_file("traits", support::heap_of({{"A", "1"}}));
    support::write_file("dict", "A 1\n");
    support::write_file("morva/data/roots.map", "/u /net/u\n");
    support::write_file("morva/data/sysnames.tab", "* box box-1 base\n");
    support::write_file("lib.a",
                        "!<arch>\none/            0           0     "
                        "0     100644  2         `\nx\n");
    setenv("KIVS_FILE", "heap", 1);
    setenv("TRAITS_FILE", "traits", 1);
    setenv("TMPDIR", ".", 1);
    support::run_program({program, "db", "create", "k"});
}

// A command of each subcommand that writes to standard output.
const std::vector<std::vector<std::string>> writing = {
    {"ar", "list", "lib.a"},
    {"cpio", "src"},
    {"db", "stat", "k"},
    {"dict", "dict"},
    {"dos", "/x"},
    {"expand", "@CC"},
    {"expr", "1"},
    {"fix", "src/main.c"},
    {"glob", "src/*"},
    {"help"},
    {"ix", "x"},
    {"map", "/u"},
    {"match", "--help"},
    {"names"},
    {"path", "x"},
    {"run", "-n", "x"},
    {"rx", "x", "src/main.c"},
    {"srcs", "main.c"},
    {"tar", "src"},
    {"tmp"},
    {"traits"},
    {"vars"},
};

// The writer of cpio archives has words of its own.
std::string complaint(const std::string &subcommand,
                      const std::string &reason) {
    return subcommand == "cpio" ? "Can't write to std out!\n"
                                : "vop: standard output: " + reason + "\n";
}

TEST(vop_manners, output_that_cannot_be_written_is_noticed) {
    prepare();
    std::set<std::string> left = listed_subcommands();
    for (const std::vector<std::string> &words : writing) {
        if (left.erase(words[0]) == 0) continue;  // not built in
        std::string command = program;
        for (const std::string &word : words)
            command += " '" + word + "'";
        support::outcome end =
            support::run_program({"sh", "-c", command + " >/dev/full"});
        EXPECT_EQ(end.err, complaint(words[0], "No space left on device"))
            << command;
        EXPECT_EQ(end.exit_status, 255) << command;
        end = support::run_program({"sh", "-c", command + " >&-"});
        EXPECT_EQ(end.err, complaint(words[0], "Bad file descriptor"))
            << command;
        EXPECT_EQ(end.exit_status, 255) << command;
    }
    EXPECT_EQ(left, std::set<std::string>()) << "without a row";
}

struct misuse {
    std::vector<std::string> words;
    std::string message;
};

const std::vector<misuse> wrong = {
    {{"ar"}, "arguments are missing"},
    {{"ar", "put", "x"}, "put: neither list nor get"},
    {{"ar", "list"}, "arguments are missing"},
    {{"ar", "get", "-l", "lib.a", "x"}, "-l does not go with get"},
    {{"cpio", "-q"}, "-q: invalid flag"},
    {{"db"}, "no action given"},
    {{"db", "nothing"}, "nothing: unknown action"},
    {{"db", "list"}, "arguments are missing"},
    {{"db", "list", "a", "b"}, "b: one name too many"},
    {{"dict"}, "arguments are missing"},
    {{"dict", "-q"}, "-q: invalid flag"},
    {{"dos"}, "no path given"},
    {{"dos", "-e"}, "-e: value missing"},
    {{"dos", "-3", "x"}, "-3: invalid flag"},
    {{"expand", "-f"}, "-f: value missing"},
    {{"expand", "-q"}, "-q: invalid flag"},
    {{"expr"}, "arguments are missing"},
    {{"fix"}, "arguments are missing"},
    {{"fix", "-q"}, "-q: invalid flag"},
    {{"glob"}, "arguments are missing"},
    {{"glob", "-q"}, "-q: invalid flag"},
    {{"ix"}, "arguments are missing"},
    {{"ix", "-q"}, "-q: invalid flag"},
    {{"map"}, "arguments are missing"},
    {{"map", "--all"}, "--all: invalid flag"},
    {{"match"}, "arguments are missing"},
    {{"names", "x"}, "x: no argument wanted"},
    {{"names", "-f"}, "-f: value missing"},
    {{"path"}, "no path given"},
    {{"path", "-r", "x"}, "-r: invalid flag"},
    {{"run"}, "no command given"},
    {{"run", "-q"}, "-q: invalid flag"},
    {{"rx"}, "no pattern given"},
    {{"rx", "-d", "x"}, "-d: invalid flag"},
    {{"rx", "-r"}, "-r: value missing"},
    {{"srcs"}, "no file given"},
    {{"srcs", "-f"}, "-f: value missing"},
    {{"tar", "-q"}, "-q: invalid flag"},
    {{"tmp", "a", "b"}, "more than one model"},
    {{"tmp", "-m", "9"}, "-m 9: not the permissions of a file in octal"},
    {{"tmp", "a/b"}, "a/b: a model has no slash (-p names the directory)"},
    {{"traits", "-q"}, "-q: invalid flag"},
    {{"vars", "-f"}, "-f: value missing"},
};

TEST(vop_manners, misuse_shows_the_usage_of_the_subcommand) {
    std::set<std::string> names = listed_subcommands();
    std::set<std::string> left = names;
    left.erase("help");
    for (const misuse &row : wrong) {
        if (names.count(row.words[0]) == 0) continue;  // not built in
        left.erase(row.words[0]);
        std::string help = vop({"help", row.words[0]}).out;
        support::outcome end = vop(row.words);
        EXPECT_EQ(end.err, row.message +
                               "\nUsage: " + help.substr(0, help.find('\n')) +
                               "\nUse -x flag for explanations\n");
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.exit_status, 255);
    }
    EXPECT_EQ(left, std::set<std::string>()) << "without a row";
}

TEST(vop_manners, help_explains_unknown_names_as_misuse) {
    support::outcome end = vop({"help", "nothing"});
    EXPECT_EQ(end.err,
              "nothing: unknown subcommand (vop help lists them)\n"
              "Usage: vop SUBCOMMAND [ARGUMENT...]\n"
              "Use -x flag for explanations\n");
    EXPECT_EQ(end.exit_status, 255);
}

// What a command writes to a terminal, newlines as they were written.
std::string on_terminal(const std::vector<std::string> &words) {
    support::terminal screen;
    support::in_child([&] {
        int output = screen.open_end();
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        std::vector<char *> vector;
        vector.push_back(const_cast<char *>(program.c_str()));
        for (const std::string &word : words)
            vector.push_back(const_cast<char *>(word.c_str()));
        vector.push_back(nullptr);
        execv(program.c_str(), vector.data());
    });
    std::string text;
    char bytes[4096];
    for (ssize_t n; (n = read(screen.master, bytes, sizeof bytes)) > 0;)
        text.append(bytes, static_cast<size_t>(n));
    std::string lines;
    for (char c : text)
        if (c != '\r') lines += c;
    return lines;
}

TEST(vop_manners, a_terminal_gets_the_same_plain_text) {
    prepare();
    setenv("TERM", "xterm-256color", 1);
    unsetenv("NO_COLOR");
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{
             {"help"}, {"names"}, {"vars"}, {"dict", "dict"}, {"expr"}}) {
        support::outcome end = vop(words);
        std::string text = on_terminal(words);
        EXPECT_EQ(text, end.out + end.err) << words[0];
        EXPECT_EQ(text.find('\033'), std::string::npos) << words[0];
    }
}

}  // namespace
