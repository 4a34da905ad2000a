// fmatch_test.cc: file-name patterns.
#include "../lib/private_fmgraph.h"
#include "support/child.h"
#include "support/slow_fmatch.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/fmatch.h>
#include <random>
#include <string>
#include <vector>

namespace {

struct row {
    const char *pattern;
    const char *subject;
    int matches;
};

void expect_rows(const std::vector<row> &rows) {
    for (const row &each : rows) {
        EXPECT_EQ(fmatch(each.subject, each.pattern), each.matches)
            << each.pattern << " against " << each.subject;
    }
}

// Pattern, then what matches, then what does not.
struct sorted {
    const char *pattern;
    std::vector<const char *> matching;
    std::vector<const char *> other;
};

void expect_sorted(const std::vector<sorted> &rows) {
    for (const sorted &each : rows) {
        for (const char *subject : each.matching)
            expect_rows({{each.pattern, subject, 1}});
        for (const char *subject : each.other)
            expect_rows({{each.pattern, subject, 0}});
    }
}

TEST(fmatch, other_characters_stand_for_themselves) {
    expect_sorted({
        {"abc", {"abc"}, {"", "ab", "abcd", "abd", "Abc"}},
        {"", {""}, {"a"}},
        {"a,b}c", {"a,b}c"}, {"abc", "a"}},
        {"]-^", {"]-^"}, {"]"}},
        {"a!", {"a!"}, {"a"}},
        {"\xe4", {"\xe4"}, {"a"}},
    });
}

TEST(fmatch, a_leading_exclamation_mark_negates) {
    expect_sorted({
        {"!abc", {"", "ab", "abcd"}, {"abc"}},
        {"!!a", {"a", ""}, {"!a"}},
        {"!", {"a"}, {""}},
        {"!a*", {"b"}, {"a", "ab"}},
    });
}

TEST(fmatch, a_lone_star_matches_everything) {
    for (const char *subject : {"", "a", ".", "a/b", "*"})
        expect_rows({{"*", subject, 1}, {"!*", subject, 0}});
}

TEST(fmatch, question_mark_is_any_one_character) {
    expect_sorted({
        {"?", {"a", "?", ".", "\xff"}, {"", "ab"}},
        {"a?c", {"abc", "a?c"}, {"ac", "abbc"}},
        {"??", {"ab"}, {"a", "abc"}},
    });
}

TEST(fmatch, backslash_takes_the_next_character_literally) {
    expect_sorted({
        {"\\*", {"*"}, {"a", "\\*", ""}},
        {"\\\\", {"\\"}, {"\\\\"}},
        {"\\a", {"a"}, {"\\a"}},
        {"a\\", {"a\\"}, {"a"}},
        {"\\{a,b\\}", {"{a,b}"}, {"a", "b"}},
        {"{a\\,b}", {"a,b"}, {"a", "b"}},
        {"{\\}}x", {"}x"}, {"x"}},
    });
}

TEST(fmatch, classes) {
    expect_sorted({
        {"[abc]", {"a", "b", "c"}, {"d", "", "ab"}},
        {"[^abc]", {"d", "^"}, {"a", "", "dd"}},
        {"[a-c]", {"a", "b", "c"}, {"d", "-"}},
        {"[a-cx-z]", {"b", "y"}, {"d", "w"}},
        {"[c-a]", {}, {"a", "b", "c", "-"}},
        {"[!a]", {"!", "a"}, {"b"}},
        {"[*?\\{]", {"*", "?", "\\", "{"}, {"a"}},
        {"[a]b", {"ab"}, {"a", "b"}},
        {"[a^]", {"a", "^"}, {"b"}},
    });
}

TEST(fmatch, bracket_and_dash_first_in_a_class_are_members) {
    expect_sorted({
        {"[]]", {"]"}, {"a", "[", ""}},
        {"[^]]", {"a"}, {"]"}},
        {"[]a]", {"]", "a"}, {"b"}},
        {"[-a]", {"-", "a"}, {"b"}},
        {"[^-a]", {"b"}, {"-", "a"}},
        {"[]-a]", {"]", "-", "a"}, {"^", "_", "b"}},
        {"[]-]", {"]", "-"}, {"a"}},
        {"[^]-]", {"a"}, {"]", "-"}},
        {"[--a]", {"-", "a"}, {"0", "A"}},
    });
}

TEST(fmatch, dash_before_the_end_of_a_class_is_a_member) {
    expect_sorted({
        {"[a-]", {"a", "-"}, {"b"}},
        {"[a-", {"a", "-"}, {"b"}},
        {"[a-c-e]", {"a", "c", "-", "e"}, {"d"}},
        {"[+--]", {"+", ",", "-"}, {".", "a"}},
    });
}

TEST(fmatch, a_class_without_end_ends_with_the_pattern) {
    expect_sorted({
        {"[ab", {"a", "b"}, {"c", "[ab", ""}},
        {"[^ab", {"c"}, {"a"}},
        {"[]", {"]"}, {"[]", ""}},
        {"[^]", {"a"}, {"]", ""}},
        {"x[", {}, {"x", "x[", "xy"}},
        {"x[^", {}, {"x", "x[^", "xy", "x^"}},
        {"*[", {}, {"", "x", "["}},
    });
}

TEST(fmatch, ranges_compare_unsigned_bytes) {
    expect_sorted({
        {"[\x80-\xff]", {"\x80", "\xe4", "\xff"}, {"a", "\x7f"}},
        {"[a-\xff]", {"a", "z", "\x80"}, {"A"}},
        {"[\xff-a]", {}, {"b", "\xff", "a"}},
    });
}

TEST(fmatch, stars_take_any_number_of_characters) {
    expect_sorted({
        {"a*", {"a", "ab", "a*"}, {"", "b", "ba"}},
        {"*a", {"a", "ba", "aa"}, {"", "ab"}},
        {"a*b", {"ab", "aab", "axb", "abb"}, {"a", "b", "aba"}},
        {"**", {"", "a"}, {}},
        {"a**b", {"ab", "axb"}, {"a"}},
        {"*a*b*", {"ab", "xaxbx"}, {"ba", "a", "b"}},
        {"*.*.*", {"..", "a.b.c", "a..b"}, {".", "ab"}},
        {"*aab", {"aaab", "aab", "aabaab"}, {"aaba", "ab"}},
        {"a*a", {"aa", "aba"}, {"a"}},
        {"*,", {",", "a,"}, {"a"}},
        {"*}x", {"}x", "a}x"}, {"x"}},
    });
}

TEST(fmatch, a_star_before_one_character_needs_a_character) {
    expect_sorted({
        {"*[x]", {"x", "ax"}, {"", "a", "xa"}},
        {"*?", {"a", "ab"}, {""}},
        {"*\\a", {"a", "ba"}, {"", "ab"}},
        {"*\\", {"\\", "a\\"}, {"", "a"}},
        {"*x", {"x"}, {""}},
    });
}

TEST(fmatch, braces_hold_alternatives) {
    expect_sorted({
        {"{a,b}c", {"ac", "bc"}, {"c", "abc", "a", "{a,b}c"}},
        {"x{a,{b,c}}", {"xa", "xb", "xc"}, {"x", "xab"}},
        {"{a}", {"a"}, {"{a}", ""}},
        {"{}", {""}, {"{}", "a"}},
        {"{,a}b", {"b", "ab"}, {"a", "aab"}},
        {"{a,}b", {"b", "ab"}, {"a"}},
        {"a{b,c}d{e,f}", {"abde", "abdf", "acde", "acdf"}, {"abd", "abdg"}},
        {"{a,ab}c", {"ac", "abc"}, {"ab"}},
        {"{ab,a}b", {"abb", "ab"}, {"a"}},
        {"*.{c,h}", {"x.c", ".h", "a.b.c"}, {"x.o", "c"}},
        {"{*.c,*.h}", {"x.c", "x.h"}, {"x.o"}},
        {"{a*,b}*c", {"ac", "axc", "bc", "bxc"}, {"c", "xc"}},
        {"{[x-z],?[a]}", {"z", "1a"}, {"1", "zz"}},
        {"*{a,b}*", {"a", "xb", "xbx"}, {"", "x"}},
        {"{a,b}{c,d}{e,f}", {"ace", "bdf"}, {"abc", "ac"}},
    });
}

TEST(fmatch, a_star_before_a_brace_may_stand_at_the_end) {
    expect_sorted({
        {"a*{,b}", {"a", "ab", "ax"}, {"", "b"}},
        {"{a*,b}", {"a", "ax", "b"}, {"bx", ""}},
        {"{a*}", {"a", "ax"}, {"b"}},
        {"{*}", {"", "a"}, {}},
        {"{*,}x", {"x", "ax"}, {"a", ""}},
    });
}

TEST(fmatch, a_brace_without_close_ends_with_the_pattern) {
    expect_sorted({
        {"{a,b", {"a", "b"}, {"c", "", "{a,b"}},
        {"x{", {"x"}, {"x{", "xa"}},
        {"x{a,{b", {"xa", "xb"}, {"x"}},
        {"{a*", {"a", "ab"}, {"b"}},
        {"{a,b\\", {"a", "b\\"}, {"b"}},
    });
}

// The close finder runs on to the next "[" from a class, here to the end of
// the pattern: the brace has no other end, and all behind it is inside.
TEST(fmatch, class_ends_differ_in_the_two_finders) {
    int result = 1;
    expect_sorted({{"{[ab],c", {"a", "b", "c"}, {"d", ""}},
                   {"{[ab],c}", {"a", "b", "c"}, {"d", ""}},
                   {"{c,[ab]}", {"a", "b", "c"}, {"d", ""}},
                   {"{[ab],c}d", {"a", "b"}, {"ad", "bd"}}});
    EXPECT_EQ(support::stderr_of([&] { result = fmatch("cd", "{[ab],c}d"); }),
              "p=}d; pc=, stk=NULL\n"
              "Whoops: logic error in fmatch for pattern '{[ab],c}d'\n");
    EXPECT_EQ(result, 0);
    // The second class ends the first one for the close finder.
    expect_sorted({{"{[a],[b}]x", {"a]x", "bx", "}x"}, {"a", "ax"}},
                   {"{[a[],c}d", {"ad", "[d", "cd"}, {"a", "c"}}});
}

// The comma finder does not stop at the close that the other one found.
TEST(fmatch, commas_are_sought_beyond_the_recorded_close) {
    expect_sorted({{"{[a[}],b", {"a],b", "[],b", "b"}, {"a"}}});
}

TEST(fmatch, five_levels_of_braces_fit_and_the_sixth_is_reported) {
    std::string five = "{1,{2,{3,{4,{5}}}}}";
    std::string six = "{1,{2,{3,{4,{5,{6}}}}}}";
    for (const char *subject : {"1", "2", "3", "4", "5"})
        EXPECT_EQ(fmatch(subject, five.c_str()), 1) << subject;
    std::string report = "{} nesting too deep in " + six + "\n";
    auto report_of = [&](const char *subject, const std::string &pattern,
                         int matches) {
        return support::stderr_of(
            [&] { EXPECT_EQ(fmatch(subject, pattern.c_str()), matches); });
    };
    EXPECT_EQ(report_of("5", six, 1), "");
    EXPECT_EQ(report_of("6", six, 0), report);
    EXPECT_EQ(report_of("6", "!" + six, 1), report);
    EXPECT_EQ(report_of("aa", "*{{{{{{", 0),
              "{} nesting too deep in *{{{{{{\n"
              "{} nesting too deep in *{{{{{{\n"
              "{} nesting too deep in *{{{{{{\n");
}

TEST(fmatch, a_close_that_is_not_the_recorded_one_is_reported) {
    EXPECT_EQ(
        support::stderr_of([] { EXPECT_EQ(fmatch("xab", "!x{a{[b]}}"), 1); }),
        "p=}}; pc=, stk=\n"
        "Whoops: logic error in fmatch for pattern 'x{a{[b]}}'\n");
}

struct traced {
    const char *pattern;
    const char *subject;
    const char *text;
};

TEST(fmatch_trace, shows_each_step_and_each_pass) {
    const traced rows[] = {
        {"", "", "0000: 0: p=; f=; pc=NULL\n"},
        {"ab", "ab",
         "0000: 0: p=ab; f=ab; pc=NULL\n"
         "-0000: 0: p=ab; f=ab; pc=NULL\n"
         "-0000: 0: p=b; f=b; pc=NULL\n"},
        {"*b", "ab",
         "0000: 0: p=*b; f=ab; pc=NULL\n"
         "-0000: 0: p=*b; f=ab; pc=NULL\n"
         "  4001: 0: p=; f=; pc=NULL\n"},
        {"*?", "a",
         "0000: 0: p=*?; f=a; pc=NULL\n"
         "-0000: 0: p=*?; f=a; pc=NULL\n"
         "  2001: 0: p=?; f=a; pc=NULL\n"
         "  -2001: 0: p=?; f=a; pc=NULL\n"},
        {"{*}x", "x",
         "0000: 0: p={*}x; f=x; pc=NULL\n"
         "-0000: 0: p={*}x; f=x; pc=NULL\n"
         "  1001: 1: p=*}x; f=x; pc=x\n"
         "  -1001: 1: p=*}x; f=x; pc=x\n"
         "    3002: 1: p=}x; f=x; pc=x\n"
         "    -3002: 1: p=}x; f=x; pc=x\n"
         "    -3002: 0: p=x; f=x; pc=NULL\n"},
        {"!{a,b}", "b",
         "0000: 0: p={a,b}; f=b; pc=NULL\n"
         "-0000: 0: p={a,b}; f=b; pc=NULL\n"
         "  1001: 1: p=a,b}; f=b; pc=\n"
         "  -1001: 1: p=a,b}; f=b; pc=\n"
         "  1001: 1: p=b}; f=b; pc=\n"
         "  -1001: 1: p=b}; f=b; pc=\n"
         "  -1001: 1: p=}; f=; pc=\n"},
        {"*", "x", ""},
    };
    for (const traced &each : rows) {
        std::string text = support::stderr_of([&] {
            fmatch_trace(1);
            fmatch(each.subject, each.pattern);
            fmatch_trace(0);
            fmatch(each.subject, each.pattern);
        });
        EXPECT_EQ(text, each.text) << each.pattern;
    }
}

// --- second opinion

// Standard error in memory, so that it can be looked at after each call.
class errors_kept {
  public:
    errors_kept() : kept_(stderr), stream_(open_memstream(&text_, &size_)) {
        stderr = stream_;
    }
    ~errors_kept() {
        stderr = kept_;
        fclose(stream_);
        free(text_);
    }

    // What came since the last call of this.
    std::string take() {
        fflush(stream_);
        std::string result(text_, size_);
        rewind(stream_);
        return result;
    }

  private:
    FILE *kept_;
    char *text_ = nullptr;
    size_t size_ = 0;
    FILE *stream_;
};

int compare(errors_kept *errors, bool traced, const std::string &pattern,
            const std::string &subject) {
    support::slow_fmatch slow(traced);
    int expected = slow.match(subject, pattern);
    EXPECT_EQ(fmatch(subject.c_str(), pattern.c_str()), expected)
        << pattern << " against " << subject;
    EXPECT_EQ(errors->take(), slow.messages)
        << pattern << " against " << subject;
    return expected;
}

// All texts of up to `longest` of these characters.
std::vector<std::string> all_texts(const std::string &characters,
                                   size_t longest) {
    std::vector<std::string> texts = {""};
    for (size_t i = 0; texts[i].size() < longest; ++i) {
        for (char c : characters)
            texts.push_back(texts[i] + c);
    }
    return texts;
}

const char pattern_characters[] = "ab*?[]{},\\!^-";

TEST(fmatch_second_opinion, all_short_patterns) {
    errors_kept errors;
    std::vector<std::string> subjects = all_texts("ab}", 2);
    for (const char *more : {"aab", "bab", "ba,", "-", "^", "\\", ",", "]"})
        subjects.push_back(more);
    for (const std::string &pattern : all_texts(pattern_characters, 4)) {
        for (const std::string &subject : subjects)
            compare(&errors, false, pattern, subject);
    }
}

TEST(fmatch_second_opinion, all_patterns_of_five_characters) {
    errors_kept errors;
    for (const std::string &pattern : all_texts(pattern_characters, 5)) {
        if (pattern.size() < 5) continue;
        for (const char *subject : {"ab", "aab"})
            compare(&errors, false, pattern, subject);
    }
}

std::string random_text(std::mt19937 *random, const std::string &characters,
                        size_t longest) {
    std::string text;
    for (size_t n = (*random)() % (longest + 1); n > 0; --n)
        text += characters[(*random)() % characters.size()];
    return text;
}

TEST(fmatch_second_opinion, random_longer_patterns) {
    errors_kept errors;
    std::mt19937 random(3);
    for (int i = 0; i < 30000; ++i) {
        std::string pattern =
            random_text(&random, i % 2 ? "ab*{,}" : pattern_characters, 14);
        for (int k = 0; k < 3; ++k) {
            compare(&errors, false, pattern,
                    random_text(&random, i % 2 ? "ab" : "aab,}]-", 9));
        }
    }
}

TEST(fmatch_second_opinion, traces) {
    errors_kept errors;
    std::mt19937 random(4);
    fmatch_trace(1);
    for (int i = 0; i < 10000; ++i) {
        compare(&errors, true,
                random_text(&random, i % 2 ? "ab*{,}" : pattern_characters, 9),
                random_text(&random, "ab", 5));
    }
    fmatch_trace(0);
}

// Long enough for the memory of failed steps to be at work.
TEST(fmatch_second_opinion, patterns_with_many_ways) {
    errors_kept errors;
    std::mt19937 random(5);
    const char *const parts[] = {"{a,}", "{a,a}",   "*",      "{a*,a}",
                                 "{,b}", "{ab,a}",  "{a,b}*", "a",
                                 "b",    "{[a],b}", "?",      "{{a,b},*b}"};
    int long_ones = 0, matches = 0;
    for (int i = 0; i < 600; ++i) {
        std::string pattern;
        for (size_t n = 6 + random() % 4; n > 0; --n)
            pattern += parts[random() % std::size(parts)];
        const char *const ends[] = {"", "{c,d}", "b{c,d}"};
        pattern += ends[i % 3];
        std::string subject(12 + random() % 10, 'a');
        if (i % 2) subject[random() % subject.size()] = 'b';
        if (i % 5 == 0) subject += "bd";
        matches += compare(&errors, false, pattern, subject);
        long_ones += tovan::brace_steps > 600;
    }
    EXPECT_GT(long_ones, 50);
    EXPECT_GT(matches, 50);
}

// --- reports without number

const char too_deep[] = "{{{{{{";

// Lowers the number of reports while it lives.
class few_reports {
  public:
    explicit few_reports(size_t most) : kept_(tovan::most_brace_reports) {
        tovan::most_brace_reports = most;
    }
    ~few_reports() {
        tovan::most_brace_reports = kept_;
    }

  private:
    size_t kept_;
};

size_t reports_in(const std::string &text, const std::string &pattern) {
    std::string line = "{} nesting too deep in " + pattern + "\n";
    size_t count = 0;
    while (text.compare(count * line.size(), line.size(), line) == 0)
        ++count;
    EXPECT_EQ(text.size(), count * line.size());
    return count;
}

size_t reports_of(const std::string &pattern, const std::string &subject) {
    std::string text =
        support::stderr_of([&] { fmatch(subject.c_str(), pattern.c_str()); });
    return reports_in(text, pattern);
}

TEST(fmatch_reports, come_once_for_each_way_up_to_ten_thousand) {
    std::string pattern = std::string("*") + too_deep;
    for (size_t n : {0u, 1u, 700u, 9998u, 9999u})
        EXPECT_EQ(reports_of(pattern, std::string(n, 'a')), n + 1);
    for (size_t n : {10000u, 50000u})
        EXPECT_EQ(reports_of(pattern, std::string(n, 'a')), 10000u);
    // 60 over 2 ways for the first stars, each with the rest for the last.
    pattern = std::string("*a*a*") + too_deep;
    size_t ways = 0;
    for (size_t second = 2; second <= 30; ++second)
        ways += (second - 1) * (30 - second + 1);
    EXPECT_EQ(reports_of(pattern, std::string(30, 'a')), ways);
}

TEST(fmatch_reports, of_long_patterns_are_fewer) {
    for (size_t n : {2000u, 20000u}) {
        std::string pattern = std::string("*") + too_deep + std::string(n, 'x');
        size_t most = 10000 / (1 + pattern.size() / 1024);
        size_t reports = reports_of(pattern, std::string(20000, 'a'));
        EXPECT_LE(reports, most);
        EXPECT_GE(reports, most / 2);
    }
}

int match_in_graph(const std::string &pattern, const std::string &subject) {
    auto p = reinterpret_cast<tovan::text_pointer>(pattern.c_str());
    auto f = reinterpret_cast<tovan::text_pointer>(subject.c_str());
    return tovan::match_in_graph(p, p, f, nullptr, nullptr);
}

// What takes over when there is too much to report or to remember.
TEST(fmatch_second_opinion, matching_in_a_graph) {
    std::mt19937 random(7);
    int matches = 0;
    for (int i = 0; i < 40000; ++i) {
        std::string pattern =
            random_text(&random, i % 2 ? "ab*{,}[" : "ab*{{,}}?[]\\^-", 14);
        if (!pattern.empty() && pattern[0] == '!') continue;
        std::string subject = random_text(&random, "aab,}]", 7);
        support::slow_fmatch slow(false);
        slow.most_steps = 100000;
        int expected = slow.match(subject, pattern);
        if (slow.gave_up()) continue;
        EXPECT_EQ(match_in_graph(pattern, subject), expected)
            << pattern << " against " << subject;
        matches += expected;
    }
    EXPECT_GT(matches, 1000);
}

TEST(fmatch_reports, behind_the_last_results_stay_exact) {
    errors_kept errors;
    few_reports few(5);
    std::mt19937 random(6);
    const char *const parts[] = {"{", "{{", "{{{", "{a,", "*", "*a",  "a",
                                 "b", ",",  "}",   "{*,", "?", "[a{]"};
    int silenced = 0, matches = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string pattern = i % 2 ? "*{a," : "{*";
        for (size_t n = 3 + random() % 7; n > 0; --n)
            pattern += parts[random() % std::size(parts)];
        std::string subject = random_text(&random, "aab", 12);
        support::slow_fmatch slow(false);
        slow.most_steps = 100000;
        int expected = slow.match(subject, pattern);
        int result = fmatch(subject.c_str(), pattern.c_str());
        std::string shown = errors.take();
        if (slow.gave_up()) continue;
        EXPECT_EQ(result, expected) << pattern << " against " << subject;
        EXPECT_EQ(shown, slow.messages.substr(0, shown.size()));
        silenced += shown.size() < slow.messages.size();
        matches += expected != 0 && !slow.messages.empty();
    }
    EXPECT_GT(silenced, 500);
    EXPECT_GT(matches, 100);
}

// --- bounds

size_t steps_of(const std::string &pattern, const std::string &subject) {
    tovan::brace_steps = 0;
    fmatch(subject.c_str(), pattern.c_str());
    return tovan::brace_steps;
}

std::string repeated(const std::string &text, size_t times) {
    std::string result;
    while (times-- > 0)
        result += text;
    return result;
}

TEST(fmatch_bounds, steps_stay_below_pattern_times_subject_times_braces) {
    const std::string patterns[] = {
        repeated("{a,a}", 20) + "b",
        repeated("{a,aa}", 20) + "*b*{c,d}",
        repeated("*{a,b}", 20) + "c",
        repeated("*a", 20) + "{b,c}",
        repeated("{a*,*a}", 20) + "b",
        repeated("{*,*}", 20) + "b",
        repeated("{a,{a,{a,a}}}", 9) + "b",
        repeated("*{,a}", 20) + "xyz*a",
        "*{a" + repeated(",a", 50) + "}" + repeated("a", 50) + "b",
        "{" + repeated("a*a*", 10) + "b,c}",
    };
    for (const std::string &pattern : patterns) {
        size_t braces = 0;
        for (char c : pattern)
            braces += c == '{';
        for (size_t n : {10u, 100u, 1000u}) {
            size_t steps = steps_of(pattern, repeated("a", n));
            EXPECT_LE(steps, pattern.size() * (n + 1) * (1 + braces) + 500)
                << pattern << " " << n;
        }
    }
}

// Each of these would report more often than anyone can wait for.
TEST(fmatch_bounds, steps_stay_below_their_bound_with_errors_on_all_ways) {
    errors_kept errors;
    std::string deep = too_deep;
    const std::string patterns[] = {
        repeated("*a", 20) + "*" + deep,
        repeated("*?", 20) + "*" + deep + "b",
        repeated("{a,}", 20) + deep,
        repeated("{*,a}", 20) + "*" + deep,
        repeated("{a,*}*", 20) + "{{{{{{x}}}}}}",
        repeated("*a", 20) + "{a[b}",
        repeated("{*a,a*}", 10) + "{[a[b]}]}*" + deep,
        repeated("*" + deep, 20),
        "{" + repeated("*a", 20) + deep + ",b}",
    };
    for (const std::string &pattern : patterns) {
        size_t braces = 0;
        for (char c : pattern)
            braces += c == '{';
        for (size_t n : {10u, 100u, 400u}) {
            size_t steps = steps_of(pattern, repeated("a", n));
            errors.take();
            size_t reporting = 10000 * (pattern.size() + n);
            EXPECT_LE(steps,
                      pattern.size() * (n + 1) * (1 + braces) + reporting)
                << pattern << " " << n;
        }
    }
}

// Any five of their braces may be open at the end.
TEST(fmatch_bounds, braces_left_open_do_not_multiply_steps) {
    errors_kept errors;
    for (const char *unit :
         {"*[*}[]*]*{,[", "*{,{,*[{[}}]*?", "{,]^^[,}*{],"}) {
        for (size_t n : {5u, 10u, 20u}) {
            std::string pattern = repeated(unit, n) + "z";
            for (const char *texts : {"]}", "a", "],", "[a]"}) {
                std::string subject = repeated(texts, 2 * n);
                size_t places = pattern.size() * (subject.size() + 1);
                EXPECT_LE(steps_of(pattern, subject),
                          3 * places * (subject.size() + 1) + 1000000)
                    << pattern << " " << texts;
            }
        }
    }
}

TEST(fmatch_bounds, a_million_characters_and_a_small_stack) {
    EXPECT_FATAL(
        {
            std::string million = repeated("a", 1000000);
            for (const char *pattern :
                 {"*a*a*a*b", "*{a,b}*{a,b}*c", "{a*,b*}*{a,a}{a,a}b",
                  "*a*{a,*}a*{b,c}", "{*,*}{*,*}{*,*}b"}) {
                if (fmatch(million.c_str(), pattern) != 0) exit(1);
            }
            exit(0);
        },
        0, "");
}

}  // namespace
