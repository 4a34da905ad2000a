// lvexpand_test.cc: the rules of the expansion language.
#include "support/child.h"
#include "support/expansion.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <tovan/lvexpand.h>
#include <tovan/lvget.h>

using support::expansion_of;
using support::expect_complaints;
using support::expect_expansions;

namespace {

// First in this file: no variables are loaded yet.
TEST(before_lvget, only_a_look_up_needs_variables) {
    EXPECT_EQ(expansion_of("@@ @0 @NotSet @(empty)"), "@  @NotSet 1");
    const std::string logic_error =
        "test: LOGIC ERROR: lvvar() called before lvget()\n";
    EXPECT_FATAL(expansion_of("@X"), 255, logic_error);
    EXPECT_FATAL(expansion_of("@X[a]"), 255, logic_error);
}

class lvexpand_rules : public testing::Test {
  protected:
    void SetUp() override {
        support::load_variables({
            {"A", "a"},
            {"_under_1", "u"},
            {"Empty", ""},
            {"Padded", " a b "},
            {"Reference", "@A@(empty)"},
            {"X[a]", "xa"},
            {"X[a b]", "xab"},
            {"X[]", "x-nothing"},
            {"X[X[a]]", "nested"},
            {"X[xa]", "x of xa"},
            {"X[@]", "at"},
            {"X[ a]", "blank a"},
            {"NotSet", "no"},
            {"NotSet[a]", "subscripted"},
            {"NotSet1", "longer"},
            {"Call", "empty"},
            {"CallBlank", " empty x"},
        });
    }
};

TEST_F(lvexpand_rules, plain_text_loses_the_white_space_at_its_ends) {
    expect_expansions({
        {"", ""},
        {"x", "x"},
        {" \t\nx \t\n", "x"},
        {"  a  b  ", "a  b"},
        {" \t\n", ""},
        {"\rx\r", "\rx\r"},
        {"\vx\f", "\vx\f"},
        {"a\nb", "a\nb"},
    });
}

TEST_F(lvexpand_rules, an_at_sign_takes_one_character) {
    expect_expansions({
        {"@", "@"},        {"x@", "x@"},        {"@@", "@"},  {"@@x", "@x"},
        {"@@@@", "@@"},    {"@@@", "@@"},       {"@0", ""},   {"x@0y", "xy"},
        {"@0x", "x"},      {"@00", "0"},        {"@1", "1"},  {"@9a", "9a"},
        {"@-", "-"},       {"@)", ")"},         {"@]", "]"},  {"@[a]", "[a]"},
        {"@@(x)", "@(x)"}, {"@\xe4x", "\xe4x"}, {"x@ ", "x"}, {"@ x", " x"},
        {" @ x", " x"},    {"@\tx", "\tx"},
    });
}

TEST_F(lvexpand_rules, a_name_is_the_longest_run_of_name_characters) {
    expect_expansions({
        {"@A", "a"},
        {"@A.c", "a.c"},
        {"@A@A", "aa"},
        {"-@A-", "-a-"},
        {"@_under_1", "u"},
        {"@AA", ""},
        {"@A0A", ""},
        {"@A@0A", "aA"},
        {"@A(x)", "a(x)"},
        {"@A]", "a]"},
        {"@A\xe4", "a\xe4"},
        {"@Unset", ""},
        {"x@Unset.y", "x.y"},
    });
}

TEST(lvexpand, names_may_have_any_length) {
    for (size_t length : {1, 62, 63, 64, 65, 200, 5000}) {
        std::string name(length, 'n');
        support::load_variables({{name, "v"}, {name + "[a]", "va"}});
        EXPECT_EQ(expansion_of("@" + name + ".@" + name + "n."), "v..");
        EXPECT_EQ(expansion_of("@" + name + "[a]"), "va");
    }
}

TEST_F(lvexpand_rules, a_value_is_not_expanded_again) {
    EXPECT_EQ(expansion_of("@Reference"), "@A@(empty)");
}

TEST_F(lvexpand_rules, only_the_result_is_trimmed_and_only_at_its_end) {
    expect_expansions({
        {"  @Unset  ", ""},
        {"  @Padded  ", " a b"},
        {"  @Empty  x", "x"},
        {"  @0  x", "x"},
        {"@Padded@Padded", " a b  a b"},
        {"@(empty x)  @(empty)", "0  1"},
    });
}

TEST_F(lvexpand_rules, the_marker_of_an_unset_value_survives) {
    expect_expansions({
        {"@NotSet", "@NotSet"},
        {"x@NotSet.y", "x@NotSet.y"},
        {"@NotSet1", "longer"},
        {"@NotSet[a]", "subscripted"},
    });
}

TEST_F(lvexpand_rules, a_subscript_is_expanded_and_looked_up_exactly) {
    expect_expansions({
        {"@X[a]", "xa"},
        {"@X[@A]", "xa"},
        {"@X[ \ta\n ]", "xa"},
        {"@X[@A b]", "xab"},
        {"@X[]", "x-nothing"},
        {"@X[@Unset]", "x-nothing"},
        {"@X[ ]", "x-nothing"},
        {"@X[ @0 ]", "x-nothing"},
        {"@X[@X[a]]", "x of xa"},
        {"@X[X[a]]", "nested"},
        {"@X[@@]", "at"},
        {"@X[@]", "at"},
        {"@X[@ a]", "blank a"},
        {"@X[b]", ""},
        {"@X[*]", ""},
        {"@X[a]b", "xab"},
        {"@X[a][a]", "xa[a]"},
        {"@Y[a]", ""},
        {"@X[@(take1st a b)]", "xa"},
    });
}

TEST_F(lvexpand_rules, the_text_of_a_call_is_expanded_before_it_runs) {
    expect_expansions({
        {"@(empty)", "1"},
        {"@(empty @Unset)", "1"},
        {"@(empty @Empty)", "1"},
        {"@( \t\n empty \t\n )", "1"},
        {"@(empty x)", "0"},
        {"@(@Call x)", "0"},
        {"@(@Call@0 x)", "0"},
        {"@(@CallBlank)", "0"},
        {"@(em@0pty)", "1"},
        {"@(take1st @(take1st a b) c)", "a"},
        {"@(@(take1st empty x) @A)", "0"},
        {"@(expr (1+2)*3)", "9"},
        {"@(expr @(expr 1+1)*@(expr 2+1))", "6"},
        {"@(take1st a@)b)", "a@b)"},
        {"x@(take1st y)z", "xyz"},
    });
}

TEST_F(lvexpand_rules, brackets_count_only_with_their_own_kind) {
    expect_expansions({
        {"@(take1st []] )", "[]]"},
        {"@(take1st @X[a] )", "xa"},
        {"@X[@(take1st a)]", "xa"},
        {"@(take1st ((a)) )", "((a))"},
    });
}

TEST_F(lvexpand_rules, wrong_texts_are_reported) {
    expect_complaints({
        {"@(", "unbalanced ')'"},
        {"x@(empty", "unbalanced ')'"},
        {"@(empty (x)", "unbalanced ')'"},
        {"@X[", "no closing ]"},
        {"@X[a", "no closing ]"},
        {"@X[[a]", "no closing ]"},
        {"@Unset[a", "no closing ]"},
        {"@()", "unsupported kivs function `'"},
        {"@( )", "unsupported kivs function `'"},
        {"@(@Unset)", "unsupported kivs function `'"},
        {"@(nosuch a b)", "unsupported kivs function `nosuch'"},
        {"@(nosuch)", "unsupported kivs function `nosuch'"},
        {"@( nosuch\ta)", "unsupported kivs function `nosuch'"},
        {"@(@A@A x)", "unsupported kivs function `aa'"},
        {"@(Empty)", "unsupported kivs function `Empty'"},
        {"@(emptyx)", "unsupported kivs function `emptyx'"},
        {"@(empt)", "unsupported kivs function `empt'"},
        {"@(zzz)", "unsupported kivs function `zzz'"},
    });
}

TEST_F(lvexpand_rules, a_missing_bracket_comes_before_what_is_inside) {
    expect_complaints({
        {"@(nosuch @X[ )", "no closing ]"},
        {"@(empty @X[)]", "no closing ]"},
        {"@X[@(nosuch ])", "unbalanced ')'"},
        {"@(nosuch @(nosuch2)", "unbalanced ')'"},
        {"@X[@(nosuch) [ ]", "no closing ]"},
        {"@(empty @(nosuch) @X[ )", "unsupported kivs function `nosuch'"},
        {"@(nosuch) @(", "unsupported kivs function `nosuch'"},
        {"@(empty @X[@(empty ]))", "unbalanced ')'"},
        {"@(nosuch @(nosuch2))", "unsupported kivs function `nosuch2'"},
        {"@X[@X[a]@(nosuch)", "no closing ]"},
    });
}

TEST(lvexpand, keeps_what_the_output_holds) {
    support::load_variables({});
    dy output;
    dynew(&output, 0);
    dystr(&output, "kept  ");
    EXPECT_STREQ(lvexpand("  ", &output, "f", 0), "kept  ");
    EXPECT_STREQ(lvexpand("  b ", &output, "f", 0), "kept  b");
    EXPECT_EQ(output.length, 7);
    free(output.buffer);
}

TEST(lvexpand, an_output_grows_by_what_is_appended_alone) {
    support::load_variables({{"A", std::string(100, 'a')}});
    dy output{};
    lvexpand("@A", &output, "f", 0);
    EXPECT_EQ(output.capacity, 128);
    free(output.buffer);
}

TEST(lvexpand, keeps_file_and_line_for_messages) {
    support::load_variables({});
    expansion_of("x", "vopfile", 12);
    EXPECT_STREQ(curfile, "vopfile");
    EXPECT_EQ(curln, 12);
    expansion_of("x", nullptr, 0);
    EXPECT_EQ(curfile, nullptr);
    EXPECT_EQ(curln, 0);
}

TEST(lvexpand, expands_a_text_in_its_own_output) {
    support::load_variables({{"A", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}});
    dy output;
    dynew(&output, 4);
    dystr(&output, "@A-@A@(empty).");
    lvexpand(output.buffer, &output, "f", 0);
    EXPECT_EQ(std::string(output.buffer),
              "@A-@A@(empty).aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa-"
              "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa1.");
    free(output.buffer);
}

TEST(varexpand, gives_the_text_back_as_it_was) {
    support::load_variables({{"A", "a"}, {"X[a]", "xa"}});
    char text[] = " @X[@A] @(take1st @A b) ";
    dy output;
    dynew(&output, 0);
    curfile = "before";
    curln = 7;
    EXPECT_EQ(varexpand(text, &output), output.buffer);
    EXPECT_STREQ(output.buffer, "xa a");
    EXPECT_STREQ(text, " @X[@A] @(take1st @A b) ");
    EXPECT_STREQ(curfile, "before");
    EXPECT_EQ(curln, 7);
    free(output.buffer);
}

TEST(function, appends_the_result_and_returns_what_follows_the_call) {
    support::load_variables({{"A", "a"}});
    const struct {
        const char *text;
        const char *output;
        const char *rest;
    } rows[] = {
        {"empty)rest", " 1", "rest"},
        {" empty x )", " 0", ""},
        {"take1st @A)@A", " a", "@A"},
        {"take1st (@(take1st @A)))(", " (a)", "("},
        {"take1st)", " ", ""},
    };
    for (const auto &row : rows) {
        std::string text = row.text;
        dy output;
        dynew(&output, 0);
        dystr(&output, " ");
        EXPECT_STREQ(function(text.data(), &output), row.rest) << row.text;
        EXPECT_STREQ(output.buffer, row.output) << row.text;
        EXPECT_EQ(text, row.text);
        free(output.buffer);
    }
}

TEST(function, reports_what_a_whole_text_reports) {
    curfile = "f";
    curln = 0;
    dy output;
    dynew(&output, 0);
    char open[] = "empty (x)";
    EXPECT_FATAL(function(open, &output), 255,
                 support::complaint("unbalanced ')'"));
    char unknown[] = "nosuch x)";
    EXPECT_FATAL(function(unknown, &output), 255,
                 support::complaint("unsupported kivs function `nosuch'"));
    free(output.buffer);
}

TEST(runfunc, runs_what_the_first_word_names) {
    const struct {
        const char *text;
        int result;
        const char *output;
    } rows[] = {
        {"empty", 0, "1"},    {"empty x", 0, "0"},
        {"empty\n", 0, "1"},  {"take1st \t\n a b", 0, "a"},
        {"", 1, ""},          {" empty", 1, ""},
        {"aaa", 1, ""},       {"nosuch x", 1, ""},
        {"varmatchx", 1, ""},
    };
    for (const auto &row : rows) {
        std::string text = row.text;
        dy output;
        dynew(&output, 0);
        EXPECT_EQ(runfunc(text.data(), &output), row.result) << row.text;
        EXPECT_STREQ(output.buffer, row.output) << row.text;
        free(output.buffer);
    }
}

TEST(splitlist, adds_the_words_and_ends_each) {
    dyp words;
    dypnew(&words, 1);
    dypadd(&words, "before");
    char text[] = " a\tbc\n\nd\re ";
    char **vector = splitlist(&words, text);
    EXPECT_EQ(static_cast<void *>(vector), words.array);
    ASSERT_EQ(words.count, 4);
    EXPECT_STREQ(vector[1], "a");
    EXPECT_STREQ(vector[2], "bc");
    EXPECT_STREQ(vector[3], "d\re");
    EXPECT_EQ(vector[4], nullptr);
    EXPECT_EQ(vector[1], text + 1);
    char blank[] = " \n";
    EXPECT_EQ(splitlist(&words, blank)[4], nullptr);
    free(words.array);
}

// What runs on a thread with a small stack.
struct deep_text {
    std::string text;
    std::string result;
};

void *expand_deep_text(void *argument) {
    auto *deep = static_cast<deep_text *>(argument);
    deep->result = expansion_of(deep->text);
    return nullptr;
}

// Expands on a stack of 128 KB.
std::string expansion_on_small_stack(const std::string &text) {
    deep_text deep{text, ""};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 * 1024);
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, expand_deep_text, &deep), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return deep.result;
}

std::string repeated(const std::string &text, int count) {
    std::string all;
    for (int i = 0; i < count; i++)
        all += text;
    return all;
}

// Reading each level's text more than a constant number of times would take
// minutes at this depth.
TEST(lvexpand, a_hundred_thousand_levels_take_little_stack) {
    constexpr int depth = 100'000;
    support::load_variables({{"X[a]", "a"}});
    const struct {
        std::string open;
        std::string core;
        std::string close;
        std::string expected;
    } rows[] = {
        {"@(take1st ", "a", " b)", "a"},
        {"@X[", "a", "]", "a"},
        {"@X[@(take1st ", "a", ")]", "a"},
        {"@(take1st @X[", "a", "])", "a"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(
            expansion_on_small_stack(repeated(row.open, depth) + row.core +
                                     repeated(row.close, depth)),
            row.expected);
    }
}

TEST(lvexpand, a_million_brackets_are_read_once) {
    support::load_variables({});
    constexpr int count = 1'000'000;
    EXPECT_EQ(expansion_on_small_stack("@(empty " + repeated("(", count) +
                                       repeated(")", count) + ")"),
              "0");
    expect_complaints({
        {"@(empty " + repeated("@(", count), "unbalanced ')'"},
        {repeated("@X[", count), "no closing ]"},
    });
}

}  // namespace
