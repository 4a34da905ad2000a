// rxprewrt_test.cc: replacement texts from the last match.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/rxpcomp.h>

namespace {

std::string rewritten(const char *pattern, const char *subject,
                      const char *replacement) {
    EXPECT_GT(rxpcomp(pattern, 0, 0), 0) << pattern;
    rxpeval(subject);
    char *text = rxprewrite(replacement);
    std::string copy = text;
    free(text);
    return copy;
}

TEST(rxprewrite, every_sequence) {
    const struct {
        const char *replacement;
        const char *expected;
    } rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"\\0", "key=value"},
        {"\\2 is \\1", "value is key"},
        {"[\\1\\1]", "[keykey]"},
        {"\\\\", "\\"},
        {"\\\\1", "\\1"},
        {"a\\bb\\nc\\rd\\te", "a\bb\nc\rd\te"},
        {"\\x\\.", "\\x\\."},
        {"\\x\\1", "\\xkey"},
        {"\\", "\\"},
        {"end\\", "end\\"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(rewritten("\\([a-z]+\\)=\\([a-z]+\\)", "; key=value;",
                            row.replacement),
                  row.expected)
            << row.replacement;
    }
}

TEST(rxprewrite, pairs_above_the_count_are_nothing) {
    EXPECT_EQ(rewritten("\\(a\\)\\(b\\)", "ab", "<\\5>"), "<>");
    EXPECT_EQ(rewritten("a", "a", "<\\1\\9>"), "<>");
}

TEST(rxprewrite, a_longer_match_before_does_not_show_through) {
    EXPECT_EQ(rewritten("\\(a\\)\\(b\\)", "ab", "\\2"), "b");
    EXPECT_EQ(rewritten("\\(a\\)", "ab", "<\\2>"), "<>");
    EXPECT_EQ(rewritten("x", "ab", "<\\0\\1>"), "<>");
}

TEST(rxprewrite, submatches_that_did_not_take_part_are_nothing) {
    EXPECT_EQ(rewritten("<\\(a\\)b|\\(c\\)d>*\\(e\\)", "e", "<\\1\\2>"), "<e>");
}

TEST(rxprewrite, text_is_the_callers_own) {
    ASSERT_GT(rxpcomp("b+", 0, 0), 0);
    char subject[] = "abbc";
    ASSERT_EQ(rxpeval(subject), 1);
    char *first = rxprewrite("\\0");
    char *second = rxprewrite("\\0\\0");
    subject[1] = 'x';
    EXPECT_STREQ(first, "bb");
    EXPECT_STREQ(second, "bbbb");
    free(first);
    free(second);
}

TEST(rxprewrite, long_texts) {
    std::string subject(100000, 'a');
    std::string expected = subject + "," + subject;
    EXPECT_EQ(rewritten("a*", subject.c_str(), "\\0,\\0"), expected);
}

}  // namespace
