// lvfuncts_test.cc: the functions of the expansion language.
#include "support/child.h"
#include "support/expansion.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <tovan/dystr.h>
#include <tovan/lvexpand.h>
#include <tovan/map_root.h>
#include <unistd.h>

using support::expansion_of;
using support::expansion_row;
using support::expect_complaints;
using support::expect_expansions;
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

TEST(lvfn_exists, tests_existence_alone) {
    support::write_file("a/file", "");
    support::write_file("a/two words", "");
    chmod("a/file", 0);
    ASSERT_EQ(symlink("nowhere", "a/dangling"), 0);
    expect_expansions({
        {"@(exists a)", "1"},
        {"@(exists a/file)", "1"},
        {"@(exists a/two words)", "1"},
        {"@(exists a/other)", "0"},
        {"@(exists a/dangling)", "0"},
        {"@(exists)", "0"},
    });
}

TEST(lvfn_isdir, wants_a_directory) {
    support::write_file("a/file", "");
    ASSERT_EQ(symlink("a", "link"), 0);
    expect_expansions({
        {"@(isdir a)", "1"},
        {"@(isdir link)", "1"},
        {"@(isdir a/file)", "0"},
        {"@(isdir nowhere)", "0"},
        {"@(isdir)", "0"},
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

class file_search : public testing::Test {
  protected:
    void SetUp() override {
        support::write_file("s1/only1.c", "");
        support::write_file("s1/both.c", "");
        support::write_file("s2/both.c", "");
        support::write_file("s2/only2.c", "");
        support::write_file("here.c", "");
        load_variables({{"SrcPath", "s1 . s2"}});
    }
};

TEST_F(file_search, findfile_takes_the_first_readable_candidate) {
    expect_expansions({
        {"@(findfile only1.c)", "s1/only1.c"},
        {"@(findfile both.c)", "s1/both.c"},
        {"@(findfile only2.c)", "s2/only2.c"},
        {"@(findfile here.c)", "here.c"},
        {"@(findfile none.c)", "none.c"},
        {"@(findfile both.c s2 s1)", "s2/both.c"},
        {"@(findfile only1.c s2)", "only1.c"},
        {"@(findfile here.c s2 .)", "here.c"},
        {"@(findfile both.c s1/)", "s1//both.c"},
        {"@(findfile s2/both.c ./)", ".//s2/both.c"},
        {"@(findfile /none.c)", "/none.c"},
        {"@(findfile /none.c s1)", "/none.c"},
        {"<@(findfile)>", "<>"},
    });
}

TEST_F(file_search, paths_lists_all_candidates) {
    expect_expansions({
        {"@(paths x.c)", "s1/x.c x.c s2/x.c"},
        {"@(paths x.c a)", "a/x.c"},
        {"@(paths x.c . a b/)", "x.c a/x.c b//x.c"},
        {"@(paths /x.c)", "/x.c"},
        {"@(paths /x.c a b)", "/x.c"},
    });
    expect_complaints({
        {"@(paths)", "@(paths ...) invoked without arguments"},
    });
}

TEST_F(file_search, an_unset_SrcPath_is_the_current_directory) {
    load_variables({});
    expect_expansions({
        {"@(findfile here.c)", "here.c"},
        {"@(paths x.c)", "x.c"},
    });
}

TEST_F(file_search, an_empty_SrcPath_holds_no_directory) {
    load_variables({{"SrcPath", " "}});
    expect_expansions({
        {"<@(findfile here.c)>", "<here.c>"},
        {"<@(paths x.c)>", "<>"},
    });
}

class lvfn_prog_test : public testing::Test {
  protected:
    void SetUp() override {
        support::write_file("p/tool", "");
        support::write_file("p/data", "");
        support::write_file("bare", "");
        support::make_folders("p/folder");
        chmod("p/tool", 0755);
        chmod("bare", 0755);
    }

    static void expect_with_path(const char *path,
                                 const std::vector<expansion_row> &rows) {
        support::expect_in_fresh_process([&] {
            if (path == nullptr) {
                unsetenv("PATH");
            } else {
                setenv("PATH", path, 1);
            }
            expect_expansions(rows);
        });
    }
};

TEST_F(lvfn_prog_test, a_name_with_a_slash_is_tried_as_it_is) {
    expect_expansions({
        {"@(prog p/tool)", "1"},
        {"@(prog ./p/tool)", "1"},
        {"@(prog p/data)", "0"},
        {"@(prog p/folder)", "0"},
        {"@(prog p/none)", "0"},
        {"@(prog /bin/sh)", "1"},
    });
}

TEST_F(lvfn_prog_test, other_names_are_looked_for_along_the_path) {
    expect_with_path("nowhere:p", {
                                      {"@(prog tool)", "1"},
                                      {"@(prog data)", "0"},
                                      {"@(prog folder)", "0"},
                                      {"@(prog sh)", "0"},
                                      {"@(prog bare)", "0"},
                                      {"@(prog)", "0"},
                                      {"@(prog tool tool)", "0"},
                                  });
}

TEST_F(lvfn_prog_test, an_empty_element_tries_the_bare_name) {
    for (const char *path : {"", ":p", "p:", "p::p"}) {
        expect_with_path(path, {{"@(prog bare)", "1"}});
    }
    expect_with_path("p", {{"@(prog bare)", "0"}});
}

TEST_F(lvfn_prog_test, without_a_path_bin_is_searched) {
    expect_with_path(nullptr, {{"@(prog sh)", "1"}, {"@(prog tool)", "0"}});
}

TEST_F(lvfn_prog_test, the_first_path_is_kept) {
    support::expect_in_fresh_process([] {
        setenv("PATH", "p", 1);
        EXPECT_EQ(expansion_of("@(prog tool)"), "1");
        setenv("PATH", "/bin", 1);
        EXPECT_EQ(expansion_of("@(prog tool)@(prog sh)"), "10");
    });
}

TEST(lvfn_resolve, resolves_against_CurDir_and_simplifies) {
    support::expect_in_fresh_process([] {
        load_variables({{"CurDir", "/work/dir"}});
        expect_expansions({
            {"@(resolve x)", "/work/dir/x"},
            {"@(resolve ../x)", "/work/x"},
            {"@(resolve ./a//b/../c/)", "/work/dir/a/c"},
            {"@(resolve /a/../b)", "/b"},
            {"@(resolve ../../../..)", "/"},
        });
        expect_complaints({
            {"@(resolve)", "@(resolve ...) invoked without an argument"},
            {"@(resolve a b)",
             "@(resolve ...) invoked with multiple arguments"},
        });
    });
}

TEST(lvfn_resolve, does_not_look_at_symbolic_links) {
    support::expect_in_fresh_process([] {
        load_variables({{"CurDir", "/"}});
        std::string here = get_current_dir_name();
        EXPECT_EQ(symlink("/usr/bin", "to-bin"), 0);
        EXPECT_EQ(expansion_of("@(resolve " + here + "/to-bin/../x)"),
                  here + "/x");
    });
}

TEST(lvfn_resolve, keeps_the_first_CurDir) {
    support::expect_in_fresh_process([] {
        load_variables({{"CurDir", "/first"}});
        EXPECT_EQ(expansion_of("@(resolve x)"), "/first/x");
        load_variables({{"CurDir", "/second"}});
        EXPECT_EQ(expansion_of("@(resolve x)"), "/first/x");
    });
}

TEST(lvfn_resolve, an_unset_CurDir_is_the_current_directory) {
    support::expect_in_fresh_process([] {
        std::string here = get_current_dir_name();
        load_variables({});
        EXPECT_EQ(expansion_of("@(resolve x)"), here + "/x");
        load_variables({{"CurDir", "/later"}});
        EXPECT_EQ(expansion_of("@(resolve ../x)"),
                  here.substr(0, here.rfind('/')) + "/x");
    });
}

TEST(lvfn_rootoftype, finds_the_first_root_of_a_type) {
    support::expect_in_fresh_process([] {
        load_variables({{"RootPath", "/a /b\t/c"},
                        {"TreeType[/a]", "source"},
                        {"TreeType[/b]", "build"},
                        {"TreeType[/c]", "build"}});
        expect_expansions({
            {"@(rootoftype source)", "/a"},
            {"@(rootoftype build)", "/b"},
            {"<@(rootoftype other)>", "<>"},
            {"<@(rootoftype b*)>", "<>"},
            {"<@(rootoftype source build)>", "<>"},
        });
        // The roots are kept, their types are not.
        load_variables({{"RootPath", "/d"}, {"TreeType[/c]", "build"}});
        EXPECT_EQ(expansion_of("@(rootoftype build)"), "/c");
    });
    expect_complaints({
        {"@(rootoftype)", "@(rootoftype ...) invoked without an argument"},
    });
}

TEST(lvfn_rootoftype, an_unset_RootPath_is_the_one_root_slash) {
    support::expect_in_fresh_process([] {
        load_variables({{"TreeType[/]", "all"}});
        EXPECT_EQ(expansion_of("@(rootoftype all)"), "/");
        EXPECT_EQ(expansion_of("<@(rootoftype none)>"), "<>");
    });
}

TEST(lvfn_rootoftype, an_empty_RootPath_holds_no_root) {
    support::expect_in_fresh_process([] {
        load_variables({{"RootPath", " "}, {"TreeType[/]", "all"}});
        EXPECT_EQ(expansion_of("<@(rootoftype all)>"), "<>");
    });
}

class path_forms : public testing::Test {
  protected:
    void SetUp() override {
        support::write_file("morva/data/roots.map",
                            "/u /net/u\nD> /src s:/src\nU> s:/ /S/\n");
    }
};

TEST_F(path_forms, maproot_maps_each_word) {
    expect_expansions({
        {"@(maproot /u/a)", "/net/u/a"},
        {"@(maproot /u/a\t\t/usr /u)", "/net/u/a /usr /net/u"},
        {"<@(maproot)>", "<>"},
    });
}

TEST_F(path_forms, dosfile_converts_each_word) {
    expect_expansions({
        {"@(dosfile //D/a/b.c)", "d:/a/b.c"},
        {"@(dosfile -0 //D/a/b.c)", "d:/a/b.c"},
        {"@(dosfile -1 //D/a /src/b)", "d:\\a s:\\src\\b"},
        {"@(dosfile -2 a/b)", "a\\\\b"},
        {"@(dosfile -9 a/b)", "a\\\\b"},
        {"@(dosfile -10 a/b)", "-10 a/b"},
        {"@(dosfile -x a/b)", "-x a/b"},
        {"@(dosfile - a/b)", "- a/b"},
        {"@(dosfile a/b -1 c/d)", "a/b -1 c/d"},
        {"<@(dosfile -1)>", "<>"},
        {"<@(dosfile)>", "<>"},
    });
}

TEST_F(path_forms, ixfile_converts_each_word) {
    expect_expansions({
        {"@(ixfile d:\\a\\\\b.c)", "//D/a/b.c"},
        {"@(ixfile a\\b c\\d)", "a/b c/d"},
        {"@(ixfile s:\\x)", "//S/x"},
        {"@(ixfile s:/x)", "/S/x"},
        {"x@(ixfile a)", "xa"},
        {"<@(ixfile)>", "<>"},
    });
}

// The blank is put by what precedes the word, not by its number.
TEST_F(path_forms, ixfile_asks_the_whole_output_whether_it_is_empty) {
    add_map(4, strdup("gone"), 4, strdup(""));
    expect_expansions({
        {"@(ixfile gone a)", "a"},
        {"x@(ixfile gone a)", "x a"},
        {"@(take1st x@(ixfile gone a))", "x"},
    });
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
