// testdrvr_test.cc: programs that run named tests.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/errexit.h>
#include <tovan/testdrvr.h>
#include <tovan/usage.h>

namespace {

int print_vector(int argc, char **argv) {
    printf("%d", argc);
    for (char **word = argv; *word != nullptr; word++)
        printf("<%s>", *word);
    putchar('\n');
    return 0;
}

// Succeeds without arguments; its result is the sum of those it has.
int add_up(int argc, char **argv) {
    int sum = 0;
    for (int i = 1; i < argc; i++)
        sum += atoi(argv[i]);
    return sum;
}

int always_four(int, char **) {
    return 4;
}

int lose_arguments(int argc, char **argv) {
    for (int i = 0; i < argc; i++)
        argv[i] = nullptr;
    return 0;
}

__extension__ const testrec show = {
    "show",
    nullptr,
    print_vector,
    {"Shows its arguments.", "\tin <>", nullptr}};
__extension__ const testrec sum = {
    "sum", nullptr, add_up, {"Adds its arguments up.", nullptr}};
__extension__ const testrec four = {"four", nullptr, always_four, {nullptr}};
__extension__ const testrec named_all = {
    "all", nullptr, always_four, {"Never called.", nullptr}};
__extension__ const testrec second_sum = {
    "sum", nullptr, always_four, {"Never called.", nullptr}};
__extension__ const testrec loser = {
    "loser", nullptr, lose_arguments, {"Forgets.", nullptr}};

const testrec *const both[] = {&show, &sum, nullptr};
const testrec *const three[] = {&show, &sum, &four, nullptr};
const testrec *const none[] = {nullptr};

const std::string explanation =
    "drive [-xvX] [-V dflags] [test <flags>]\n\n"
    "No program description provided\n"
    "\n"
    "-x\t\tdisplay this explanation\n"
    "-v\t\tverbosely report beginning and end of each test\n"
    "-X\t\texplain the named tests (default all)\n"
    "test <flags>\trun test with flags - use `--' to\n"
    "\t\tterminate flags for test\n"
    "\t\tuse all to do all tests\n";

const std::string list =
    "\nSupported tests\nshow\tShows its arguments.\n"
    "sum\tAdds its arguments up.\nfour\t\n";

const std::string show_explained =
    "Test show:\nShows its arguments.\n\tin <>\n";
const std::string sum_explained = "Test sum:\nAdds its arguments up.\n";
const std::string four_explained = "Test four:\n";
const std::string all_explained =
    show_explained + "\n" + sum_explained + "\n" + four_explained;

std::string invalid(const std::string &letter) {
    return "-" + letter +
           ": invalid flag\nUsage: drive [-xvX] [-V dflags] [test <flags>]\n"
           "Use -x flag for explanations\n";
}

// Calls the driver as the main function of bin/drive does.
int drive(std::vector<std::string> words, const testrec *const *table) {
    static char name[] = "bin/drive";  // progname points into it
    std::vector<char *> argv = {name};
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    return testdriver(static_cast<int>(argv.size()) - 1, argv.data(), table);
}

struct row {
    std::vector<std::string> words;
    std::string out;
    std::string err;
    int status;
};

void check(const std::vector<row> &rows, const testrec *const *table) {
    for (const row &expected : rows) {
        support::outcome end =
            support::in_child([&] { exit(drive(expected.words, table)); });
        std::string line;
        for (const std::string &word : expected.words)
            line += word + " ";
        EXPECT_EQ(end.out, expected.out) << line;
        EXPECT_EQ(end.err, expected.err) << line;
        EXPECT_EQ(end.exit_status, expected.status) << line;
    }
}

TEST(testdriver, runs_every_test_in_table_order_without_names) {
    check({{{}, "1<show>\n", "", 0},
           {{"-"}, "1<show>\n", "", 0},
           {{"all"}, "1<show>\n", "", 0},
           {{"all", "--"}, "1<show>\n", "", 0}},
          both);
    check({{{}, "1<show>\n", "drive: End four, result = 4\n", 4}}, three);
    check({{{}, "", "", 0}, {{"all"}, "", "", 0}}, none);
}

TEST(testdriver, gives_each_test_the_words_up_to_two_dashes) {
    check({{{"show"}, "1<show>\n", "", 0},
           {{"show", "a", "b"}, "3<show><a><b>\n", "", 0},
           {{"show", "a", "b", "--", "show", "c"},
            "3<show><a><b>\n2<show><c>\n",
            "",
            0},
           {{"show", "--"}, "1<show>\n", "", 0},
           {{"show", "sum", "-v", "---", "-", ""},
            "6<show><sum><-v><---><-><>\n",
            "",
            0},
           {{"all", "1", "2"},
            "3<show><1><2>\n",
            "drive: End sum, result = 3\n",
            3},
           {{"show", "a", "--", "all"}, "2<show><a>\n1<show>\n", "", 0}},
          both);
}

TEST(testdriver, ors_the_results) {
    check({{{"sum", "1", "--", "sum", "3", "--", "sum"},
            "",
            "drive: End sum, result = 1\ndrive: End sum, result = 3\n",
            3},
           {{"sum", "3", "--", "four"},
            "",
            "drive: End sum, result = 3\ndrive: End four, result = 4\n",
            7},
           {{"all", "2"},
            "2<show><2>\n",
            "drive: End sum, result = 2\ndrive: End four, result = 4\n",
            6},
           {{"sum", "-1"}, "", "drive: End sum, result = -1\n", 255}},
          three);
}

TEST(testdriver, verbose_frames_each_test) {
    check({{{"-v", "sum", "3"},
            "",
            "drive: Begin  sum 3 {\n} drive: End sum, result = 3\n",
            3},
           {{"-v"},
            "1<show>\n",
            "drive: Begin  show {\n} drive: End show, result = 0\n"
            "drive: Begin  sum {\n} drive: End sum, result = 0\n",
            0},
           {{"-vv", "-", "-v", "show", "a", "--", "sum"},
            "2<show><a>\n",
            "drive: Begin  show a {\n} drive: End show, result = 0\n"
            "drive: Begin  sum {\n} drive: End sum, result = 0\n",
            0}},
          both);
}

TEST(testdriver, explains_itself_and_lists_the_tests) {
    check({{{"-x"}, explanation + list, "", 0},
           {{"-?"}, explanation + list, "", 0},
           {{"-Xvx", "sum", "1"}, explanation + list, "", 0},
           {{"-v", "-x", "-z"}, explanation + list, "", 0}},
          three);
}

TEST(testdriver, explanation_starts_with_the_programs_description) {
    progdesc = "Drives tests.";
    support::outcome end = support::in_child([] { exit(drive({"-x"}, none)); });
    EXPECT_EQ(end.out.find("drive [-xvX] [-V dflags] [test <flags>]\n\n"
                           "Drives tests.\n\n-x\t"),
              0u);
}

TEST(testdriver, explanation_leaves_through_the_exit_hook) {
    support::outcome end = support::in_child([] {
        set_exit_rtn([](int status) { fprintf(stderr, "hook %d", status); });
        drive({"-x"}, none);
    });
    EXPECT_EQ(end.err, "hook 0");
}

TEST(testdriver, explains_tests) {
    check(
        {{{"-X"}, all_explained, "", 0},
         {{"-X", "all"}, all_explained, "", 0},
         {{"-vX", "four"}, four_explained, "", 0},
         {{"-X", "sum", "show"}, sum_explained + "\n" + show_explained, "", 0},
         {{"-X", "no"}, "-X no: unknown test\n", "", 0},
         {{"-X", "no", "sum", "", "all"},
          "-X no: unknown test\n" + sum_explained + "-X : unknown test\n\n" +
              all_explained,
          "",
          0},
         {{"-X", "sum", "--", "sum"},
          sum_explained + "-X --: unknown test\n\n" + sum_explained,
          "",
          0}},
        three);
}

TEST(testdriver, an_unknown_test_is_fatal_when_its_turn_comes) {
    check(
        {{{"no"}, "", "drive: no: unknown test\n", 255},
         {{""}, "", "drive: : unknown test\n", 255},
         {{"sho"}, "", "drive: sho: unknown test\n", 255},
         {{"show", "--", "no"}, "1<show>\n", "drive: no: unknown test\n", 255},
         {{"show", "--", "--"}, "1<show>\n", "drive: --: unknown test\n", 255}},
        both);
}

TEST(testdriver, refuses_other_letters) {
    check({{{"-z"}, "", invalid("z"), 255},
           {{"-V", "all"}, "", invalid("V"), 255},
           {{"-vz", "show"}, "", invalid("z"), 255},
           {{"--", "show"}, "", invalid("-"), 255},
           {{"--help"}, "", invalid("-"), 255},
           {{"-X", "-V"}, "", invalid("V"), 255}},
          both);
}

TEST(testdriver, sets_progname) {
    support::outcome end = support::in_child([] {
        drive({}, none);
        fputs(progname, stdout);
    });
    EXPECT_EQ(end.out, "drive");
}

TEST(testdriver, keeps_the_bits_of_earlier_calls) {
    support::outcome end = support::in_child([] {
        printf("%d ", drive({"sum", "1"}, both));
        printf("%d ", drive({"sum", "2"}, both));
        printf("%d ", drive({"sum"}, both));
        printf("%d", drive({"-X"}, none));
    });
    EXPECT_EQ(end.out, "1 3 3 0");
}

TEST(testdriver, looks_at_no_more_words_than_it_is_given) {
    char name[] = "bin/drive";
    char word[] = "-X";
    char *argv[] = {name, word, word};
    EXPECT_EQ(support::stdout_of([&] { testdriver(1, argv, both); }),
              "1<show>\n");
    EXPECT_EQ(support::stdout_of([&] { testdriver(0, nullptr, both); }),
              "1<show>\n");
}

TEST(testdriver, all_names_every_test_whatever_the_last_one_did) {
    const testrec *const table[] = {&loser, &sum, nullptr};
    check({{{"-v", "all"},
            "",
            "drive: Begin  loser {\n} drive: End loser, result = 0\n"
            "drive: Begin  sum {\n} drive: End sum, result = 0\n",
            0}},
          table);
}

TEST(listtests, writes_names_and_summaries) {
    EXPECT_EQ(support::stdout_of([] { listtests(three); }), list);
    EXPECT_EQ(support::stdout_of([] { listtests(none); }),
              "\nSupported tests\n");
}

TEST(expltest, separates_all_tests_of_the_process_but_the_first) {
    EXPECT_EQ(support::stdout_of([] { expltest(&sum, three); }), sum_explained);
    EXPECT_EQ(support::stdout_of([] { expltest(&sum, none); }),
              "\n" + sum_explained);
    EXPECT_EQ(
        support::stdout_of([] { expltest(findtest("all", both), three); }),
        "\n" + all_explained);
}

TEST(findtest, finds_the_first_of_that_very_name) {
    const testrec *const table[] = {&show, &sum, &second_sum, nullptr};
    EXPECT_EQ(findtest("sum", table), &sum);
    for (const char *name : {"su", "summ", "Sum", "", "All", "all "})
        EXPECT_EQ(findtest(name, table), nullptr) << name;
    EXPECT_EQ(findtest("sum", none), nullptr);
}

TEST(findtest, all_is_no_test_of_the_table) {
    const testrec *const table[] = {&named_all, nullptr};
    const testrec *all = findtest("all", table);
    ASSERT_NE(all, nullptr);
    EXPECT_NE(all, &named_all);
    EXPECT_EQ(all, findtest("all", none));
    EXPECT_STREQ(all->name, "all");
}

TEST(runtest, outside_of_the_driver_gives_the_name_alone) {
    EXPECT_EQ(support::stdout_of([] { runtest(&show, none); }), "1<show>\n");
    EXPECT_EQ(support::stdout_of([] {
                  drive({"show", "a"}, both);
              }),
              "2<show><a>\n");
    EXPECT_EQ(support::stdout_of([] { runtest(&show, none); }), "1<show>\n");
    EXPECT_EQ(support::stdout_of([] { runtest(findtest("all", none), both); }),
              "1<show>\n");
}

TEST(runtest, flushes_standard_output) {
    support::outcome end = support::in_child([] {
        runtest(&show, none);
        quick_exit(0);
    });
    EXPECT_EQ(end.out, "1<show>\n");
}

TEST(testexit, does_nothing) {
    EXPECT_EQ(support::stdout_of(testexit) + support::stderr_of(testexit), "");
}

}  // namespace
