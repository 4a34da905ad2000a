// rxppeval_test.cc: where and how patterns match.
#include "support/rxp_model.h"

#include <gtest/gtest.h>
#include <string.h>
#include <tovan/rxpcomp.h>

namespace {

// "start-end" of each pair, "no" for no match; "?" for what is not set.
std::string matched(const std::string &pattern, const std::string &subject,
                    int fold = 0) {
    int length = rxpcomp(pattern.c_str(), 0, fold);
    if (length < 0) return "error " + std::to_string(length);
    support::rxp_result rules = support::rxp_by_the_rules(subject, rxpbuf);
    support::rxp_result result;
    // From the second run on there is a plan.
    for (int run = 1; run <= 3; run++) {
        result = support::rxp_by_the_library(subject, rxpbuf);
        EXPECT_EQ(support::rxp_difference(rules, result), "")
            << pattern << " on " << subject << " run " << run;
    }
    if (result.result == 0) return "no";
    std::string text;
    auto offset = [](int n) { return n < 0 ? "?" : std::to_string(n); };
    for (int k = 0; k <= result.count; k++) {
        text += (k > 0 ? " " : "") + offset(result.pairs[k].first) + "-" +
                offset(result.pairs[k].second);
    }
    return text;
}

struct row {
    std::string pattern;
    std::string subject;
    std::string expected;
};

void expect_rows(const std::vector<row> &rows) {
    for (const row &r : rows) {
        EXPECT_EQ(matched(r.pattern, r.subject), r.expected)
            << "pattern " << r.pattern << " subject " << r.subject;
    }
}

// ---- every state --------------------------------------------------------

// The single bytes that a one-item pattern matches whole.
std::string accepted(const char *pattern) {
    EXPECT_GT(rxpcomp(pattern, 0, 0), 0);
    std::string bytes;
    for (int c = 1; c < 256; c++) {
        const char subject[] = {static_cast<char>(c), '\0'};
        bool is_match = rxpeval(subject) == 1 &&
                        matches.pair[0].start == subject &&
                        matches.pair[0].end == subject + 1;
        if (is_match) bytes += static_cast<char>(c);
    }
    EXPECT_EQ(rxpeval(""), 0) << pattern;
    return bytes;
}

std::string bytes_if(bool (*is_member)(int)) {
    std::string bytes;
    for (int c = 1; c < 256; c++) {
        if (is_member(c)) bytes += static_cast<char>(c);
    }
    return bytes;
}

TEST(rxppeval, classes_over_all_bytes) {
    EXPECT_EQ(accepted("a"), "a");
    EXPECT_EQ(accepted("."), bytes_if([](int) { return true; }));
    EXPECT_EQ(accepted("\\!"), bytes_if([](int c) { return re_type[c] == 0; }));
    EXPECT_EQ(accepted("\\#"), "0123456789");
    EXPECT_EQ(accepted("\\_"), "\t\n\r ");
    EXPECT_EQ(accepted("\\~"),
              bytes_if([](int c) { return strchr("\t\n\r ", c) == nullptr; }));
    EXPECT_EQ(accepted("\\="), bytes_if([](int c) {
                  return c < 128 && (isalpha(c) != 0 || c == '_');
              }));
    EXPECT_EQ(accepted("[a-cx]"), "abcx");
    EXPECT_EQ(accepted("[^a-cx]"),
              bytes_if([](int c) { return strchr("abcx", c) == nullptr; }));
}

TEST(rxppeval, folding_needs_a_small_letter_in_the_pattern) {
    EXPECT_EQ(matched("ab", "AB", 1), "0-2");
    EXPECT_EQ(matched("ab", "aB", 1), "0-2");
    EXPECT_EQ(matched("AB", "AB", 1), "0-2");
    EXPECT_EQ(matched("AB", "ab", 1), "no");
    EXPECT_EQ(matched("ab", "AB", 0), "no");
    EXPECT_EQ(matched("{", "[", 1), "no");
    EXPECT_EQ(matched("[a]", "A", 1), "no");
}

TEST(rxppeval, states_that_consume) {
    expect_rows({
        {"", "abc", "0-0"},
        {"", "", "0-0"},
        {"b", "abc", "1-2"},
        {"abc", "ab", "no"},
        {"a.c", "abc", "0-3"},
        {"a.", "a", "no"},
        {"a\\_b", "a \t\r\nb", "0-6"},
        {"a\\_b", "ab", "no"},
        {"a\\-b", "a \t\r\nb", "0-6"},
        {"a\\-b", "ab", "0-2"},
        {"\\_ ", "a  ", "no"},
        {"\\=", "1 a1_Z-", "2-6"},
        {"\\=", "1a", "no"},
        {"=\\=", "=ab1=", "0-4"},
        {"a\\~", "a", "no"},
        {"\\#\\#", "a12", "1-3"},
        {"[a-c][^a-c]", "aad", "1-3"},
        {"[^a]", "", "no"},
        {"[a]", "", "no"},
    });
}

TEST(rxppeval, states_of_no_width) {
    expect_rows({
        {"^a", "ab", "0-1"},
        {"^b", "ab", "no"},
        {"a$", "aba", "2-3"},
        {"b$", "aba", "no"},
        {"^$", "", "0-0"},
        {"^$", "a", "no"},
        {"$", "ab", "2-2"},
        {"\\{a", "ba a", "3-4"},
        {"\\{1", "1", "no"},
        {"\\{a", "1a", "no"},
        {"a\\}", "ab a", "3-4"},
        {"\\}", "", "no"},
        {"\\}", "a1", "2-2"},
        {"1\\}", "1", "0-1"},
        {"<|b>", "b", "0-1"},
        {"<b|>", "b", "0-1"},
    });
}

TEST(rxppeval, references_repeat_the_text) {
    expect_rows({
        {"\\(a*\\)b\\1", "aabaa", "0-5 0-2"},
        {"\\(ab\\)\\1", "abab", "0-4 0-2"},
        {"\\(ab\\)\\1", "aba", "no"},
        {"\\([ab]\\).\\1", "abbxb", "2-5 2-3"},
        {"\\(a\\)\\(b\\)\\2\\1", "abba", "0-4 0-1 1-2"},
    });
}

TEST(rxppeval, references_to_nothing_are_empty) {
    expect_rows({
        {"<\\(a\\)|>x", "x", "error -9"},
        {"\\(a\\)*\\1x", "x", "no"},
        {"<\\(a\\)>*\\1x", "x", "0-1"},
        {"<\\(a\\)>*\\1x", "aax", "0-3 0-1"},
        {"\\(\\)\\1x", "x", "0-1 0-0"},
        {"\\(\\).*\\1", "ab", "0-0 0-0"},
        {"<\\(a\\)>*b.*\\1", "bcd", "0-1"},
    });
}

TEST(rxppeval, up_to_same_text_stays_where_it_is) {
    expect_rows({
        {"\\(a\\).*\\1", "abba", "0-4 0-1"},
        {"\\(a\\).*\\1", "aaa", "0-2 0-1"},
        {"\\(a\\).+\\1", "aba", "0-3 0-1"},
        {"\\(a\\).+\\1", "aa", "0-2 0-1"},
        {"\\(a\\).+\\1", "abc", "no"},
    });
}

// ---- which match --------------------------------------------------------

TEST(rxppeval, the_leftmost_start_wins) {
    expect_rows({
        {"<b|abc>", "abc", "0-3"},
        {"<bc|abx>", "abc", "1-3"},
        {"b*", "abb", "0-0"},
        {"b+", "abb", "1-3"},
    });
}

TEST(rxppeval, the_farther_end_of_a_branch_wins) {
    expect_rows({
        {"<ab|a>", "abc", "0-2"},
        {"<a|ab>", "abc", "0-2"},
        {"<a|ab|abc>", "abcd", "0-3"},
        {"<a|ab><c|bcd>", "abcd", "0-4"},
        {"a*", "aab", "0-2"},
        {"<a|ab>*", "abaabb", "0-5"},
        {"<a|b|c>+", "abcab!", "0-5"},
        {".*b", "abab", "0-4"},
        {".+b", "b", "no"},
        {".+b", "bb", "0-2"},
        {"x.*b", "xaac", "no"},
    });
}

TEST(rxppeval, an_end_at_the_end_of_the_subject_stops_the_search) {
    // The second way would set sub-match 1 too.
    EXPECT_EQ(matched("<a|<\\(a\\)>+>", "a"), "error -9");
    EXPECT_EQ(matched("<<\\(a\\)b>*|<\\(\\)>*c>d*", "ab"), "0-2 0-1");
}

TEST(rxppeval, submatches_are_those_of_the_farthest_end) {
    expect_rows({
        {"\\(a*\\)\\(b*\\)", "aabbc", "0-4 0-2 2-4"},
        {"<\\(a\\)|\\(b\\)>*", "aab", "0-3 2-3"},
        {"\\(<a|ab>\\)\\(<c|bcd>\\)", "abcde", "0-4 0-1 1-4"},
        {"x\\([a-z]+\\)=\\(\\#+\\)", "..xab=12;", "2-8 3-5 6-8"},
    });
}

TEST(rxppeval, registers_are_not_restored) {
    // What an earlier start, and what a way that failed has set.
    expect_rows({
        {"<\\(a\\)x>*b", "ab", "1-2 0-1"},
        {"\\(a\\)*", "a", "0-1 0-?"},
        {"<\\(a\\)x|\\(a\\)>*", "aab", "0-2 1-2"},
    });
}

TEST(rxppeval, rest_without_a_branch_records_nothing) {
    expect_rows({
        {".+", "abc", "0-0"},
        {"b.+", "abc", "1-1"},
        {"\\(b\\).+", "abc", "1-1"},
        {".+$", "abc", "0-0"},
    });
}

TEST(rxppeval, rest_behind_a_branch_is_recorded_by_it) {
    expect_rows({
        {"a.*", "abc", "0-3"},
        {".*", "abc", "0-3"},
        {"a*.+", "aabc", "0-4"},
        {"\\(a\\).*$", "abc", "0-3 0-1"},
    });
}

TEST(rxppeval, a_loop_that_stands_still_fails) {
    expect_rows({
        {"<a*>*b", "aab", "0-3"},
        {"<a*>*b", "aac", "no"},
        {"<<a*>*>*b", "aab", "0-3"},
        {"<\\->*b", "  b", "0-3"},
        {"<\\->*x", "  b", "no"},
    });
}

TEST(rxppeval, a_loop_that_stood_on_something_of_no_width_succeeds) {
    // Without looking at what is behind the loop.
    expect_rows({
        {"<>*x", "b", "0-0"},
        {"<a|>*x", "aab", "0-2"},
        {"<\\(\\)>*x", "b", "0-0 0-0"},
        {"<a*<>|a*>+\\{", "ab", "0-1"},
    });
}

// ---- the whole evaluation -----------------------------------------------

TEST(rxppeval, inverted_programs_exchange_the_results) {
    ASSERT_GT(rxpcomp("!abc", 0, 0), 0);
    EXPECT_EQ(rxpinvert(rxpbuf), 1);
    EXPECT_EQ(rxpeval("xabc"), 0);
    EXPECT_EQ(rxpeval("xab"), 1);
    ASSERT_GT(rxpcomp("abc", 0, 0), 0);
    EXPECT_EQ(rxpinvert(rxpbuf), 0);
}

TEST(rxppeval, caret_tells_of_an_anchored_start) {
    ASSERT_GT(rxpcomp("^a", 0, 0), 0);
    EXPECT_EQ(rxpcaret(rxpbuf), 1);
    ASSERT_GT(rxpcomp("!^a", 0, 0), 0);
    EXPECT_EQ(rxpcaret(rxpbuf), 1);
    ASSERT_GT(rxpcomp("a^", 0, 0), 0);
    EXPECT_EQ(rxpcaret(rxpbuf), 0);
    ASSERT_GT(rxpcomp("", 0, 0), 0);
    EXPECT_EQ(rxpcaret(rxpbuf), 0);
}

TEST(rxppeval, what_is_not_a_program_is_refused) {
    ASSERT_GT(rxpcomp("a", 0, 0), 0);
    unsigned char program[1537];
    memcpy(program, rxpbuf, sizeof program);
    for (int byte = 0; byte < 256; byte++) {
        program[0] = static_cast<unsigned char>(byte);
        EXPECT_EQ(rxppeval("a", program), byte == 10 ? 1 : -6) << byte;
        EXPECT_EQ(rxpcaret(program), byte == 10 ? 0 : -1);
        EXPECT_EQ(rxpinvert(program), byte == 10 ? 0 : -1);
    }
    program[0] = 10;
    for (int byte = 0; byte < 256; byte++) {
        program[3] = static_cast<unsigned char>(byte);
        int expected = byte < 254 ? -6 : byte == 254 ? 0 : 1;
        EXPECT_EQ(rxppeval("a", program), expected) << byte;
    }
}

TEST(rxppeval, a_copy_of_a_program_runs_anywhere) {
    int length = rxpcomp("\\([b-d]\\)[^x]$", 0, 0);
    ASSERT_GT(length, 0);
    std::vector<unsigned char> copy(rxpbuf, rxpbuf + length + 1);
    ASSERT_GT(rxpcomp("something else", 0, 0), 0);
    for (int i = 0; i < 5; i++) {
        EXPECT_EQ(rxppeval("acx", copy.data()), 0);
        EXPECT_EQ(rxppeval("acy", copy.data()), 1);
        EXPECT_EQ(matches.count, 1);
    }
}

// More programs than plans are kept, in turn, and all of them planned.
TEST(rxppeval, many_programs_in_turn) {
    std::vector<std::vector<unsigned char>> programs;
    for (char c = 'a'; c <= 'z'; c++) {
        std::string pattern = std::string("[0-9]+") + c + "$";
        int length = rxpcomp(pattern.c_str(), 0, 0);
        ASSERT_GT(length, 0);
        programs.emplace_back(rxpbuf, rxpbuf + length + 1);
    }
    for (int round = 0; round < 4; round++) {
        for (size_t i = 0; i < programs.size(); i++) {
            for (size_t k = 0; k < programs.size(); k++) {
                std::string subject =
                    std::string("x12") + static_cast<char>('a' + k);
                EXPECT_EQ(rxppeval(subject.c_str(), programs[i].data()),
                          i == k);
            }
        }
    }
}

// A program that was changed in place is another one.
TEST(rxppeval, a_buffer_may_get_another_program) {
    unsigned char buffer[1537];
    for (int round = 0; round < 3; round++) {
        for (const char *pattern : {"ab[c-d]", "ab[c-e]", "ab[c]", "abc"}) {
            int length = rxpcomp(pattern, 0, 0);
            ASSERT_GT(length, 0);
            memcpy(buffer, rxpbuf, static_cast<size_t>(length) + 1);
            for (int run = 0; run < 3; run++) {
                EXPECT_EQ(rxppeval("abd", buffer),
                          strchr(pattern, '-') != nullptr);
                EXPECT_EQ(rxppeval("abe", buffer),
                          strcmp(pattern, "ab[c-e]") == 0);
                EXPECT_EQ(rxppeval("abc", buffer), 1);
            }
        }
    }
}

TEST(rxppeval, evaluations_leave_nothing_behind) {
    ASSERT_GT(rxpcomp("<\\(a\\)>*b", 0, 0), 0);
    ASSERT_EQ(rxpeval("ab"), 1);
    EXPECT_EQ(matches.count, 1);
    ASSERT_EQ(rxpeval("b"), 1);
    EXPECT_EQ(matches.count, 0);
    ASSERT_EQ(rxpeval("a"), 0);
    EXPECT_EQ(matches.count, 0);
    EXPECT_EQ(matches.pair[0].start, nullptr);
}

TEST(rxppeval, subjects_of_any_bytes) {
    std::string subject;
    for (int c = 255; c > 0; c--)
        subject += static_cast<char>(c);
    EXPECT_EQ(matched("\\~*", subject), "0-223");
    EXPECT_EQ(matched("[^a-z]*a", subject), "158-159");
    EXPECT_EQ(matched("\\!*\\~", subject), "0-130");
}

}  // namespace
