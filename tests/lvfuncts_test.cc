// lvfuncts_test.cc: the functions of the expansion language.
#include "support/child.h"
#include "support/expansion.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <tovan/lvexpand.h>

using support::expansion_of;
using support::expansion_row;
using support::load_variables;

namespace {

// First in this file: no variables are loaded yet.
TEST(before_lvget, what_asks_variables_needs_them) {
    for (const char *text :
         {"@(kivset A)", "@(option A)", "@(value A)", "@(varmatch A k)",
          "@(sys a)", "@(resolve a)", "@(rootoftype a)", "@(findfile a)",
          "@(paths a)"}) {
        support::outcome ended = support::in_child([&] { expansion_of(text); });
        EXPECT_EQ(ended.exit_status, 255) << text;
        EXPECT_NE(ended.err.find("LOGIC ERROR"), std::string::npos) << text;
    }
}

TEST(functs, has_26_names_in_byte_order_and_an_end) {
    const char *const names[] = {
        "dosfile", "empty",      "env",       "exists", "expr",    "findfile",
        "home",    "insert",     "isdir",     "ixfile", "kivset",  "lvset",
        "maproot", "match",      "notempty",  "option", "paths",   "prog",
        "resolve", "rootoftype", "splitpath", "sys",    "take1st", "trait",
        "value",   "varmatch",
    };
    int count = 0;
    for (; functs[count].name != nullptr; count++) {
        ASSERT_LT(count, 26);
        EXPECT_STREQ(functs[count].name, names[count]);
        EXPECT_NE(functs[count].handler, nullptr);
    }
    EXPECT_EQ(count, 26);
    EXPECT_EQ(functs[26].handler, nullptr);
}

TEST(functs, a_handler_is_called_by_its_own_name_too) {
    char argument[] = "a b";
    dy output;
    dynew(&output, 0);
    functs[1].handler(argument, &output);
    lvfn_take1st(argument, &output);
    EXPECT_STREQ(output.buffer, "0a");
    free(output.buffer);
}

TEST(lvfuncts, messages_carry_the_line) {
    load_variables({});
    const expansion_row rows[] = {
        {"@(expr)", "Syntax or interpretation error in `'"},
        {"@(home)", "@(home ...) not supported in this program"},
        {"@(insert)", "missing argument for @(insert ...)"},
        {"@(insert /)", "missing terminator for @(insert /...)"},
        {"@(insert //)", "@(insert ...) argument does not contain `%'"},
        {"@(paths)", "@(paths ...) invoked without arguments"},
        {"@(resolve)", "@(resolve ...) invoked without an argument"},
        {"@(resolve a b)", "@(resolve ...) invoked with multiple arguments"},
        {"@(rootoftype)", "@(rootoftype ...) invoked without an argument"},
        {"@(varmatch)", "@(varmatch ...) invoked without arguments"},
        {"@(varmatch X)",
         "@(varmatch ...) invoked with wrong number of arguments"},
        {"@(nosuch)", "unsupported kivs function `nosuch'"},
        {"@(", "unbalanced ')'"},
        {"@X[", "no closing ]"},
    };
    for (const expansion_row &row : rows) {
        EXPECT_FATAL(expansion_of(row.text, "vopfile", 12), 255,
                     "test:vopfile:12: " + row.expected +
                         "\ntest: aborted due to above error in kivs "
                         "expansion\n");
    }
}

}  // namespace
