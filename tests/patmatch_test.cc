// patmatch_test.cc: one word against a list of patterns or subjects.
#include <gtest/gtest.h>
#include <tovan/fmatch.h>
#include <tovan/rxpcomp.h>
#include <string>
#include <vector>

namespace {

int result_of(std::vector<const char *> words) {
    words.push_back(nullptr);
    return patmatch(words.data());
}

struct row {
    std::vector<const char *> words;
    int result;
};

void expect_rows(const std::vector<row> &rows) {
    for (const row &each : rows) {
        std::string shown;
        for (const char *word : each.words)
            shown += std::string(" ") + word;
        EXPECT_EQ(result_of(each.words), each.result) << shown;
    }
}

TEST(patmatch, the_first_operand_is_matched_against_the_others) {
    expect_rows({{{"main.c", "*.h", "*.c"}, 1},
                 {{"main.c", "*.h", "*.o"}, 0},
                 {{"main.c", "!*.c", "!x"}, 1},
                 {{"main.c", "{main,test}.c"}, 1},
                 {{"*.c", "main.c"}, 0}});
}

TEST(patmatch, without_operands_nothing_matches) {
    expect_rows({{{}, 0},
                 {{"a"}, 0},
                 {{"-exact"}, 0},
                 {{"-exact", "a"}, 0},
                 {{"-rxp"}, 0},
                 {{"-rxp", "a"}, 0},
                 {{"-reverse"}, 0},
                 {{"-reverse", "*"}, 0},
                 {{"-rxp", "-reverse", "a"}, 0}});
}

TEST(patmatch, exact_compares_texts) {
    expect_rows({{{"-exact", "a*", "ab", "a*"}, 1},
                 {{"-exact", "ab", "a*", "!x"}, 0},
                 {{"-exact", "", "a", ""}, 1}});
}

TEST(patmatch, rxp_takes_regular_expressions) {
    expect_rows({{{"-rxp", "main.c", "\\.h$", "^ma.*c$"}, 1},
                 {{"-rxp", "main.c", "\\.h$", "^a"}, 0},
                 {{"-rxp", "main.c", "!x"}, 1},
                 {{"-rxp", "main.c", ""}, 1},
                 {{"-rxp", "Main", "main"}, 0},
                 {{"-rxp", "a/b", "a/b"}, 1}});
}

TEST(patmatch, an_expression_that_does_not_compile_is_skipped) {
    expect_rows({{{"-rxp", "abc", "*", "[", "b"}, 1},
                 {{"-rxp", "abc", "*", "["}, 0},
                 {{"-rxp", "-reverse", "[", "abc", "["}, 0}});
}

TEST(patmatch, reverse_exchanges_the_roles) {
    expect_rows({{{"-reverse", "*.c", "a.h", "b.c"}, 1},
                 {{"-reverse", "*.c", "a.h", "b.o"}, 0},
                 {{"-reverse", "!*.c", "a.c", "b.o"}, 1},
                 {{"-reverse", "-exact", "*", "a", "*"}, 1},
                 {{"-reverse", "-exact", "*", "a"}, 0},
                 {{"-rxp", "-reverse", "b$", "ba", "ab"}, 1},
                 {{"-reverse", "-rxp", "b$", "ba", "aa"}, 0},
                 {{"-reverse", "-reverse", "*.c", "a.c"}, 1},
                 {{"-reverse", "-reverse", "a.c", "*.c"}, 0}});
}

TEST(patmatch, the_last_mode_counts) {
    expect_rows({{{"-rxp", "-exact", "abc", "b"}, 0},
                 {{"-exact", "-rxp", "abc", "b"}, 1},
                 {{"-exact", "-reverse", "-rxp", "b", "abc"}, 1}});
}

TEST(patmatch, any_other_word_with_a_dash_is_the_first_operand) {
    expect_rows({{{"-x", "-*"}, 1},
                 {{"-exact", "-x", "-x"}, 1},
                 {{"-exact", "-", "-reverse", "-"}, 1},
                 {{"--", "-rxp", "--"}, 1},
                 {{"-rxpx", "-rxp*"}, 1},
                 {{"a", "-rxp", "-exact", "a"}, 1},
                 {{"-exact", "-x", "-rxp", "-X"}, 0}});
}

TEST(patmatch, rxp_leaves_the_match_behind) {
    EXPECT_EQ(result_of({"-rxp", "key=value", "x", "\\([a-z]+\\)="}), 1);
    EXPECT_EQ(matches.count, 1);
    EXPECT_EQ(std::string(matches.pair[1].start, matches.pair[1].end), "key");
}

}  // namespace
