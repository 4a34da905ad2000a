// lvfnfile_test.cc: expansion functions that look for files.
#include "support/expansion.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

using support::expansion_of;
using support::expansion_row;
using support::expect_complaints;
using support::expect_expansions;
using support::load_variables;

namespace {

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

}  // namespace
