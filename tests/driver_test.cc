// driver_test.cc: a test program in C on the driver, run as its users run it.
#include "support/child.h"
#include "support/program.h"

#include <gtest/gtest.h>

namespace {

const std::string program = TOVAN_BINARY_DIR "/tests/driver";

struct row {
    std::vector<std::string> words;
    std::string out;
    std::string err;
    int status;
};

void check(const std::vector<row> &rows) {
    for (const row &each : rows) {
        std::vector<std::string> words = each.words;
        words.insert(words.begin(), program);
        support::check_run(words, "", {each.out, each.err, each.status});
    }
}

const std::string all_output =
    "0\n-1\n2147483647\n-2147483648\n0: \n1: one\n3: one two three\n";

TEST(driver, its_tests_succeed) {
    check({{{}, all_output, "", 0}, {{"all"}, all_output, "", 0}});
}

TEST(driver, tests_take_arguments) {
    check(
        {{{"numbers", "7", "12345"}, "7\n12345\n", "", 0},
         {{"words", " a\tb ", "--", "match", "x.o", "*.o"}, "2: a b\n", "", 0},
         {{"match", "-rxp", "main.c", "^m.*c$", "--", "fail"}, "", "", 0}});
}

TEST(driver, the_status_tells_which_tests_failed) {
    check({{{"fail", "16"}, "", "driver: End fail, result = 16\n", 16},
           {{"match", "x.o", "*.c", "--", "numbers", "007", "--", "fail", "8"},
            "7\n",
            "driver: End match, result = 4\n"
            "driver: End numbers, result = 1\n"
            "driver: End fail, result = 8\n",
            13}});
}

TEST(driver, output_stands_inside_its_verbose_frame) {
    support::outcome end = support::run_program(
        {"sh", "-c", "exec \"$0\" -v numbers 7 2>&1", program});
    EXPECT_EQ(end.out,
              "driver: Begin  numbers 7 {\n7\n"
              "} driver: End numbers, result = 0\n");
}

TEST(driver, explains_itself) {
    check({{{"-x"},
            "driver [-xvX] [-V dflags] [test <flags>]\n\n"
            "Tries functions of libtovan on arguments.\n"
            "\n"
            "-x\t\tdisplay this explanation\n"
            "-v\t\tverbosely report beginning and end of each test\n"
            "-X\t\texplain the named tests (default all)\n"
            "test <flags>\trun test with flags - use `--' to\n"
            "\t\tterminate flags for test\n"
            "\t\tuse all to do all tests\n"
            "\nSupported tests\n"
            "numbers\tReads and writes numbers.\n"
            "words\tSplits lines into words.\n"
            "match\tMatches a name.\n"
            "fail\tFails on request.\n",
            "",
            0},
           {{"-X", "fail", "match"},
            "Test fail:\nFails on request.\nfail [RESULT]\n"
            "\n"
            "Test match:\nMatches a name.\n"
            "match [-rxp | -exact] [-reverse] [NAME PATTERN...]\n"
            "Result 4 when no pattern matches.\n",
            "",
            0}});
}

}  // namespace
