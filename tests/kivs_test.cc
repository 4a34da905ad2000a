// kivs_test.cc: the program that writes variable heaps.
#include "support/child.h"
#include "support/heap_image.h"
#include "support/traces.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/lvget.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/kivs";

support::outcome kivs(std::vector<std::string> words,
                      const std::string &input = "") {
    words.insert(words.begin(), program);
    return support::run_program(words, input);
}

std::string here() {
    return std::filesystem::current_path();
}

// What a heap lists beside the defaults.
std::string listed(const std::string &heap) {
    support::outcome end = kivs({"-l"}, heap);
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.exit_status, 0);
    for (const std::string &line :
         {"CurDir = " + here() + "\n", std::string("SrcPath = .\n")}) {
        size_t at = end.out.find(line);
        if (at != std::string::npos) end.out.erase(at, line.size());
    }
    return end.out;
}

// The listing of the heap that these definitions make.
std::string made_from(const std::string &text) {
    support::write_file("text", text);
    support::outcome end = kivs({"-p", "text"});
    EXPECT_EQ(end.err, "") << text;
    EXPECT_EQ(end.exit_status, 0) << text;
    return listed(end.out);
}

void expect_refused(const std::string &text, const std::string &message) {
    support::write_file("text", text);
    for (const char *way : {"-p", "-oheap"}) {
        support::outcome end = kivs({way, "text"});
        EXPECT_EQ(end.exit_status, 255) << text;
        EXPECT_EQ(end.err, "kivs: text:" + message + "\n") << text;
        EXPECT_EQ(end.out, "") << text;
        EXPECT_FALSE(support::file_exists("heap")) << text;
    }
}

size_t files_here() {
    size_t count = 0;
    for ([[maybe_unused]] const auto &entry :
         std::filesystem::directory_iterator("."))
        ++count;
    return count;
}

TEST(kivs, definitions_are_read_line_by_line) {
    const struct {
        std::string text;
        std::string listing;
    } rows[] = {
        {"", ""},
        {"A = 1\n", "A = 1\n"},
        {"A=1", "A = 1\n"},
        {" \tA\t=\t1 2 \t\n", "A = 1 2\n"},
        {"A =\n", "A = \n"},
        {"A = =b=\n", "A = =b=\n"},
        {"# A = 1\n  # B = 2\n\n \t\nC = 3 # 4\n", "C = 3 # 4\n"},
        {"A = 1\r\nB = 2\r\n", "A = 1\nB = 2\n"},
        {"A = 1 \\\n  2\\\n3 \\\n\t\\\n 4\n", "A = 1 2 3 4\n"},
        {"A\\\n= 1\n", "A = 1\n"},
        {"# A \\\nB = 2\n", "B = 2\n"},
        {"A = \\x\n", "A = \\x\n"},
        {"export A = 1\n", "export A = 1\n"},
        {"export\tA=1\n", "export A = 1\n"},
        {"export = 1\n", "export = 1\n"},
        {"exported = 1\n", "exported = 1\n"},
        {"export export = 1\n", "export export = 1\n"},
        {"X[a*] = 1\n", "X[a*] = 1\n"},
        {"X[[ab]*] = 1\n", "X[[ab]*] = 1\n"},
        {"X[ a = b ] = 1\n", "X[ a = b ] = 1\n"},
        {"export X[*]=@Y\n", "export X[*] = @Y\n"},
        {"_a9 = \xff\x01\n", "_a9 = \xff\x01\n"},
        {"A = 1\nB = 2\nA = 3\n", "A = 3\nB = 2\n"},
        {"export A = 1\nA = 2\n", "A = 2\n"},
        {"A = 1\nX[A] = 2\nX = 3\n", "A = 1\nX = 3\nX[A] = 2\n"},
        {"SrcPath = src\n", "SrcPath = src\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(made_from(row.text), row.listing) << row.text;
}

TEST(kivs, wrong_lines_are_named_and_nothing_is_written) {
    const struct {
        std::string text;
        std::string message;
    } rows[] = {
        {"A = 1\nB 2\n", "2: no `=' behind the name"},
        {"A\n", "1: no `=' behind the name"},
        {"A[x]y = 1\n", "1: no `=' behind the name"},
        {"A [x] = 1\n", "1: no `=' behind the name"},
        {"A-B = 1\n", "1: no `=' behind the name"},
        {"export A\n", "1: no `=' behind the name"},
        {"= 1\n", "1: no name"},
        {"9A = 1\n", "1: no name"},
        {"[x] = 1\n", "1: no name"},
        {"export 9 = 1\n", "1: no `=' behind the name"},
        {"\xc3\xa4 = 1\n", "1: no name"},
        {"A[x = 1\n", "1: no closing ]"},
        {"A[[x] = 1\n", "1: no closing ]"},
        {"A = \\\n  \\\n 1\nB", "4: no `=' behind the name"},
        {"A = \\\n  \\\n 1\n\nB \\\n\n", "6: no `=' behind the name"},
        {"A = 1 \\", "1: last line ends with a backslash"},
        {"A = 1\nB = \\\n", "2: last line ends with a backslash"},
        {std::string("A = 1\nB = 2\0003\n", 14), "2: NUL byte"},
        {std::string("# \0\n", 4), "1: NUL byte"},
        {std::string(65535, 'n') + " = 1\n",
         "1: name is longer than 65534 characters"},
    };
    for (const auto &row : rows)
        expect_refused(row.text, row.message);
}

TEST(kivs, the_longest_name_and_long_values_are_written) {
    std::string name(65534, 'n');
    std::string value(3 << 20, 'v');
    EXPECT_EQ(made_from(name + " = " + value + "\n"),
              name + " = " + value + "\n");
}

TEST(kivs, writes_the_format_byte_by_byte) {
    std::string text = "CC = gcc\nexport LANG = C\nX[a*] = 1\nCC = cc\n";
    support::write_file("text", text);
    support::heap_image image;
    image.generation_seek = static_cast<uint32_t>(text.size());
    image.generation_lines = 4;
    image.add("CurDir", here());
    image.add("SrcPath", ".");
    image.add("LANG", "C", 2);
    image.add("X[a*]", "1");
    image.add("CC", "cc");
    EXPECT_EQ(kivs({"-p", "text"}).out, image.bytes());
}

TEST(kivs, thousands_of_definitions_are_quick) {
    std::string text;
    for (int i = 0; i < 50000; ++i)
        text +=
            "N" + std::to_string(i % 40000) + " = " + std::to_string(i) + "\n";
    support::write_file("text", text);
    EXPECT_EQ(kivs({"-o", "heap", "text"}).exit_status, 0);
    lvget(0, nullptr, 0, "heap", nullptr);
    for (int i = 0; i < 40000; i += 11) {
        int last = i < 10000 ? i + 40000 : i;
        std::string name = "N" + std::to_string(i);
        ASSERT_EQ(lvvar(name.c_str()), std::to_string(last)) << name;
    }
}

class kivs_tree : public testing::Test {
  protected:
    void SetUp() override {
        support::write_file("morva/data/kivs.vars", "A = root\nB = root\n");
        support::write_file("kivs.vars", "B = local\nC = local\n");
        support::write_file("other/kivs.vars", "C = other\n");
        support::write_file("one", "A = one\nB = one\n");
        support::write_file("two", "B = two\n");
    }

    static std::string variables(const std::vector<std::string> &words) {
        support::outcome end = kivs(words);
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.exit_status, 0);
        return listed(end.out);
    }
};

TEST_F(kivs_tree, flags_choose_the_files) {
    const struct {
        std::vector<std::string> words;
        std::string listing;
    } rows[] = {
        {{"-p"}, "A = root\nB = local\nC = local\n"},
        {{"-p", "-r"}, "A = root\nB = root\n"},
        {{"-pr"}, "A = root\nB = root\n"},
        {{"-p", "-dother"}, "A = root\nB = root\nC = other\n"},
        {{"-p", "-dother/"}, "A = root\nB = root\nC = other\n"},
        {{"-p", "-dnowhere"}, "A = root\nB = root\n"},
        {{"-p", "-d"}, "A = root\nB = local\nC = local\n"},
        {{"-p", "-r", "-dother"}, "A = root\nB = root\n"},
        {{"-p", "one", "two"}, "A = one\nB = two\n"},
        {{"-p", "--", "two"}, "B = two\n"},
        {{"-p", "-r", "-cdebug"}, "A = root\nB = root\nConfig = debug\n"},
        {{"-p", "-c", "two"}, "B = two\nConfig = \n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(variables(row.words), row.listing);
}

TEST_F(kivs_tree, config_beats_every_definition) {
    support::write_file("text", "Config = text\nSrcPath = . src\n");
    EXPECT_EQ(variables({"-p", "-cflag", "text"}),
              "Config = flag\nSrcPath = . src\n");
}

TEST_F(kivs_tree, no_definitions_at_all_leave_the_defaults) {
    setenv("MORVA", "/nowhere", 1);
    unlink("kivs.vars");
    EXPECT_EQ(kivs({"-l"}, kivs({"-p"}).out).out,
              "CurDir = " + here() + "\nSrcPath = .\n");
}

TEST_F(kivs_tree, the_system_has_its_name_when_the_table_exists) {
    support::write_file("morva/data/sysnames.tab", "* sys vrs base\n");
    EXPECT_EQ(variables({"-p", "two"}), "B = two\nSystem[Name] = sys\n");
    support::write_file("text", "System[Name] = mine\n");
    EXPECT_EQ(variables({"-p", "text"}), "System[Name] = mine\n");
}

TEST_F(kivs_tree, a_missing_named_file_is_fatal) {
    support::outcome end = kivs({"-p", "none"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: none: No such file or directory\n");
    end = kivs({"-p", "other"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: other: Is a directory\n");
}

TEST_F(kivs_tree, the_output_file_changes_only_at_the_end) {
    support::write_file("heap", "old");
    support::write_file("wrong", "A = 1\nwrong\n");
    size_t files = files_here();
    EXPECT_EQ(kivs({"-o", "heap", "wrong"}).exit_status, 255);
    EXPECT_EQ(support::read_file("heap"), "old");
    EXPECT_EQ(kivs({"-o", "heap", "one"}).exit_status, 0);
    EXPECT_EQ(listed(support::read_file("heap")), "A = one\nB = one\n");
    EXPECT_EQ(files_here(), files);
}

TEST_F(kivs_tree, the_output_file_has_usual_permissions) {
    for (mode_t mask : {0022, 0077, 0000}) {
        umask(mask);
        EXPECT_EQ(kivs({"-oheap", "one"}).exit_status, 0);
        struct stat status;
        ASSERT_EQ(stat("heap", &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0666u & ~mask);
    }
}

TEST_F(kivs_tree, output_that_cannot_be_written_is_reported) {
    support::outcome end = kivs({"-o", "nowhere/heap", "one"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: nowhere/heap: No such file or directory\n");
    size_t files = files_here();
    end = kivs({"-o", "other", "one"});  // a directory
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: other: not a regular file\n");
    EXPECT_EQ(files_here(), files);
    end = support::run_program({"sh", "-c", program + " -p one >/dev/full"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: standard output: No space left on device\n");
    for (const char *words : {"--help", "--version", "-x", "-V x", "-l heap"}) {
        EXPECT_EQ(kivs({"-oheap", "one"}).exit_status, 0);
        end = support::run_program(
            {"sh", "-c", program + " " + words + " >/dev/full"});
        EXPECT_EQ(end.exit_status, 255) << words;
        EXPECT_EQ(end.err, "kivs: standard output: No space left on device\n")
            << words;
    }
}

TEST_F(kivs_tree, lists_a_file_or_standard_input) {
    std::string heap = support::heap_of({{"B", "2"}, {"A", "1", 2}});
    support::write_file("heap", heap);
    EXPECT_EQ(kivs({"-l", "heap"}).out, "export A = 1\nB = 2\n");
    EXPECT_EQ(kivs({"-l"}, heap).out, "export A = 1\nB = 2\n");
    EXPECT_EQ(kivs({"-l", "-"}, heap).out, "export A = 1\nB = 2\n");
    support::outcome end = kivs({"-l", "one"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "kivs: one: could not read header\n");
    EXPECT_EQ(end.out, "");
}

TEST_F(kivs_tree, what_it_lists_makes_the_same_heap_again) {
    support::write_file("text", "export A = 1\nX[a b] = \nY = a \\\n b\n");
    std::string first = kivs({"-p", "text"}).out;
    support::write_file("again", kivs({"-l"}, first).out);
    EXPECT_EQ(listed(kivs({"-p", "again"}).out), listed(first));
}

TEST_F(kivs_tree, serves_lvget_on_a_pipe) {
    std::string path = TOVAN_BINARY_DIR "/bin:";
    setenv("PATH", (path + getenv("PATH")).c_str(), 1);
    lvget(0, nullptr, 0, nullptr, nullptr);
    EXPECT_STREQ(lvvar("B"), "local");
    EXPECT_EQ(lvvar("Config"), nullptr);
    lvget(1, "other", 1, nullptr, "debug");
    EXPECT_STREQ(lvvar("B"), "root");
    EXPECT_STREQ(lvvar("Config"), "debug");
    lvget(0, "other", 1, nullptr, nullptr);
    EXPECT_STREQ(lvvar("C"), "other");
    EXPECT_EQ(lvgen_lc(), 3u);
    EXPECT_EQ(lvgenseek(), 28u);
}

TEST_F(kivs_tree, traces_what_its_packages_say) {
    support::write_file("small", "A = 1\nSrcPath = src\n");
    support::check_traces(
        program, {{"search",
                   {"-onew"},
                   "",
                   "kivs: search(1) installation: " + here() +
                       "/morva/data/kivs.vars\n"
                       "kivs: search(1) local: kivs.vars\n"},
                  {"search",
                   {"-onew", "-dnowhere"},
                   "",
                   "kivs: search(1) installation: " + here() +
                       "/morva/data/kivs.vars\n"
                       "kivs: search(1) local: nowhere/kivs.vars (none)\n"},
                  {"files",
                   {"-onew", "one", "two"},
                   "",
                   "kivs: files(1) one: 2 lines\n"
                   "kivs: files(1) two: 1 lines\n"},
                  {"define",
                   {"-onew", "small"},
                   "",
                   "kivs: define(1) CurDir = " + here() +
                       "\n"
                       "kivs: define(1) SrcPath = .\n"
                       "kivs: define(1) A = 1\n"
                       "kivs: define(1) SrcPath = src\n"
                       "kivs: define(1) SrcPath = . is replaced\n"},
                  {"heap",
                   {"-onew", "one"},
                   "",
                   "kivs: heap(1) 4 variables, ### bytes\n"},
                  {"output",
                   {"-onew", "small"},
                   "",
                   "kivs: output(1) new.######\n"
                   "kivs: output(1) it is new now\n"}});
}

TEST_F(kivs_tree, traces_where_entries_go) {
    support::write_file("small", "CurDir = .\nA = 1\n");
    EXPECT_EQ(kivs({"-V", "heap=2", "-onew", "small"}).err,
              "kivs: heap(2) SrcPath: entry 1, chain 118\n"
              "kivs: heap(2) CurDir: entry 4, chain 143\n"
              "kivs: heap(2) A: entry 6, chain 18\n"
              "kivs: heap(1) 3 variables, 64 bytes\n");
}

TEST(kivs, wrong_arguments_show_the_usage) {
    const struct {
        std::vector<std::string> words;
        std::string message;
    } rows[] = {
        {{}, "one of -p, -o and -l is needed"},
        {{"file"}, "one of -p, -o and -l is needed"},
        {{"-p", "-l"}, "one of -p, -o and -l is needed"},
        {{"-p", "-oheap"}, "one of -p, -o and -l is needed"},
        {{"-z"}, "-z: invalid flag"},
        {{"-pz"}, "-z: invalid flag"},
        {{"--what"}, "--what: invalid flag"},
        {{"-o"}, "-o: value missing"},
        {{"-V"}, "-V: value missing"},
        {{"-p", "-r", "file"}, "-r and -d choose files, as file arguments do"},
        {{"-p", "-dx", "file"}, "-r and -d choose files, as file arguments do"},
        {{"-l", "-r"}, "-l goes with no other flag"},
        {{"-l", "-cx"}, "-l goes with no other flag"},
        {{"-l", "a", "b"}, "-l lists one heap"},
    };
    for (const auto &row : rows) {
        support::outcome end = kivs(row.words);
        EXPECT_EQ(end.exit_status, 255);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err.substr(0, end.err.find('\n')), row.message);
        EXPECT_NE(end.err.find("\nUsage: kivs -p | -o FILE"),
                  std::string::npos);
        EXPECT_NE(end.err.find("Use -x flag for explanations\n"),
                  std::string::npos);
    }
}

TEST(kivs, explains_itself) {
    for (const char *flag : {"--help", "-x"}) {
        support::outcome end = kivs({flag});
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.out.find("kivs -p | -o FILE"), 0u);
        EXPECT_NE(end.out.find("-cNAME"), std::string::npos);
    }
    support::outcome end = kivs({"--version"});
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out, "kivs (libtovan) 8.4.1\n");
}

}  // namespace
