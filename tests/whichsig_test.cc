// whichsig_test.cc: signal names and numbers.
#include <gtest/gtest.h>
#include <limits.h>
#include <tovan/wait4pid.h>
#include <string>

namespace {

const struct {
    const char *name;
    int number;
} table[] = {
    {"ABRT", 6},  {"ALRM", 14}, {"BUS", 7},     {"CHLD", 17},  {"CONT", 18},
    {"FPE", 8},   {"HUP", 1},   {"ILL", 4},     {"INT", 2},    {"IO", 29},
    {"IOT", 6},   {"KILL", 9},  {"PIPE", 13},   {"POLL", 29},  {"PROF", 27},
    {"PWR", 30},  {"QUIT", 3},  {"SEGV", 11},   {"STOP", 19},  {"TERM", 15},
    {"TRAP", 5},  {"TSTP", 20}, {"TTIN", 21},   {"TTOU", 22},  {"URG", 23},
    {"USR1", 10}, {"USR2", 12}, {"VTALRM", 26}, {"WINCH", 28}, {"XCPU", 24},
    {"XFSZ", 25},
};

TEST(whichsig, knows_every_name) {
    for (const auto &row : table) {
        EXPECT_EQ(whichsig(row.name), row.number) << row.name;
    }
}

TEST(whichsig, reads_names_exactly_and_numbers_to_the_end) {
    const struct {
        const char *text;
        int number;
    } rows[] = {
        {"SIGINT", -1},
        {"int", -1},
        {"Int", -1},
        {"INT ", -1},
        {"IN", -1},
        {"", -1},
        {" 2", -1},
        {"-2", -1},
        {"+2", -1},
        {"A", -1},
        {"Z", -1},
        {"[", -1},
        {"@", -1},
        {"0", -1},
        {"00", -1},
        {"2", 2},
        {"002", 2},
        {"12x", -1},
        {"12 ", -1},
        {"31", 31},
        {"1000", 1000},
        {"4294967298", -1},
        {"2147483647", INT_MAX},
        {"2147483648", -1},
        {"99999999999999999999", -1},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(whichsig(row.text), row.number) << row.text;
    }
}

TEST(signame, gives_the_first_name_of_each_number) {
    for (const auto &row : table) {
        std::string expected = row.name;
        if (expected == "IOT") expected = "ABRT";
        if (expected == "POLL") expected = "IO";
        EXPECT_EQ(signame(row.number), expected);
    }
}

TEST(signame, shows_other_numbers_as_they_are) {
    const struct {
        int number;
        const char *text;
    } rows[] = {
        {0, "#0"},   {16, "#16"}, {31, "#31"},
        {64, "#64"}, {-1, "#-1"}, {INT_MIN, "#-2147483648"},
    };
    for (const auto &row : rows)
        EXPECT_STREQ(signame(row.number), row.text);
}

TEST(signame, uses_one_buffer_for_unnamed_numbers) {
    const char *first = signame(31);
    const char *second = signame(32);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "#32");
}

TEST(highest_sig, is_the_largest_of_the_table) {
    EXPECT_EQ(highest_sig(), 30);
    EXPECT_EQ(highest_sig(), 30);
}

TEST(stopsignum, is_the_terminal_stop) {
    EXPECT_EQ(stopsignum(), 20);
    EXPECT_STREQ(signame(stopsignum()), "TSTP");
}

}  // namespace
