// lvchksys_test.cc: conditions over the build tree's variables.
#include "support/child.h"
#include "support/expansion.h"

#include <gtest/gtest.h>
#include <tovan/lvexpand.h>

namespace {

TEST(lvchksys, gives_the_value_of_the_expanded_condition) {
    support::load_variables(
        {{"N", "3"}, {"Sum", "1 + 1"}, {"System[Name]", "lx64"}});
    const struct {
        const char *condition;
        int value;
    } rows[] = {
        {"1", 1},
        {" 0 ", 0},
        {"@N * 2", 6},
        {"-@N", -3},
        {"@Sum", 2},
        {"@(sys lx*) && !@(empty x)", 1},
        {"@(sys sun*) || @(empty x)", 0},
        {"0x7fffffff", 2147483647},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(lvchksys(row.condition, "f", 1), row.value) << row.condition;
    }
}

TEST(lvchksys, sets_the_position_for_messages) {
    support::load_variables({});
    lvchksys("1", "vopfile", 9);
    EXPECT_STREQ(curfile, "vopfile");
    EXPECT_EQ(curln, 9);
    EXPECT_FATAL(lvchksys("@(nosuch)", "vopfile", 9), 255,
                 "test:vopfile:9: unsupported kivs function `nosuch'\n"
                 "test: aborted due to above error in kivs expansion\n");
}

TEST(lvchksys, shows_a_wrong_condition_as_it_was_given) {
    support::load_variables({{"N", "3"}});
    const struct {
        const char *condition;
        const char *file;
        int line;
        const char *expected;
    } rows[] = {
        {"@N +", "f", 7, "test: f:7:Syntax error in @N +\n"},
        {"", "f", 0, "test: f:0:Syntax error in \n"},
        {"@Unset", "f", 1, "test: f:1:Syntax error in @Unset\n"},
        {"1/0", "f", 1, "test: f:1:Syntax error in 1/0\n"},
        {"x", nullptr, 1, "test: :1:Syntax error in x\n"},
    };
    for (const auto &row : rows) {
        EXPECT_FATAL(lvchksys(row.condition, row.file, row.line), 255,
                     row.expected);
    }
}

TEST(lvchksys, starts_afresh_each_time) {
    support::load_variables({});
    EXPECT_EQ(lvchksys("12", "f", 1), 12);
    EXPECT_EQ(lvchksys("3", "f", 1), 3);
}

}  // namespace
