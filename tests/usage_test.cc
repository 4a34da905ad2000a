// usage_test.cc: how a tool explains itself.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <tovan/errexit.h>
#include <tovan/usage.h>

namespace {

const char *const lines[] = {"-a\tfirst", "", "-b\tsecond", nullptr};
const char *const no_lines[] = {nullptr};

TEST(usage, writes_message_usage_line_and_hint_and_ends_with_255) {
    usestrs("[-ab] FILE", lines);
    EXPECT_FATAL(usage("-%c: invalid flag", 'z'), 255,
                 "-z: invalid flag\n"
                 "Usage: test [-ab] FILE\n"
                 "Use -x flag for explanations\n");
}

TEST(usage, without_a_format_there_is_no_message) {
    usestrs("[-ab]", lines);
    EXPECT_FATAL(usage(nullptr), 255,
                 "Usage: test [-ab]\nUse -x flag for explanations\n");
}

TEST(usage, leaves_through_the_exit_hook) {
    usestrs("FILE", nullptr);
    set_exit_rtn([](int status) { fprintf(stderr, "hook %d\n", status); });
    EXPECT_FATAL(usage(nullptr), 255, "Usage: test FILE\nhook -1\n");
}

TEST(use_dash_x, says_nothing_without_explanations) {
    EXPECT_EQ(support::stderr_of([] { use_dash_x(); }), "");
    usestrs("FILE", no_lines);
    EXPECT_EQ(support::stderr_of([] { use_dash_x(); }), "");
    usestrs(nullptr, lines);
    EXPECT_EQ(support::stderr_of([] { use_dash_x(); }),
              "Use -x flag for explanations\n");
}

TEST(explflags, writes_synopsis_and_lines_to_standard_output) {
    usestrs("[-ab]", lines);
    EXPECT_EQ(support::stdout_of([] { explflags(); }),
              "test [-ab]\n\n-a\tfirst\n\n-b\tsecond\n");
}

TEST(explflags, leaves_out_what_is_not_registered) {
    EXPECT_EQ(support::stdout_of([] { explflags(); }), "");
    usestrs(nullptr, lines);
    EXPECT_EQ(support::stdout_of([] { explflags(); }),
              "-a\tfirst\n\n-b\tsecond\n");
    usestrs("[-ab]", nullptr);
    EXPECT_EQ(support::stdout_of([] { explflags(); }), "test [-ab]\n\n");
}

TEST(progdesc, says_that_nothing_was_said) {
    EXPECT_STREQ(progdesc, "No program description provided");
}

}  // namespace
