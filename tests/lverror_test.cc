// lverror_test.cc: messages about the text that is being expanded.
#include "support/child.h"

#include <gtest/gtest.h>
#include <tovan/errexit.h>
#include <tovan/lvexpand.h>

namespace {

struct position_row {
    const char *tool;
    const char *file;
    int line;
    std::string expected;
};

void set_position(const position_row &row) {
    progname = row.tool;
    curfile = row.file;
    curln = row.line;
}

const std::string aborted = "aborted due to above error in kivs expansion\n";

TEST(lverror, names_tool_file_and_line_and_ends_with_255) {
    const position_row rows[] = {
        {"tool", "f", 0, "tool:f: a 3\ntool: " + aborted},
        {"tool", "f", 12, "tool:f:12: a 3\ntool: " + aborted},
        {"tool", "f", -1, "tool:f:-1: a 3\ntool: " + aborted},
        {nullptr, "f", 12, "f:12: a 3\n" + aborted},
        {nullptr, "f", 0, "f: a 3\n" + aborted},
        {"tool", nullptr, 12, "tool::12: a 3\ntool: " + aborted},
        {"tool", nullptr, 0, "tool:: a 3\ntool: " + aborted},
        {"tool", "", 0, "tool:: a 3\ntool: " + aborted},
    };
    for (const position_row &row : rows) {
        set_position(row);
        EXPECT_FATAL(lverror("%s %d", "a", 3), 255, row.expected);
    }
}

TEST(lvwarning, says_warning_only_without_a_line) {
    const position_row rows[] = {
        {"tool", "f", 0, "tool:f: Warning: a 3\n"},
        {"tool", "f", 12, "tool:f:12: a 3\n"},
        {nullptr, "f", 0, "f: Warning: a 3\n"},
        {nullptr, "f", 12, "f:12: a 3\n"},
        {"tool", nullptr, 0, "tool:: Warning: a 3\n"},
        {"tool", nullptr, 5, "tool::5: a 3\n"},
    };
    for (const position_row &row : rows) {
        set_position(row);
        EXPECT_EQ(support::stderr_of([] { lvwarning("%s %d", "a", 3); }),
                  row.expected);
    }
}

TEST(lverror, runs_the_exit_hook) {
    set_position({"tool", "f", 0, ""});
    support::outcome ended = support::in_child([] {
        set_exit_rtn([](int status) { eprintf("hook %d\n", status); });
        lverror("x");
    });
    EXPECT_EQ(ended.exit_status, 255);
    EXPECT_EQ(ended.err, "tool:f: x\ntool: " + aborted + "hook -1\n");
}

}  // namespace
