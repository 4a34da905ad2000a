// vop_fix_test.cc: dictionaries and fixed files on the command line.
#include "support/child.h"
#include "support/doc.h"
#include "support/program.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <filesystem>
#include <string>
#include <vector>

namespace {

const std::string program = TOVAN_BINARY_DIR "/bin/vop";

const std::string fix_usage =
    "Usage: vop fix [-d DICT] [-D NAME=text] [-unt] [-o OUT] FILE...\n"
    "Use -x flag for explanations\n";

struct row {
    std::vector<std::string> words;
    std::string input;
    std::string out;
    std::string err;
    int status;
};

void check(const std::vector<row> &rows) {
    for (const row &each : rows) {
        std::vector<std::string> words = each.words;
        words.insert(words.begin(), program);
        support::check_run(words, each.input,
                           {each.out, each.err, each.status});
    }
}

mode_t permissions_of(const std::string &path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

// Whether something is left of a file that was to become OUT.
bool is_unfinished_left() {
    for (auto each = std::filesystem::directory_iterator(".");
         each != std::filesystem::directory_iterator(); ++each) {
        if (each->path().filename().string().rfind("out.", 0) == 0) return true;
    }
    return false;
}

TEST(vop_fix, files_go_through_the_dictionary) {
    support::write_file("dict", "A value\nB @A@s\n");
    support::write_file("in", "<@A@>\n");
    support::write_file("more", "@B@ of @__FILE__@\n");
    check({
        {{"fix", "-d", "dict", "in", "more"},
         "",
         "<value>\nvalues of more\n",
         "",
         0},
        {{"fix", "-ddict", "-"}, "@B@\n", "values\n", "", 0},
        {{"fix", "-d", "-", "in"}, "A x\n", "<x>\n", "", 0},
        {{"fix", "in"}, "", "<>\n", "", 0},
    });
}

TEST(vop_fix, documented_file_becomes_the_documented_output) {
    const char page[] = "formats/fixed-file.md";
    support::write_file("dict", support::doc_block(page, "dictionary"));
    support::write_file("in", support::doc_block(page, "input"));
    check({{{"fix", "-d", "dict", "in"},
            "",
            support::doc_block(page, "output"),
            "",
            0}});
}

TEST(vop_fix, names_can_be_given_as_arguments) {
    support::write_file("dict", "A from file\ncset B from file\n");
    support::write_file("in", "@A@/@B@/@C@\n");
    check({
        {{"fix", "-d", "dict", "-D", "A=x=y", "-DC=@A@!", "in"},
         "",
         "x=y/from file/x=y!\n",
         "",
         0},
        {{"fix", "-D", "A=first", "-D", "B=first", "-d", "dict", "in"},
         "",
         "from file/first/\n",
         "",
         0},
        {{"fix", "-D", "A=", "in"}, "", "//\n", "", 0},
        {{"fix", "-D", "A", "in"},
         "",
         "",
         "-D A: no `=' behind the name\n" + fix_usage,
         255},
        {{"fix", "-D", "1A=x", "in"},
         "",
         "",
         "-D 1A=x: no name\n" + fix_usage,
         255},
        {{"fix", "-D", "=x", "in"},
         "",
         "",
         "-D =x: no name\n" + fix_usage,
         255},
        {{"fix", "-D", "A-B=x", "in"},
         "",
         "",
         "-D A-B=x: no `=' behind the name\n" + fix_usage,
         255},
    });
}

TEST(vop_fix, usage_trace_lists_the_names) {
    support::write_file("dict", "A @B@\n");
    support::write_file("in", "@A@ @C?@\n@! @A@\n");
    check({{{"fix", "-u", "-d", "dict", "in"},
            "",
            "in:000001:A\nin:000001:C\nin:000002:A\n",
            "",
            0}});
}

TEST(vop_fix, all_errors_are_reported_when_nothing_is_written) {
    support::write_file("in", "text\n@! first\n@A!\n@-x\n");
    check({{{"fix", "-n", "in"},
            "",
            "",
            "vop: Error: first\n"
            "in:3: unsupported @ operator in 'A!'\n"
            "vop: @-x: invalid flag\n",
            2}});
}

TEST(vop_fix, tildes_are_converted_on_demand) {
    support::write_file("in", "~~x~.~u:\n");
    check({{{"fix", "in"}, "", "~~x~.~u:\n", "", 0},
           {{"fix", "-t", "in"}, "", "~x\xff\x81\n", "", 0}});
}

TEST(vop_fix, wrong_references_give_status_1) {
    support::write_file("in", "@A!\nmore\n");
    support::write_file("good", "good\n");
    check({{{"fix", "in", "good"},
            "",
            "@A!\nmore\ngood\n",
            "in:1: unsupported @ operator in 'A!'\n",
            1}});
}

TEST(vop_fix, wrong_dictionary_stops_before_the_files) {
    support::write_file("dict", "1 x\n");
    support::write_file("in", "text\n");
    check({{{"fix", "-d", "dict", "in"},
            "",
            "",
            "vop: dict:1 1st character must be alphabetic or an underbar\n",
            1}});
}

TEST(vop_fix, output_file_is_written_whole) {
    support::write_file("in", "@A@\n");
    remove("out");
    umask(027);
    check({{{"fix", "-D", "A=new", "-o", "out", "in", "in"}, "", "", "", 0}});
    EXPECT_EQ(support::read_file("out"), "new\nnew\n");
    EXPECT_EQ(permissions_of("out"), 0640u);
    EXPECT_FALSE(is_unfinished_left());
}

TEST(vop_fix, output_file_keeps_its_permissions) {
    support::write_file("in", "text\n");
    support::write_file("out", "old");
    chmod("out", 0755);
    check({{{"fix", "-o", "out", "in"}, "", "", "", 0}});
    EXPECT_EQ(support::read_file("out"), "text\n");
    EXPECT_EQ(permissions_of("out"), 0755u);
}

TEST(vop_fix, output_file_can_be_the_input) {
    support::write_file("in", "<@A@>\n");
    check({{{"fix", "-DA=x", "-o", "in", "in"}, "", "", "", 0}});
    EXPECT_EQ(support::read_file("in"), "<x>\n");
}

TEST(vop_fix, failed_runs_leave_the_output_file_as_it_was) {
    support::write_file("out", "old");
    support::write_file("wrong", "text\n@A!\n");
    support::write_file("error", "text\n@! no\n");
    support::write_file("bad.dict", "-\n");
    check({
        {{"fix", "-o", "out", "wrong"},
         "",
         "",
         "wrong:2: unsupported @ operator in 'A!'\n",
         1},
        {{"fix", "-o", "out", "error"}, "", "", "vop: Error: no\n", 255},
        {{"fix", "-o", "out", "none"}, "", "", "vop: none: cannot open\n", 255},
        {{"fix", "-d", "bad.dict", "-o", "out", "wrong"},
         "",
         "",
         "vop: bad.dict:1 1st character must be alphabetic or an underbar\n",
         1},
    });
    EXPECT_EQ(support::read_file("out"), "old");
    EXPECT_FALSE(is_unfinished_left());
}

TEST(vop_fix, places_that_cannot_be_written_are_named) {
    support::write_file("in", "text\n");
    support::make_folders("folder");
    check({
        {{"fix", "-o", "none/out", "in"},
         "",
         "",
         "vop: none/out: No such file or directory\n",
         255},
        {{"fix", "-o", "folder", "in"},
         "",
         "",
         "vop: folder: not a regular file\n",
         255},
        {{"fix", "-o", "/dev/null", "in"},
         "",
         "",
         "vop: /dev/null: not a regular file\n",
         255},
    });
}

TEST(vop_fix, full_disk_is_reported) {
    support::write_file("in", "text\n");
    support::write_file("large", std::string(100000, 'x') + "\n");
    support::outcome end =
        support::run_program({"sh", "-c", program + " fix in >/dev/full"});
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "vop: standard output: No space left on device\n");
    support::write_file("out", "old");
    end = support::in_child([] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{5000, 5000};
        setrlimit(RLIMIT_FSIZE, &limit);
        execl(program.c_str(), "vop", "fix", "-o", "out", "large", nullptr);
    });
    EXPECT_EQ(end.exit_status, 255);
    EXPECT_EQ(end.err, "vop: out: Input/output error\n");
    EXPECT_EQ(support::read_file("out"), "old");
    EXPECT_FALSE(is_unfinished_left());
}

TEST(vop_fix, misuse_is_explained) {
    support::write_file("in", "text\n");
    check({
        {{"fix"}, "", "", "arguments are missing\n" + fix_usage, 255},
        {{"fix", "-o", "out"},
         "",
         "",
         "arguments are missing\n" + fix_usage,
         255},
        {{"fix", "-u", "-o", "out", "in"},
         "",
         "",
         "-o does not go with -u or -n\n" + fix_usage,
         255},
        {{"fix", "-q", "in"}, "", "", "-q: invalid flag\n" + fix_usage, 255},
    });
}

TEST(vop_dict, lists_what_is_defined) {
    support::write_file("one", "B 2\nA 1\n");
    support::write_file("two", "\nappend A @B@\n#{ inner\nC #\n");
    check({
        {{"dict", "one", "two"}, "", "A\t\t1 2\nB\t\t2\nC\t\t# NONE\n", "", 0},
        {{"dict", "-u", "one", "two"},
         "",
         "two:000002:A\t1 2\none:000001:B\t2\ninner:000002:C\t# NONE\n",
         "",
         0},
        {{"dict", "-"}, "A x\n", "A\t\tx\n", "", 0},
    });
}

TEST(vop_dict, lists_the_documented_dictionary) {
    const char page[] = "formats/dictionary.md";
    std::string list = support::doc_block(page, "listing");
    check({{{"dict", "-"}, support::doc_block(page, "dictionary"), list, "", 0},
           {{"dict", "-"}, list, list, "", 0}});
}

TEST(vop_dict, wrong_lines_give_status_1) {
    check({
        {{"dict", "-"},
         "A 1\n2\nB 3\n",
         "A\t\t1\nB\t\t3\n",
         "vop: -:2 1st character must be alphabetic or an underbar\n",
         1},
        {{"dict", "-", "-"}, "", "", "vop: cannot use stdin twice\n", 255},
        {{"dict", "none"}, "", "", "vop: none: cannot open\n", 255},
        {{"dict"},
         "",
         "",
         "arguments are missing\nUsage: vop dict [-u] DICT...\n"
         "Use -x flag for explanations\n",
         255},
    });
}

TEST(vop_dict, value_doubled_40_times_runs_out_of_memory) {
    std::string content = "A0 0123456789abcdef\n";
    for (int i = 1; i <= 40; ++i) {
        std::string before = "@A" + std::to_string(i - 1) + "@";
        content += "A" + std::to_string(i) + " " + before + before + "\n";
    }
    support::write_file("dict", content);
    support::outcome end = support::in_child([] {
        rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
#ifdef __SANITIZE_ADDRESS__
        setenv("ASAN_OPTIONS",
               "allocator_may_return_null=1:max_allocation_size_mb=256", 1);
#else
        rlimit limit{1 << 29, 1 << 29};
        setrlimit(RLIMIT_AS, &limit);
#endif
        execl(program.c_str(), "vop", "dict", "dict", nullptr);
    });
    EXPECT_EQ(end.signal, SIGABRT);
    std::string last = "vop: Ran out of memory\n";
    ASSERT_GE(end.err.size(), last.size()) << end.err;
    EXPECT_EQ(end.err.substr(end.err.size() - last.size()), last);
}

// Runs vop with an input that does not come, until its new file is there.
pid_t start_waiting(bool ignores_hangup) {
    unlink("input");
    EXPECT_EQ(mkfifo("input", 0600), 0);
    pid_t child = fork();
    if (child == 0) {
        if (ignores_hangup) signal(SIGHUP, SIG_IGN);
        execl(program.c_str(), "vop", "fix", "-o", "out", "input", nullptr);
        _exit(127);
    }
    while (!is_unfinished_left() && waitpid(child, nullptr, WNOHANG) == 0)
        usleep(1000);
    return child;
}

TEST(vop_fix, signals_leave_no_unfinished_file) {
    support::write_file("out", "old");
    for (int number : {SIGHUP, SIGINT, SIGTERM}) {
        pid_t child = start_waiting(false);
        EXPECT_TRUE(is_unfinished_left());
        kill(child, number);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), number);
        EXPECT_FALSE(is_unfinished_left());
        EXPECT_EQ(support::read_file("out"), "old");
    }
}

TEST(vop_fix, an_ignored_signal_stays_ignored) {
    pid_t child = start_waiting(true);
    kill(child, SIGHUP);
    support::write_file("input", "text\n");
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(is_unfinished_left());
    EXPECT_EQ(support::read_file("out"), "text\n");
}

}  // namespace
