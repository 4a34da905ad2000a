// lvfntext_test.cc: expansion functions that work on their argument alone.
#include "support/expansion.h"

#include <gtest/gtest.h>

using support::expect_complaints;
using support::expect_expansions;
using support::load_variables;

namespace {

TEST(lvfn_empty, tells_whether_there_is_an_argument) {
    load_variables({{"E", ""}, {"Blank", " "}});
    expect_expansions({
        {"@(empty)@(notempty)", "10"},
        {"@(empty x)@(notempty x)", "01"},
        {"@(empty @E)@(notempty @E)", "10"},
        {"@(empty @Blank)@(notempty @Blank)", "10"},
        {"@(empty \r)@(notempty \r)", "01"},
    });
}

TEST(lvfn_expr, evaluates) {
    load_variables({{"N", "3"}});
    expect_expansions({
        {"@(expr 1+2)", "3"},
        {"@(expr (1+2)*3)", "9"},
        {"@(expr -1)", "-1"},
        {"@(expr @N*@N)", "9"},
        {"@(expr 0x80000000)", "-2147483648"},
        {"@(expr\t1\n+ 1 )", "2"},
    });
    expect_complaints({
        {"@(expr)", "Syntax or interpretation error in `'"},
        {"@(expr 1 +)", "Syntax or interpretation error in `1 +'"},
        {"@(expr @N @N)", "Syntax or interpretation error in `3 3'"},
        {"@(expr 1/0)", "Syntax or interpretation error in `1/0'"},
        {"@(expr a)", "Syntax or interpretation error in `a'"},
        {"@(expr 100%s)", "Syntax or interpretation error in `100%s'"},
    });
}

TEST(lvfn_home, is_refused) {
    expect_complaints({
        {"@(home)", "@(home ...) not supported in this program"},
        {"@(home x)", "@(home ...) not supported in this program"},
    });
}

TEST(lvfn_insert, puts_words_into_a_template) {
    load_variables({{"Dirs", "/a\t/b"}});
    expect_expansions({
        {"@(insert /-I%/ a b)", "-Ia -Ib"},
        {"@(insert :-I%: @Dirs)", "-I/a -I/b"},
        {"@(insert /%/ a)", "a"},
        {"@(insert /%.o/a b)", "a.o b.o"},
        {"@(insert /-%-%-/ a b)", "-a-%- -b-%-"},
        {"@(insert / % / a b)", " a   b"},
        {"<@(insert /-I%/)>", "<>"},
        {"<@(insert /-I%/ \t)>", "<>"},
        {"@(insert xa%bxw)", "awb"},
        {"@(insert /%/ a/b)", "a/b"},
    });
    expect_complaints({
        {"@(insert)", "missing argument for @(insert ...)"},
        {"@(insert @0 )", "missing argument for @(insert ...)"},
        {"@(insert /)", "missing terminator for @(insert /...)"},
        {"@(insert :%/ a)", "missing terminator for @(insert :...)"},
        {"@(insert // a)", "@(insert ...) argument does not contain `%'"},
        {"@(insert /-I/ %)", "@(insert ...) argument does not contain `%'"},
        {"@(insert %a% b)", "@(insert ...) argument does not contain `%'"},
    });
}

TEST(lvfn_match, hands_its_words_to_patmatch) {
    expect_expansions({
        {"@(match main.c *.c)", "1"},
        {"@(match main.c *.h *.c)", "1"},
        {"@(match main.c *.h)", "0"},
        {"@(match main.c !*.h)", "1"},
        {"@(match -exact a.c *.c)", "0"},
        {"@(match -exact a.c a.c)", "1"},
        {"@(match -rxp abc b)", "1"},
        {"@(match -rxp abc ^b)", "0"},
        {"@(match -reverse *.c a.h a.c)", "1"},
        {"@(match main.c)", "0"},
        {"@(match)", "0"},
    });
}

TEST(lvfn_splitpath, separates_the_elements_by_blanks) {
    expect_expansions({
        {"@(splitpath a:b)", "a b"},
        {"@(splitpath a::b)", "a b"},
        {"@(splitpath :a)", "a"},
        {"@(splitpath ::a)", "a"},
        {"@(splitpath a: \t:\n:b)", "a b"},
        {"@(splitpath a b:c)", "a b c"},
        {"@(splitpath a :b)", "a  b"},
        {"@(splitpath a;b:c)", "a;b c"},
        {"@(splitpath -c a:b)", "a b"},
        {"@(splitpath -c \t a;b)", "a;b"},
        {"@(splitpath -s a;b:c)", "a b:c"},
        {"@(splitpath -s ;;a; ;b)", "a b"},
        {"@(splitpath -s)", ""},
        {"@(splitpath -c)", ""},
        {"@(splitpath -cx:y)", "-cx y"},
        {"@(splitpath -x a:b)", "-x a b"},
        {"@(splitpath)", ""},
        {"@(splitpath :)", ""},
        {"@(splitpath a:)b", "a b"},
        {"@(splitpath a:)", "a"},
        {"x@(splitpath :a:b)y", "xa by"},
    });
}

TEST(lvfn_take1st, takes_the_first_word) {
    expect_expansions({
        {"@(take1st a b)", "a"},
        {"@(take1st a)", "a"},
        {"@(take1st\n\ta\tb)", "a"},
        {"<@(take1st)>", "<>"},
        {"@(take1st a\rb)", "a\rb"},
    });
}

}  // namespace
