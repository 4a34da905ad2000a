// lvfnpath_test.cc: expansion functions that rewrite paths.
#include "support/expansion.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/map_root.h>
#include <unistd.h>

using support::expansion_of;
using support::expect_complaints;
using support::expect_expansions;
using support::load_variables;

namespace {

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

TEST(lvfn_resolve, resolves_against_CurDir_and_simplifies) {
    support::expect_in_fresh_process([] {
        load_variables({{"CurDir", "/base/dir"}});
        expect_expansions({
            {"@(resolve x)", "/base/dir/x"},
            {"@(resolve ../x)", "/base/x"},
            {"@(resolve ./a//b/../c/)", "/base/dir/a/c"},
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

}  // namespace
