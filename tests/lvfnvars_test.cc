// lvfnvars_test.cc: expansion functions that ask variables, traits and the
// environment.
#include "support/child.h"
#include "support/expansion.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>

using support::expansion_of;
using support::expect_complaints;
using support::expect_expansions;
using support::load_variables;

namespace {

TEST(lvfn_env, asks_the_environment) {
    setenv("FILLED", " a b ", 1);
    setenv("VOID", "", 1);
    unsetenv("GONE");
    expect_expansions({
        {"@(env FILLED).", " a b ."},
        {"<@(env VOID)>", "<>"},
        {"<@(env GONE)>", "<>"},
        {"<@(env)>", "<>"},
        {"<@(env FILLED GONE)>", "<>"},
        {"<@(env   FILLED  )>", "< a b >"},
    });
}

TEST(lvfn_kivset, tells_whether_a_variable_is_set) {
    load_variables({{"A", "a"}, {"E", ""}, {"X[a]", "x"}});
    expect_expansions({
        {"@(kivset A)", "1"},
        {"@(kivset E)", "1"},
        {"@(kivset X[a])", "1"},
        {"@(kivset X)", "0"},
        {"@(kivset a)", "0"},
        {"@(kivset A E)", "0"},
        {"@(kivset)", "0"},
    });
}

TEST(lvfn_lvset, warns_and_answers_as_kivset) {
    load_variables({{"A", "a"}});
    std::string result;
    const std::string text = "@(lvset ...) obsolete; change to @(kivset ...)\n";
    EXPECT_EQ(support::stderr_of([&] { result = expansion_of("@(lvset A)"); }),
              "test:f: Warning: " + text);
    EXPECT_EQ(result, "1");
    EXPECT_EQ(support::stderr_of(
                  [&] { result = expansion_of("@(lvset B)", "f", 12); }),
              "test:f:12: " + text);
    EXPECT_EQ(result, "0");
}

TEST(lvfn_option, answers_as_lvoption) {
    load_variables({{"On", "yes"},
                    {"Void", ""},
                    {"Zero", "0"},
                    {"False", "false"},
                    {"Capital", "False"}});
    expect_expansions({
        {"@(option On)", "1"},
        {"@(option Void)", "1"},
        {"@(option Zero)", "0"},
        {"@(option False)", "0"},
        {"@(option Capital)", "1"},
        {"@(option Unset)", "0"},
        {"@(option)", "0"},
        {"@(option On Void)", "0"},
    });
}

TEST(lvfn_sys, matches_the_name_of_the_system) {
    support::expect_in_fresh_process([] {
        load_variables({{"System[Name]", "lx64"}});
        expect_expansions({
            {"@(sys lx64)", "1"},
            {"@(sys lx*)", "1"},
            {"@(sys sun* lx*)", "1"},
            {"@(sys sun*)", "0"},
            {"@(sys !sun*)", "1"},
            {"@(sys !lx*)", "0"},
            {"@(sys)", "0"},
        });
    });
}

TEST(lvfn_sys, keeps_the_first_name) {
    support::expect_in_fresh_process([] {
        load_variables({{"System[Name]", "lx64"}});
        EXPECT_EQ(expansion_of("@(sys lx*)"), "1");
        load_variables({{"System[Name]", "sun"}});
        EXPECT_EQ(expansion_of("@(sys lx*)"), "1");
        EXPECT_EQ(expansion_of("@(sys sun)"), "0");
    });
}

TEST(lvfn_sys, an_unset_name_matches_nothing_for_the_whole_process) {
    support::expect_in_fresh_process([] {
        load_variables({});
        EXPECT_EQ(expansion_of("@(sys *)@(sys !x)"), "00");
        load_variables({{"System[Name]", "sun"}});
        EXPECT_EQ(expansion_of("@(sys *)@(sys sun)"), "00");
    });
}

TEST(lvfn_trait, asks_the_environment_then_the_file) {
    support::write_file(
        "traits", support::heap_of({{"MAXLEAFLEN", "255"}, {"OTHER", "file"}}));
    setenv("TRAITS_FILE", "traits", 1);
    setenv("OTHER", "environment", 1);
    expect_expansions({
        {"<@(trait MAXLEAFLEN)>", "<255>"},
        {"<@(trait OTHER)>", "<environment>"},
        {"<@(trait NOSUCH)>", "<>"},
        {"<@(trait)>", "<>"},
        {"<@(trait OTHER MAXLEAFLEN)>", "<>"},
    });
}

TEST(lvfn_value, falls_back_to_the_rest_of_its_argument) {
    load_variables({{"A", " a "}, {"E", ""}, {"X[k]", "xk"}});
    expect_expansions({
        {"<@(value A x)>", "< a >"},
        {"<@(value E x)>", "<>"},
        {"<@(value X[k] x)>", "<xk>"},
        {"<@(value B x  y)>", "<x  y>"},
        {"<@(value B\t\n x)>", "<x>"},
        {"<@(value B)>", "<>"},
        {"<@(value)>", "<>"},
    });
}

TEST(lvfn_varmatch, looks_up_by_name_and_key) {
    load_variables({{"X", "plain"},
                    {"X[a*]", "short"},
                    {"X[ab*]", "long"},
                    {"X[abc]", "exact"},
                    {"Y", "only plain"},
                    {"0", "zero"},
                    {"0[k]", "zero k"},
                    {"Z[k]", "zk"}});
    expect_expansions({
        {"@(varmatch X abc)", "exact"},
        {"@(varmatch X abd)", "long"},
        {"@(varmatch X ax)", "short"},
        {"@(varmatch 0 X ax)", "short"},
        {"@(varmatch 1 X ax)", "short"},
        {"<@(varmatch X k)>", "<>"},
        {"<@(varmatch 0 X k)>", "<>"},
        {"<@(varmatch 1 X k)>", "<plain>"},
        {"<@(varmatch -d X k)>", "<plain>"},
        {"<@(varmatch 1 Y k)>", "<only plain>"},
        {"<@(varmatch Z k)>", "<zk>"},
        {"<@(varmatch -1 k)>", "<>"},
        {"<@(varmatch 0 0 k)>", "<zero k>"},
    });
    const std::string wrong =
        "@(varmatch ...) invoked with wrong number of arguments";
    expect_complaints({
        {"@(varmatch)", "@(varmatch ...) invoked without arguments"},
        {"@(varmatch @0 )", "@(varmatch ...) invoked without arguments"},
        {"@(varmatch X)", wrong},
        {"@(varmatch X a b)", wrong},
        {"@(varmatch 0 X)", wrong},
        {"@(varmatch 1 X)", wrong},
        {"@(varmatch -d X)", wrong},
        {"@(varmatch 1)", wrong},
        {"@(varmatch 1 X a b)", wrong},
        {"@(varmatch -x X k)", wrong},
    });
}

}  // namespace
