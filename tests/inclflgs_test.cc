// inclflgs_test.cc: include flags from a heap of variables.
#include "support/child.h"
#include "support/variables.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/dospath.h>

namespace {

std::string flags() {
    dy output;
    dynew(&output, 0);
    dystr(&output, "cc ");
    inclflgs(&output);
    std::string text = output.buffer;
    free(output.buffer);
    return text;
}

// One process a row: the flags are built once.
TEST(inclflgs, inclflgs_rows) {
    const char *const rows[][2] = {
        {"a", "cc -Ia"},
        {"a b", "cc -Ia -Ib"},
        {" \t/usr/include \n../x\t", "cc -I/usr/include -I../x"},
        {"a a", "cc -Ia -Ia"},
        {"-Ia", "cc -I-Ia"},
        {"", "cc "},
        {" \t\n ", "cc "},
    };
    for (const auto &row : rows) {
        support::outcome end = support::in_child([&] {
            support::load_variables({{"InclPath", row[0]}});
            fputs(flags().c_str(), stdout);
        });
        EXPECT_EQ(end.out, row[1]) << end.err;
    }
}

TEST(inclflgs, an_unset_variable_gives_nothing) {
    support::load_variables({{"Other", "x"}});
    EXPECT_EQ(flags(), "cc ");
}

TEST(inclflgs, are_built_once) {
    support::load_variables({{"InclPath", "a b"}});
    EXPECT_EQ(flags(), "cc -Ia -Ib");
    support::load_variables({{"InclPath", "c"}});
    EXPECT_EQ(flags(), "cc -Ia -Ib");
}

TEST(inclflgs, nothing_is_kept_as_well) {
    support::load_variables({{"Other", "x"}});
    EXPECT_EQ(flags(), "cc ");
    support::load_variables({{"InclPath", "c"}});
    EXPECT_EQ(flags(), "cc ");
}

TEST(inclflgs, variables_must_be_loaded) {
    EXPECT_FATAL(flags(), 255,
                 "test: LOGIC ERROR: lvvar() called before lvget()\n");
}

TEST(inclflgs, many_words) {
    std::string words, expected = "cc";
    for (int i = 0; i < 5000; ++i) {
        words += std::to_string(i) + "  ";
        expected += " -I" + std::to_string(i);
    }
    support::load_variables({{"InclPath", words}});
    EXPECT_EQ(flags(), expected);
}

}  // namespace
