// execstr_test.cc: running a command line.
#include "support/child.h"
#include "support/program.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <unistd.h>
#include <string>

namespace {

// `pa` shows its arguments; so does `fakesh`, which is the shell.
class execstr_test : public testing::Test {
  protected:
    void SetUp() override {
        support::write_argument_printer("bin/pa");
        support::write_argument_printer("bin/fakesh");
        std::string here = support::current_folder();
        setenv("PATH", (here + "/bin:/usr/bin:/bin").c_str(), 1);
        setenv("_T_sh", "fakesh", 1);
    }
};

std::string output_of(const std::string &line, int dash_e = 0) {
    support::outcome end = support::in_child(
        [&] { exit(WEXITSTATUS(execstr(0, 1, 2, 1, dash_e, line.c_str()))); });
    EXPECT_EQ(end.exit_status, 0) << line;
    EXPECT_EQ(end.err, "") << line;
    return end.out;
}

TEST_F(execstr_test, plain_words_run_without_a_shell) {
    EXPECT_EQ(output_of("pa -l"), "<pa><-l>");
    EXPECT_EQ(output_of(" \t\npa 'a b' \"c\\$d\""), "<pa><a b><c$d>");
    EXPECT_EQ(output_of("pa ''"), "<pa><>");
    EXPECT_EQ(output_of("pa \xc3\xa9"), "<pa><\xc3\xa9>");
}

TEST_F(execstr_test, other_lines_go_to_the_shell_whole) {
    for (const char *line : {"pa *", "A=b pa", "pa $HOME", "pa; pa", "pa\npa",
                             "pa >x", "pa `pa`", "pa \"$x\"", "pa | pa"}) {
        EXPECT_EQ(output_of(line),
                  "<fakesh><-c><" + std::string(line) + "\n\n>");
    }
}

TEST_F(execstr_test, the_shell_gets_the_line_as_it_was_written) {
    EXPECT_EQ(output_of("  pa 'a' \"b\"  \\c  ;\n"),
              "<fakesh><-c><pa 'a' \"b\"  \\c  ;\n\n\n>");
}

TEST_F(execstr_test, the_e_flag_reaches_the_shell_only) {
    EXPECT_EQ(output_of("pa;", 1), "<fakesh><-ce><pa;\n\n>");
    EXPECT_EQ(output_of("pa x", 1), "<pa><x>");
}

TEST_F(execstr_test, a_trailing_newline_alone_needs_no_shell) {
    EXPECT_EQ(output_of("pa x\n"), "<pa><x>");
}

TEST_F(execstr_test, a_first_word_exec_is_dropped) {
    EXPECT_EQ(output_of("exec pa arg"), "<pa><arg>");
    EXPECT_EQ(output_of("'exec' pa arg"), "<pa><arg>");
    EXPECT_EQ(output_of("pa exec"), "<pa><exec>");
    EXPECT_EQ(output_of("exec pa $x"), "<fakesh><-c><exec pa $x\n\n>");
}

TEST_F(execstr_test, only_one_exec_is_dropped) {
    support::write_argument_printer("bin/exec");
    EXPECT_EQ(output_of("exec exec a"), "<exec><a>");
}

TEST_F(execstr_test, the_dropped_words_slot_serves_the_shell_for_scripts) {
    support::write_program("bin/bare", "printf '<%s>' \"$@\"\n");
    EXPECT_EQ(output_of("bare a b"), "<a><b>");
    EXPECT_EQ(output_of("exec bare a b"), "<a><b>");
}

TEST_F(execstr_test, no_words_start_nothing) {
    for (const char *line : {"", "  \t\n", "exec", "\\\n"}) {
        EXPECT_EQ(execstr(0, 1, 2, 1, 0, line), 0) << line;
        support::outcome end = support::in_child([&] {
            set_exit_rtn([](int status) { printf("hook %d", status); });
            execstr(0, 1, 2, 0, 0, line);
            printf("it returned");
        });
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_EQ(end.out, "hook 0");
    }
}

TEST_F(execstr_test, without_fork_the_command_takes_our_place) {
    support::outcome end = support::in_child([] {
        printf("before ");
        execstr(0, 1, 2, 0, 0, "pa x");
        printf("it returned");
    });
    EXPECT_EQ(end.out, "before <pa><x>");
    EXPECT_EQ(end.exit_status, 0);
}

TEST_F(execstr_test, gives_the_wait_status) {
    support::write_script("bin/status", "exit $1");
    support::write_script("bin/suicide", "kill -9 $$");
    EXPECT_EQ(WEXITSTATUS(execstr(0, 1, 2, 1, 0, "status 7")), 7);
    EXPECT_EQ(execstr(0, 1, 2, 1, 0, "status 0"), 0);
    int status = execstr(0, 1, 2, 1, 0, "suicide");
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), 9);
}

TEST_F(execstr_test, a_command_that_is_not_there_ends_with_255) {
    int status = -1;
    EXPECT_EQ(
        support::stderr_of([&] { status = execstr(0, 1, 2, 1, 0, "nowhere"); }),
        "test: nowhere: not found\n");
    EXPECT_EQ(WEXITSTATUS(status), 255);
}

TEST_F(execstr_test, the_real_shell_runs_the_rest) {
    unsetenv("_T_sh");
    setenv("_T_sh", "sh", 1);
    EXPECT_EQ(output_of("echo a; echo b"), "a\nb\n");
    EXPECT_EQ(output_of("x=5 && echo $x"), "5\n");
    int status = execstr(0, 1, 2, 1, 1, "false; true");
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(execstr(0, 1, 2, 1, 0, "false; true"), 0);
}

TEST_F(execstr_test, calls_follow_each_other) {
    std::string expected;
    std::string got = support::stdout_of([&] {
        for (int i = 0; i < 30; i++) {
            std::string line = "pa";
            for (int word = 0; word < i; word++)
                line += " w";
            execstr(0, 1, 2, 1, 0, line.c_str());
            expected += "<pa>";
            for (int word = 0; word < i; word++)
                expected += "<w>";
        }
    });
    EXPECT_EQ(got, expected);
}

TEST_F(execstr_test, a_line_of_100_000_words) {
    support::write_script("bin/count", "echo $#");
    std::string line = "count";
    for (int i = 0; i < 100000; i++)
        line += " w" + std::to_string(i % 10);
    EXPECT_EQ(output_of(line), "100000\n");
}

TEST_F(execstr_test, a_line_too_long_for_the_system_is_reported) {
    std::string line = "pa " + std::string(8 << 20, 'x');
    EXPECT_EQ(support::stderr_of([&] { execstr(0, 1, 2, 1, 0, line.c_str()); }),
              "test: pa: arg list too long\n");
}

TEST_F(execstr_test, descriptors_become_the_commands) {
    support::write_script("bin/copy", "cat; echo oops >&2");
    support::write_file("in", "input");
    FILE *in = fopen("in", "r");
    FILE *out = fopen("out", "w");
    FILE *err = fopen("err", "w");
    EXPECT_EQ(execstr(fileno(in), fileno(out), fileno(err), 1, 0, "copy"), 0);
    EXPECT_EQ(support::read_file("out"), "input");
    EXPECT_EQ(support::read_file("err"), "oops\n");
    for (FILE *file : {in, out, err})
        EXPECT_EQ(fclose(file), 0);
}

}  // namespace
