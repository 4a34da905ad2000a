// lvvar_test.cc: variables by name, and all of them.
#include "support/child.h"
#include "support/variables.h"

#include <gtest/gtest.h>
#include <tovan/lvget.h>

namespace {

TEST(lvvar, before_the_load_everything_is_a_logic_error) {
    std::string before = "() called before lvget()\n";
    int flags = 0;
    EXPECT_FATAL(lvvar("A"), 255, "test: LOGIC ERROR: lvvar" + before);
    EXPECT_FATAL(lvvar_f("A", &flags), 255,
                 "test: LOGIC ERROR: lvvar" + before);
    EXPECT_FATAL(lvoption("A"), 255, "test: LOGIC ERROR: lvvar" + before);
    EXPECT_FATAL(lvvarmatch(0, "A", "k"), 255,
                 "test: LOGIC ERROR: lvvarmatch" + before);
    EXPECT_FATAL(lvwalk(0, nullptr), 255, "test: LOGIC ERROR: lvwalk" + before);
    EXPECT_FATAL(lvsrcdirs(0), 255, "test: LOGIC ERROR: lvvar" + before);
    EXPECT_EQ(lvgenseek(), 0u);
    EXPECT_EQ(lvgen_lc(), 0u);
}

TEST(lvvar, names_are_compared_as_a_whole) {
    support::load_variables({{"A", "1"},
                             {"AB", "2"},
                             {"EMPTY", ""},
                             {"X[a]", "sub"},
                             {"\xc3\xa4", "bytes"}});
    const struct {
        const char *name;
        const char *value;
    } rows[] = {
        {"A", "1"},
        {"AB", "2"},
        {"ABC", nullptr},
        {"", nullptr},
        {"a", nullptr},
        {"EMPTY", ""},
        {"X[a]", "sub"},
        {"X", nullptr},
        {"X[", nullptr},
        {"X[a", nullptr},
        {"X[a]]", nullptr},
        {"A ", nullptr},
        {"\xc3\xa4", "bytes"},
        {"\xc3", nullptr},
    };
    for (const auto &row : rows)
        EXPECT_STREQ(lvvar(row.name), row.value) << row.name;
}

TEST(lvvar, names_of_every_length_are_found) {
    std::vector<support::variable> variables;
    for (size_t n = 1; n <= 70; ++n)
        variables.push_back({std::string(n, 'n'), std::to_string(n)});
    support::load_variables(variables);
    for (size_t n = 1; n <= 70; ++n)
        EXPECT_EQ(lvvar(std::string(n, 'n').c_str()), std::to_string(n));
    EXPECT_EQ(lvvar(std::string(71, 'n').c_str()), nullptr);
}

TEST(lvvar, the_first_of_equal_names_counts) {
    support::load_variables({{"A", "first"}, {"A", "second"}});
    EXPECT_STREQ(lvvar("A"), "first");
}

TEST(lvvar_f, gives_sign_extended_flags_only_when_found) {
    support::load_variables(
        {{"ZERO", "z", 0}, {"HIGH", "h", 0x80}, {"ALL", "a", 0xfd}});
    int flags = 1234;
    EXPECT_EQ(lvvar_f("NONE", &flags), nullptr);
    EXPECT_EQ(flags, 1234);
    EXPECT_STREQ(lvvar_f("HIGH", &flags), "h");
    EXPECT_EQ(flags, -128);
    EXPECT_STREQ(lvvar_f("ALL", &flags), "a");
    EXPECT_EQ(flags, -3);
    EXPECT_STREQ(lvvar_f("ZERO", &flags), "z");
    EXPECT_EQ(flags, 0);
}

TEST(lvoption, only_0_and_false_are_off) {
    support::load_variables({{"EMPTY", ""},
                             {"ZERO", "0"},
                             {"FALSE", "false"},
                             {"Capital", "False"},
                             {"DOUBLE", "00"},
                             {"BLANK", "0 "},
                             {"ON", "1"}});
    const struct {
        const char *name;
        int on;
    } rows[] = {
        {"EMPTY", 1},  {"ZERO", 0},  {"FALSE", 0}, {"Capital", 1},
        {"DOUBLE", 1}, {"BLANK", 1}, {"ON", 1},    {"NONE", 0},
    };
    for (const auto &row : rows)
        EXPECT_EQ(lvoption(row.name), row.on) << row.name;
}

TEST(lvgenseek, gives_the_words_of_the_header) {
    support::heap_image image;
    image.generation_seek = 0x81020304;
    image.generation_lines = 0xfffefdfc;
    support::load_heap(image.bytes());
    EXPECT_EQ(lvgenseek(), 0x81020304u);
    EXPECT_EQ(lvgen_lc(), 0xfffefdfcu);
}

std::string walked;

int note(int bucket, int flags, const char *name, const char *value) {
    walked += std::to_string(bucket) + " " + std::to_string(flags) + " " +
              name + "=" + value + "\n";
    return 1;  // not looked at
}

std::string walk(int mask) {
    walked.clear();
    lvwalk(mask, note);
    return walked;
}

TEST(lvwalk, goes_through_chains_in_order_by_mask) {
    support::heap_image image;
    image.add_to(255, "LAST", "l", 0x81);
    image.add_to(7, "B", "2", 0x04);
    image.add_to(0, "FIRST", "f", 0);
    image.add_to(7, "A", "1", 0x05);
    support::load_heap(image.bytes());
    std::string first = "0 0 FIRST=f\n";
    std::string chain = "7 4 B=2\n7 5 A=1\n";
    std::string last = "255 -127 LAST=l\n";
    EXPECT_EQ(walk(0), first + chain + last);
    EXPECT_EQ(walk(4), chain);
    EXPECT_EQ(walk(1), "7 5 A=1\n" + last);
    EXPECT_EQ(walk(2), "");
    EXPECT_EQ(walk(0x80), last);
    EXPECT_EQ(walk(0x100), last);  // the sign fills all higher bits
}

}  // namespace
