// lvfndsrc_test.cc: source files are found, and remembered.
#include "support/crowd.h"
#include "support/tree.h"
#include "support/variables.h"

#include <gtest/gtest.h>
#include <tovan/lvget.h>
#include <unistd.h>
#include <filesystem>

namespace {

class lvfndsrc_tree : public testing::Test {
  protected:
    void SetUp() override {
        support::write_file("here.c", "");
        support::write_file("src/both.c", "");
        support::write_file("lib/both.c", "");
        support::write_file("lib/only.c", "");
        support::write_file("lib/sub/deep.c", "");
        support::write_file("first/hidden.c", "");
        support::load_variables({{"SrcPath", "first src lib/ none"}});
    }
};

TEST_F(lvfndsrc_tree, searches_all_directories_but_the_first) {
    const struct {
        const char *name;
        const char *path;
    } rows[] = {
        {"here.c", "here.c"},     {"both.c", "src/both.c"},
        {"only.c", "lib/only.c"}, {"sub/deep.c", "lib/sub/deep.c"},
        {"deep.c", "(fallback)"}, {"hidden.c", "(fallback)"},
        {"none.c", "(fallback)"}, {"./here.c", "./here.c"},
    };
    for (const auto &row : rows)
        EXPECT_STREQ(lvfndsrc(row.name, "(fallback)"), row.path);
    EXPECT_EQ(lvfndsrc("none.c", nullptr), nullptr);
}

TEST_F(lvfndsrc_tree, absolute_names_are_taken_or_left) {
    std::string readable =
        std::filesystem::current_path() / std::filesystem::path("here.c");
    EXPECT_EQ(lvfndsrc(readable.c_str(), "f"), readable);
    EXPECT_STREQ(lvfndsrc("/no/such", "f"), "f");
    const char *itself = "/no/such";
    EXPECT_EQ(lvfndsrc(itself, itself), itself);
    EXPECT_EQ(lvfndsrc("/no/such", nullptr), nullptr);
}

TEST_F(lvfndsrc_tree, what_was_found_is_not_tested_again) {
    EXPECT_STREQ(lvfndsrc("only.c", "f"), "lib/only.c");
    unlink("lib/only.c");
    EXPECT_STREQ(lvfndsrc("only.c", "f"), "lib/only.c");
    support::load_variables({{"SrcPath", "."}});
    EXPECT_STREQ(lvfndsrc("only.c", "f"), "lib/only.c");
}

TEST_F(lvfndsrc_tree, the_current_directory_comes_before_what_is_recorded) {
    EXPECT_STREQ(lvfndsrc("both.c", "f"), "src/both.c");
    support::write_file("both.c", "");
    EXPECT_STREQ(lvfndsrc("both.c", "f"), "both.c");
    unlink("both.c");
    EXPECT_STREQ(lvfndsrc("both.c", "f"), "src/both.c");
}

TEST_F(lvfndsrc_tree, a_name_with_a_directory_is_recorded_as_a_whole) {
    EXPECT_STREQ(lvfndsrc("sub/deep.c", "f"), "lib/sub/deep.c");
    unlink("lib/sub/deep.c");
    EXPECT_STREQ(lvfndsrc("sub/deep.c", "f"), "lib/sub/deep.c");
    EXPECT_STREQ(lvfndsrc("deep.c", "f"), "f");
}

TEST_F(lvfndsrc_tree, a_failed_search_is_not_remembered) {
    EXPECT_STREQ(lvfndsrc("late.c", "f"), "f");
    support::write_file("src/late.c", "");
    EXPECT_STREQ(lvfndsrc("late.c", "f"), "src/late.c");
}

TEST_F(lvfndsrc_tree, lvsvsrc_records_under_the_last_component) {
    lvsvsrc("/elsewhere/dir/made.c");
    EXPECT_STREQ(lvfndsrc("made.c", "f"), "/elsewhere/dir/made.c");
    EXPECT_STREQ(lvfndsrc("dir/made.c", "f"), "f");
    lvsvsrc("/other/made.c");
    EXPECT_STREQ(lvfndsrc("made.c", "f"), "/other/made.c");
    lvsvsrc(lvfndsrc("made.c", "f"));
    EXPECT_STREQ(lvfndsrc("made.c", "f"), "/other/made.c");
    lvsvsrc("plain.c");
    EXPECT_STREQ(lvfndsrc("plain.c", "f"), "plain.c");
    lvsvsrc("dir/");
    EXPECT_STREQ(lvfndsrc("", "f"), "dir/");
}

TEST_F(lvfndsrc_tree, lvsvsrc_replaces_what_was_found) {
    EXPECT_STREQ(lvfndsrc("only.c", "f"), "lib/only.c");
    lvsvsrc("moved/only.c");
    EXPECT_STREQ(lvfndsrc("only.c", "f"), "moved/only.c");
}

TEST_F(lvfndsrc_tree, thousands_of_sources_are_kept) {
    for (int i = 0; i < 50000; ++i)
        lvsvsrc(("dir/f" + std::to_string(i)).c_str());
    for (int i = 0; i < 50000; i += 7) {
        std::string name = "f" + std::to_string(i);
        ASSERT_STREQ(lvfndsrc(name.c_str(), nullptr), ("dir/" + name).c_str());
    }
}

TEST_F(lvfndsrc_tree, names_with_one_place_are_kept_and_replaced) {
    std::vector<std::string> names = support::equal_places(300);
    tovan::other_comparisons = 0;
    for (const char *directory : {"old/", "new/"}) {
        for (const std::string &name : names)
            lvsvsrc((directory + name).c_str());
        for (const std::string &name : names)
            ASSERT_EQ(lvfndsrc(name.c_str(), ""), directory + name);
    }
    EXPECT_EQ(lvfndsrc((names[0] + "x").c_str(), nullptr), nullptr);
    EXPECT_GT(tovan::other_comparisons, 0u);
}

TEST(lvfndsrc, recorded_sources_need_no_heap) {
    lvsvsrc("dir/early.c");
    EXPECT_STREQ(lvfndsrc("early.c", "f"), "dir/early.c");
}

}  // namespace
