// rxpcomp_test.cc: from patterns to programs.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <tovan/rxpcomp.h>

namespace {

// What rxpdump prints, with blanks for tabs.
std::string dump_of(const unsigned char *program) {
    std::string text = support::stdout_of([&] {
        rxpdump(program);
        fflush(stdout);
    });
    for (char &c : text)
        c = c == '\t' ? ' ' : c;
    return text;
}

// The states of a pattern, without their numbers and fields that the states'
// order gives: "name argument next alternative" separated by "; ".
std::string compiled(const std::string &pattern, int delimiter = 0,
                     int fold = 0) {
    int length = rxpcomp(pattern.c_str(), delimiter, fold);
    if (length < 0) return std::to_string(length);
    std::string text = dump_of(rxpbuf);
    std::string states;
    size_t line = text.find('\n') + 1;
    while (line < text.size()) {
        size_t line_end = text.find('\n', line);
        size_t start = text.find(": ", line) + 2;
        std::string state = text.substr(start, line_end - start);
        line = line_end + 1;
        if (state.compare(0, 3, "END") == 0) break;
        states += (states.empty() ? "" : "; ") + state;
    }
    return states;
}

struct row {
    std::string pattern;
    std::string expected;
};

void expect_rows(const std::vector<row> &rows) {
    for (const row &r : rows)
        EXPECT_EQ(compiled(r.pattern), r.expected) << "pattern " << r.pattern;
}

// ---- classes ------------------------------------------------------------

std::string members_of(int bit) {
    std::string members;
    for (int c = 0; c < 256; c++) {
        if ((re_type[c] & bit) != 0) members += static_cast<char>(c);
    }
    return members;
}

TEST(re_type, every_class_has_exactly_its_members) {
    EXPECT_EQ(members_of(0x01), "abcdefghijklmnopqrstuvwxyz");
    EXPECT_EQ(members_of(0x02), "0123456789");
    EXPECT_EQ(members_of(0x04), std::string(1, '\0'));
    EXPECT_EQ(members_of(0x08), "\n\"#%&',/:;?@`~");
    EXPECT_EQ(members_of(0x10), "\t\n\r ");
    EXPECT_EQ(members_of(0x20), "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    EXPECT_EQ(members_of(0x40), "_");
    EXPECT_EQ(members_of(0x80), "!$()*+-.123456789<=>[\\]^_{|}");
}

// ---- tokens -------------------------------------------------------------

TEST(rxpcomp, every_item) {
    expect_rows({
        {"", ""},
        {"a", "Mch 'a' 2 ?"},
        {".", "Man ? 2 ?"},
        {"^", "Mst ? 2 ?"},
        {"$", "Mls ? 2 ?"},
        {"[a]", "Mrn 1 2 [a]"},
        {"[a-cxy]", "Mrn 3 2 [a-cxy]"},
        {"[^a-cx]", "Mnr 2 2 [^a-cx]"},
        {"\\!", "Mfr ? 2 ?"},
        {"\\#", "Mdi ? 2 ?"},
        {"\\_", "Msp ? 2 ?"},
        {"\\-", "Mss ? 2 ?"},
        {"\\}", "Mie ? 2 ?"},
        {"\\{", "Mis ? 2 ?"},
        {"\\=", "Mid ? 2 ?"},
        {"\\~", "Mti ? 2 ?"},
        {"\\(a\\)\\1", "Msr 1 2 ?; Mch 'a' 3 ?; Mer 1 4 ?; Mre 1 5 ?"},
    });
}

TEST(rxpcomp, fold_compiles_every_literal_as_folded) {
    EXPECT_EQ(compiled("aB[c].*d", 0, 1),
              "Dch 'a' 2 ?; Dch 'B' 3 ?; Mrn 1 5 [c]; Man ? 5 ?; "
              "Nop ? 6 4; Dch 'd' 7 ?");
}

TEST(rxpcomp, other_escapes_are_literals) {
    const std::string operators = "!#()-=_{}~123456789";
    for (int c = 1; c < 128; c++) {
        if (operators.find(static_cast<char>(c)) != std::string::npos) continue;
        const char pattern[] = {'\\', static_cast<char>(c), '\0'};
        ASSERT_EQ(rxpcomp(pattern, 0, 0), 14) << c;
        EXPECT_EQ(rxpbuf[4], 1) << c;
        EXPECT_EQ(rxpbuf[5], c);
    }
}

TEST(rxpcomp, every_other_character_is_a_literal) {
    const std::string special = "!$*+.<[\\^";
    for (int c = 1; c < 128; c++) {
        if (special.find(static_cast<char>(c)) != std::string::npos) continue;
        const char pattern[] = {static_cast<char>(c), '\0'};
        ASSERT_EQ(rxpcomp(pattern, 0, 0), 14) << c;
        EXPECT_EQ(rxpbuf[4], 1) << c;
        EXPECT_EQ(rxpbuf[5], c);
    }
}

TEST(rxpcomp, closures_without_an_item_are_literals) {
    expect_rows({
        {"*", "Mch '*' 2 ?"},
        {"+", "Mch '+' 2 ?"},
        {"*a", "Mch '*' 2 ?; Mch 'a' 3 ?"},
        {"a**", "Mch 'a' 2 ?; Nop ? 3 1; Mch '*' 4 ?"},
        {"a*+", "Mch 'a' 2 ?; Nop ? 3 1; Mch '+' 4 ?"},
        {"a+***",
         "Mch 'a' 2 ?; Nop ? 4 1; Mch '*' 4 ?; Nop ? 5 3; Mch '*' 6 ?"},
        {"<*>", "Mch '*' 3 ?; Nop ? 3 3"},
        {"<a|+>", "Mch 'a' 6 ?; Nop ? 6 5; Nop ? 1 4; Mch '+' 6 ?; Nop ? 6 6"},
        {"\\<*", "Mch '<' 2 ?; Nop ? 3 1"},
        {"|*", "Mch '|' 2 ?; Nop ? 3 1"},
        {"!*", "Mch '*' 2 ?"},
    });
}

TEST(rxpcomp, anchors_only_at_their_ends) {
    expect_rows({
        {"a^", "Mch 'a' 2 ?; Mch '^' 3 ?"},
        {"^^", "Mst ? 2 ?; Mch '^' 3 ?"},
        {"!^a", "Mst ? 2 ?; Mch 'a' 3 ?"},
        {"<^>", "Mch '^' 3 ?; Nop ? 3 3"},
        {"x$y", "Mch 'x' 2 ?; Mch '$' 3 ?; Mch 'y' 4 ?"},
        {"x$", "Mch 'x' 2 ?; Mls ? 3 ?"},
        {"<x$>", "Mch 'x' 2 ?; Mch '$' 4 ?; Nop ? 4 4"},
        {"[a$]", "Mrn 2 2 [a$]"},
        {"^*a", "Mst ? 2 ?; Nop ? 3 1; Mch 'a' 4 ?"},
    });
    EXPECT_EQ(compiled("x$/y", '/'), "Mch 'x' 2 ?; Mls ? 3 ?");
    EXPECT_EQ(compiled("x$\x80y"), "Mch 'x' 2 ?; Mls ? 3 ?");
}

TEST(rxpcomp, group_operators_outside_of_a_group_are_literals) {
    expect_rows({
        {"a|b", "Mch 'a' 2 ?; Mch '|' 3 ?; Mch 'b' 4 ?"},
        {">a", "Mch '>' 2 ?; Mch 'a' 3 ?"},
        {"<a>>", "Mch 'a' 3 ?; Nop ? 3 3; Mch '>' 4 ?"},
        {"]-a", "Mch ']' 2 ?; Mch '-' 3 ?; Mch 'a' 4 ?"},
    });
}

TEST(rxpcomp, bracket_members) {
    expect_rows({
        {"[]a]", "Mrn 2 2 []a]"},
        {"[^]a]", "Mnr 2 2 [^]a]"},
        {"[-a]", "Mrn 2 2 [-a]"},
        {"[^-a]", "Mnr 2 2 [^-a]"},
        {"[]-a]", "Mrn 3 2 []-a]"},
        {"[a^-z]", "Mrn 4 2 [a^-z]"},
        {"[.*+<>|[\\]", "Mrn 8 2 [.*+<>|[\\]"},
        {"[[-z]", "Mrn 1 2 [[-z]"},
        {"[a-a]", "Mrn 1 2 [a]"},
        {"[$a]", "Mrn 2 2 [$a]"},
        {"[a^]", "Mrn 2 2 [a^]"},
        {"[a][b-c]d[^e]",
         "Mrn 1 2 [a]; Mrn 1 3 [b-c]; Mch 'd' 4 ?; Mnr 1 5 [^e]"},
    });
}

TEST(rxpcomp, bracket_behind_a_backslash_is_never_negated) {
    expect_rows({
        {"\\\\[^a]", "Mch '\\' 2 ?; Mrn 2 3 [^a]"},
        {"\\\\[^]", "Mch '\\' 2 ?; Mrn 1 3 [^]"},
        {"\\\\a[^a]", "Mch '\\' 2 ?; Mch 'a' 3 ?; Mnr 1 4 [^a]"},
        {"\\[^a]", "Mch '[' 2 ?; Mch '^' 3 ?; Mch 'a' 4 ?; Mch ']' 5 ?"},
    });
}

// ---- the end ------------------------------------------------------------

TEST(rxpcomp, ends_at_its_delimiter) {
    const char *pattern = "ab/cd";
    ASSERT_GT(rxpcomp(pattern, '/', 0), 0);
    EXPECT_EQ(rxpeof, pattern + 2);
    EXPECT_EQ(compiled("ab/cd", '/'), "Mch 'a' 2 ?; Mch 'b' 3 ?");
    ASSERT_GT(rxpcomp(pattern, 0, 0), 0);
    EXPECT_EQ(rxpeof, pattern + 5);
    EXPECT_EQ(compiled("/a", '/'), "");
    EXPECT_EQ(compiled("[a/]", '/'), "-9");
    EXPECT_EQ(compiled("a\\/b/", '/'), "Mch 'a' 2 ?; Mch '/' 3 ?; Mch 'b' 4 ?");
    EXPECT_EQ(compiled("a\\#b#", '#'), "Mch 'a' 2 ?; Mdi ? 3 ?; Mch 'b' 4 ?");
}

TEST(rxpcomp, pattern_ends_at_an_8_bit_byte) {
    for (int c = 0x80; c <= 0xff; c++) {
        const char pattern[] = {'a', static_cast<char>(c), 'b', '\0'};
        EXPECT_EQ(compiled(pattern), "Mch 'a' 2 ?") << c;
        EXPECT_EQ(rxpcomp(pattern, 0, 0), 14) << c;
        EXPECT_EQ(rxpeof, pattern + 1);
        const char escaped[] = {'a', '\\', static_cast<char>(c), '\0'};
        EXPECT_EQ(rxpcomp(escaped, 0, 0), -10) << c;
        const char bracket[] = {'[', 'a', static_cast<char>(c), ']', '\0'};
        EXPECT_EQ(rxpcomp(bracket, 0, 0), -9) << c;
    }
}

TEST(rxpcomp, special_delimiters_are_refused_before_anything_is_written) {
    ASSERT_GT(rxpcomp("a", 0, 0), 0);
    const char *before = rxpeof;
    for (int c = 0; c < 256; c++) {
        bool is_special = (re_type[c] & 0x80) != 0;
        if (is_special) {
            EXPECT_EQ(rxpcomp("a", c, 0), -4) << c;
            EXPECT_EQ(rxpbuf[0], 10);
            EXPECT_EQ(rxpeof, before);
        } else {
            EXPECT_GT(rxpcomp("x", c, 0), 0) << c;
            before = rxpeof;
        }
    }
}

// ---- groups, closures, passes -------------------------------------------

TEST(rxpcomp, groups_and_closures) {
    expect_rows({
        {"<ab>", "Mch 'a' 2 ?; Mch 'b' 4 ?; Nop ? 4 4"},
        {"<a|b>", "Mch 'a' 6 ?; Nop ? 6 5; Nop ? 1 4; Mch 'b' 6 ?; Nop ? 6 6"},
        {"<>", "Mnu ? 3 ?; Nop ? 3 3"},
        {"<a|>", "Mch 'a' 6 ?; Nop ? 6 5; Nop ? 1 4; Mnu ? 6 ?; Nop ? 6 6"},
        {"<|a>", "Mnu ? 6 ?; Nop ? 6 5; Nop ? 1 4; Mch 'a' 6 ?; Nop ? 6 6"},
        {"a*", "Mch 'a' 2 ?; Nop ? 3 1"},
        {"a+", "Mch 'a' 2 ?; Nop ? 3 1"},
        {"<ab>*", "Mch 'a' 2 ?; Mch 'b' 4 ?; Nop ? 4 4; Nop ? 5 1"},
    });
}

TEST(rxpcomp, header_links_to_the_first_state_to_run) {
    ASSERT_EQ(rxpcomp("a*", 0, 0), 18);
    const unsigned char star[] = {10, 2, 3,  255, 1,   'a', 2, 255, 10, 255,
                                  3,  1, 11, 255, 255, 255, 2, 2,   0};
    EXPECT_EQ(memcmp(rxpbuf, star, sizeof star), 0);
    ASSERT_EQ(rxpcomp("a+", 0, 0), 18);
    EXPECT_EQ(rxpbuf[1], 1);
    ASSERT_GT(rxpcomp("<a|b>", 0, 0), 0);
    EXPECT_EQ(rxpbuf[1], 3);
    ASSERT_GT(rxpcomp("<a*|b>", 0, 0), 0);
    EXPECT_EQ(rxpbuf[1], 4);
}

TEST(rxpcomp, a_program_byte_by_byte) {
    const unsigned char expected[] = {
        10, 1,   4,   255,               // header
        1,  'a', 3,   255,               // literal
        16, 2,   3,   1,                 // class
        10, 255, 4,   2,                 // loop
        11, 255, 255, 255,               // end
        3,  3,   'b', 'd', 'x', 'x', 0,  // summary, ranges
    };
    EXPECT_EQ(rxpcomp("a[b-dx]*", 0, 0), sizeof expected - 1);
    EXPECT_EQ(memcmp(rxpbuf, expected, sizeof expected), 0);
}

TEST(rxpcomp, inverted_patterns_have_254_in_their_header) {
    ASSERT_EQ(rxpcomp("!abc", 0, 0), 22);
    EXPECT_EQ(rxpbuf[3], 254);
    EXPECT_EQ(compiled("!!a"), "Mch '!' 2 ?; Mch 'a' 3 ?");
    ASSERT_EQ(rxpcomp("abc", 0, 0), 22);
    EXPECT_EQ(rxpbuf[3], 255);
}

TEST(rxpcomp, an_empty_pattern_is_header_and_end) {
    const unsigned char expected[] = {10,  1,   1, 255, 11, 255,
                                      255, 255, 1, 1,   0};
    EXPECT_EQ(rxpcomp("", 0, 0), 10);
    EXPECT_EQ(memcmp(rxpbuf, expected, sizeof expected), 0);
}

TEST(rxpcomp, linking_a_closing_jump_leaves_its_alternative) {
    // The jump that closes <a> becomes a branch: to the loop, or to b.
    EXPECT_EQ(compiled("<a>b*"),
              "Mch 'a' 2 ?; Nop ? 4 3; Mch 'b' 4 ?; Nop ? 5 3");
}

TEST(rxpcomp, jumps_are_threaded_by_the_links_before_the_pass) {
    EXPECT_EQ(compiled("<<<a>>>b"),
              "Mch 'a' 5 ?; Nop ? 5 3; Nop ? 5 4; Nop ? 5 5; Mch 'b' 6 ?");
}

TEST(rxpcomp, looping_any_is_specialised_by_what_follows) {
    expect_rows({
        {"a.*", "Mch 'a' 3 ?; Fen ? 3 ?; Nop ? 4 2"},
        {"a.*$", "Mch 'a' 3 ?; Fen ? 3 ?; Nop ? 4 2; Mls ? 5 ?"},
        {".+", "Fen ? 2 ?; Nop ? 3 1"},
        {".*b", "Fch 'b' 2 ?; Nop ? 3 1; Mch 'b' 4 ?"},
        {"<.>*b", "Fch 'b' 3 ?; Nop ? 3 3; Nop ? 4 1; Mch 'b' 5 ?"},
        {"\\(a\\).*\\1",
         "Msr 1 2 ?; Mch 'a' 3 ?; Mer 1 5 ?; Fre 1 5 ?; Nop ? 6 4; "
         "Mre 1 7 ?"},
        {".*[b]", "Man ? 2 ?; Nop ? 3 1; Mrn 1 4 [b]"},
        {".*\\(b\\)",
         "Man ? 2 ?; Nop ? 3 1; Msr 1 4 ?; Mch 'b' 5 ?; Mer 1 6 ?"},
        {".b", "Man ? 2 ?; Mch 'b' 3 ?"},
    });
    EXPECT_EQ(compiled(".*b", 0, 1), "Man ? 2 ?; Nop ? 3 1; Dch 'b' 4 ?");
}

TEST(rxpcomp, summary_counts_jumps_as_branches) {
    const struct {
        const char *pattern;
        int lowest;
        int highest;
    } rows[] = {{"a", 1, 1},     {"", 1, 1},        {"ab*", 3, 3},
                {"<a>", 2, 2},   {"<a|b>", 2, 5},   {"a*b*", 2, 4},
                {"ab<c>", 4, 4}, {"a*b*c<d>", 2, 7}};
    for (const auto &row : rows) {
        int length = rxpcomp(row.pattern, 0, 0);
        ASSERT_GT(length, 0);
        const unsigned char *summary = rxpbuf + length - 2;
        EXPECT_EQ(summary[0], row.lowest) << row.pattern;
        EXPECT_EQ(summary[1], row.highest) << row.pattern;
    }
}

// ---- sub-matches --------------------------------------------------------

TEST(rxpcomp, alternatives_number_their_submatches_alike) {
    EXPECT_EQ(compiled("<\\(a\\)|\\(b\\)>\\(c\\)"),
              "Msr 1 2 ?; Mch 'a' 3 ?; Mer 1 10 ?; Nop ? 10 9; Nop ? 1 6; "
              "Msr 1 7 ?; Mch 'b' 8 ?; Mer 1 10 ?; Nop ? 10 10; "
              "Msr 2 11 ?; Mch 'c' 12 ?; Mer 2 13 ?");
}

TEST(rxpcomp, closing_parenthesis_closes_the_latest_open_submatch) {
    EXPECT_EQ(compiled("\\(\\(a\\)\\)"),
              "Msr 1 2 ?; Msr 2 3 ?; Mch 'a' 4 ?; Mer 2 5 ?; Mer 1 6 ?");
}

TEST(rxpcomp, references_need_a_closed_submatch) {
    EXPECT_EQ(compiled("\\1"), "-6");
    EXPECT_EQ(compiled("\\(a\\1\\)"), "-6");
    EXPECT_EQ(compiled("\\(a\\)\\2"), "-6");
    EXPECT_EQ(compiled("<\\(a\\)|\\(b\\1\\)>"), "-6");
    EXPECT_EQ(compiled("<\\(a\\)|\\1\\(b\\)>"), "-6");
    EXPECT_GT(rxpcomp("<\\(a\\)|\\(b\\)\\1>\\1", 0, 0), 0);
    EXPECT_GT(rxpcomp("\\(a\\)<b|\\1>", 0, 0), 0);
    EXPECT_EQ(compiled("\\(\\(a\\)\\1\\)"), "-6");
    EXPECT_GT(rxpcomp("\\(\\(a\\)\\2\\)", 0, 0), 0);
}

// ---- errors -------------------------------------------------------------

TEST(rxpcomp, every_error_code) {
    expect_rows({
        {"[", "-1"},
        {"[^", "-1"},
        {"[]", "-9"},
        {"[^]", "-9"},
        {"[a-", "-1"},
        {"[a-]", "-1"},
        {"[b-a]", "-1"},
        {"[a-b-c]", "-1"},
        {"[!--]", "-1"},
        {"\\\\[]", "-9"},
        {"[$", "-1"},
        {"[a-$", "-1"},
        {"[a", "-9"},
        {"[a$", "-9"},
        {"[]-", "-9"},
        {"\\(a\\)\\2", "-6"},
        {"\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)\\(\\)", "-8"},
        {"<a", "-9"},
        {"\\(a", "-9"},
        {"a\\)", "-9"},
        {"<a|b", "-9"},
        {"<\\(a\\)|b>", "-9"},
        {"<a|\\(b\\)>", "-9"},
        {"<\\(a>\\)", "-9"},
        {"\\(<a\\)>", "-9"},
        {"<\\(a|b\\)>", "-9"},
        {"<\\(a\\)|\\(b\\)\\(c\\)>", "-9"},
        {"<", "-10"},
        {"<a|", "-10"},
        {"a<b<", "-10"},
        {"\\", "-10"},
        {"a\\", "-10"},
    });
}

TEST(rxpcomp, the_leftmost_fault_counts) {
    expect_rows({
        {"\\)\\", "-9"},
        {"\\1[b-a]", "-6"},
        {"[b-a]\\1", "-1"},
        {"<a|\\(\\", "-9"},
        {"\\(\\", "-10"},
    });
    // Before any of them: the length.
    EXPECT_EQ(rxpcomp(("\\)" + std::string(300, 'a')).c_str(), 0, 0), -7);
    EXPECT_EQ(rxpcomp(std::string(300, 'a').c_str(), '*', 0), -4);
}

TEST(rxpcomp, an_error_leaves_no_program) {
    ASSERT_GT(rxpcomp("a", 0, 0), 0);
    const char *before = rxpeof;
    ASSERT_EQ(rxpcomp("[b-a]", 0, 0), -1);
    EXPECT_EQ(rxpbuf[0], 0);
    EXPECT_EQ(rxpeof, before);
    EXPECT_EQ(rxpeval("a"), -6);
    EXPECT_EQ(rxpcaret(rxpbuf), -1);
    EXPECT_EQ(rxpinvert(rxpbuf), -1);
}

// ---- limits -------------------------------------------------------------

TEST(rxpcomp, patterns_of_255_bytes_behind_the_exclamation_mark) {
    // Every state takes two bytes here: 255 bytes are not too many states.
    std::string pattern;
    for (int i = 0; i < 127; i++)
        pattern += "\\.";
    EXPECT_GT(rxpcomp((pattern + "a").c_str(), 0, 0), 0);
    EXPECT_GT(rxpcomp(("!" + pattern + "a").c_str(), 0, 0), 0);
    EXPECT_GT(rxpcomp("a", 0, 0), 0);
    EXPECT_EQ(rxpcomp((pattern + "ab").c_str(), 0, 0), -7);
    EXPECT_EQ(rxpbuf[0], 10);
    // The length counts to the null, wherever the delimiter is.
    EXPECT_EQ(rxpcomp(("a/" + pattern).c_str(), '/', 0), -7);
}

TEST(rxpcomp, programs_of_256_states) {
    EXPECT_EQ(rxpcomp(std::string(254, 'a').c_str(), 0, 0), 4 * 256 + 2);
    EXPECT_EQ(rxpbuf[2], 255);
    EXPECT_EQ(rxpcomp(std::string(255, 'a').c_str(), 0, 0), -7);
    EXPECT_EQ(rxpbuf[0], 0);
}

// Groups of empty alternatives make the most states of a byte.
TEST(rxpcomp, too_many_states_wherever_the_limit_falls) {
    for (int literals = 0; literals < 12; literals++) {
        std::string head(static_cast<size_t>(literals), 'a');
        EXPECT_EQ(
            rxpcomp((head + "<" + std::string(100, '|') + ">*").c_str(), 0, 0),
            -7);
        EXPECT_EQ(rxpcomp((head + "<" + std::string(40, '|') + "<" +
                           std::string(60, '|') + ">*>*")
                              .c_str(),
                          0, 0),
                  -7);
        EXPECT_EQ(rxpcomp((std::string(252, 'a') + "<>*").c_str(), 0, 0), -7);
    }
    for (size_t n = 240; n <= 253; n++) {
        int length = rxpcomp((std::string(n, 'a') + "*").c_str(), 0, 0);
        EXPECT_EQ(length,
                  n + 3 <= 256 ? 4 * (static_cast<int>(n) + 3) + 2 : -7);
    }
}

TEST(rxpcomp, nine_submatches) {
    std::string nine;
    for (int i = 1; i <= 9; i++)
        nine += "\\(\\)";
    ASSERT_GT(rxpcomp((nine + "\\9").c_str(), 0, 0), 0);
    EXPECT_EQ(rxpcomp((nine + "\\(\\)").c_str(), 0, 0), -8);
    EXPECT_GT(rxpcomp("\\(\\(\\(\\(\\(\\(\\(\\(\\(a"
                      "\\)\\)\\)\\)\\)\\)\\)\\)\\)",
                      0, 0),
              0);
}

TEST(rxpcomp, classes_of_as_many_pairs_as_a_pattern_holds) {
    // Pairs that do not follow one another: every member is its own.
    std::string members(250, 'a');
    ASSERT_EQ(rxpcomp(("[" + members + "]").c_str(), 0, 0), 4 * 3 + 2 + 500);
    EXPECT_EQ(rxpbuf[5], 250);
    EXPECT_EQ(rxpbuf[4 * 3 + 2 + 500], 0);
    ASSERT_GT(rxpcomp(("[" + std::string(248, 'b') + "][c]").c_str(), 0, 0), 0);
    EXPECT_EQ(rxpbuf[8 + 3], 249);
    EXPECT_EQ(rxpeval("bc"), 1);
}

TEST(rxpcomp, groups_of_any_depth) {
    std::string open(84, '<');
    std::string close;
    for (int i = 0; i < 84; i++)
        close += ">*";
    ASSERT_GT(rxpcomp((open + "a" + close).c_str(), 0, 0), 0);
    EXPECT_EQ(rxpcomp(std::string(255, '<').c_str(), 0, 0), -10);
    EXPECT_EQ(rxpcomp((std::string(254, '<') + "a").c_str(), 0, 0), -9);
}

// ---- the dump -----------------------------------------------------------

TEST(rxpdump, prints_one_state_a_line) {
    ASSERT_GT(rxpcomp("!^\\(a\\)<.*b|[^c-dx]>\\1", 0, 0), 0);
    EXPECT_EQ(dump_of(rxpbuf),
              "0: STA 1 13 invert\n"
              "1: Mst ? 2 ?\n"
              "2: Msr 1 3 ?\n"
              "3: Mch 'a' 4 ?\n"
              "4: Mer 1 9 ?\n"
              "5: Fch 'b' 6 ?\n"
              "6: Nop ? 7 5\n"
              "7: Mch 'b' 12 ?\n"
              "8: Nop ? 12 11\n"
              "9: Nop ? 6 10\n"
              "10: Mnr 2 12 [^c-dx]\n"
              "11: Nop ? 12 12\n"
              "12: Mre 1 13 ?\n"
              "13: END, minnop=6, maxnop=11\n");
    ASSERT_GT(rxpcomp("", 0, 0), 0);
    EXPECT_EQ(dump_of(rxpbuf),
              "0: STA 1 1 don't invert\n1: END, minnop=1, maxnop=1\n");
}

TEST(rxpdump, an_opcode_that_is_never_generated_has_dashes) {
    ASSERT_GT(rxpcomp("a", 0, 0), 0);
    unsigned char program[1537];
    memcpy(program, rxpbuf, sizeof program);
    program[4] = 0;
    EXPECT_EQ(dump_of(program),
              "0: STA 1 2 don't invert\n1: --- ? 2 ?\n"
              "2: END, minnop=1, maxnop=1\n");
}

TEST(rxpdump, an_alternative_of_255_is_a_question_mark) {
    ASSERT_GT(rxpcomp((std::string(250, 'b') + "<a>").c_str(), 0, 0), 0);
    ASSERT_GT(rxpcomp((std::string(252, 'b') + "<>").c_str(), 0, 0), 0);
    std::string text = dump_of(rxpbuf);
    EXPECT_NE(text.find("\n254: Nop ? 255 ?\n255: END"), std::string::npos)
        << text.substr(text.size() - 80);
}

}  // namespace
