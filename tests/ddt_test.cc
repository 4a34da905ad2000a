// ddt_test.cc: named trace points.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/ddt.h>
#include <tovan/errexit.h>
#include <string>

namespace {

// Known packages stay known until the process ends, so they are never
// released.
ddt &package_of(const char *name, bool accepts_all = false,
                int (*initialiser)(ddt *, const char *) = ddt_level_init) {
    ddt &package = *new ddt{};
    package.level = 65535;
    package.name_length = static_cast<int>(strlen(name));
    memcpy(package.name, name, strlen(name));
    package.accepts_all = accepts_all;
    package.initialiser = initialiser;
    return package;
}

TEST(ddt, level_rows) {
    const struct {
        const char *flags;
        const char *name;
        bool accepts_all;
        int level;
    } rows[] = {
        {"foo=3,foo-", "foo", false, 0},
        {"foo-,foo=3", "foo", false, 3},
        {"foo", "foo", false, 1},
        {"foo,bar", "foo", false, 1},
        {"foo=", "foo", false, 0},
        {"foobar", "foo", false, 0},
        {"fo", "foo", false, 0},
        {"xfoo", "foo", false, 0},
        {"", "foo", false, 0},
        {"all=2,foo=5", "foo", true, 5},
        {"all=2,foo=5", "bar", true, 2},
        {"all=2,foo=5", "baz", false, 0},
        {"foo=5,all-", "foo", true, 0},
        {"foo=5,all=2,all=7", "foo", true, 7},
        {"foo=4,allx", "foo", true, 4},
        {"all", "all", false, 1},
        {"foo=0x1F", "foo", false, 31},
        {"foo=010", "foo", false, 8},
        {"foo=7foo", "foo", false, 7},
        {"twelve_chars=2", "twelve_chars", false, 2},
    };
    for (const auto &row : rows) {
        ddt_setup();
        ddt_addflags(row.flags);
        ddt &package = package_of(row.name, row.accepts_all);
        EXPECT_EQ(ddt_level(&package), row.level) << row.flags;
        EXPECT_EQ(package.level, static_cast<unsigned>(row.level));
        EXPECT_EQ(package.looked_up, 1);
        ddt_setup();
    }
}

TEST(ddt, ddt_all_resets_what_came_before) {
    ddt &package = package_of("foo", true);
    ddt_addflags("foo=5,all");
    EXPECT_EQ(ddt_level(&package), 1);
    ddt_addflags("foo=9");
    EXPECT_EQ(ddt_level(&package), 9);
}

TEST(ddt, a_large_level_keeps_16_bits_in_the_record) {
    ddt &package = package_of("foo");
    ddt_addflags("foo=0x12345");
    EXPECT_EQ(ddt_level(&package), 0x12345);
    EXPECT_EQ(package.level, 0x2345u);
}

TEST(ddt, value_rows) {
    const struct {
        const char *flags;
        int on;
        int value;
    } rows[] = {{"foo=7", 1, 7}, {"foo", 1, 0}, {"foo-", 0, 0}, {"", 0, 0}};
    for (const auto &row : rows) {
        ddt_setup();
        ddt_addflags(row.flags);
        ddt &package = package_of("foo", false, ddt_value_init);
        package.value = 99;
        EXPECT_EQ(ddt_level(&package), row.on) << row.flags;
        EXPECT_EQ(package.level, static_cast<unsigned>(row.on));
        EXPECT_EQ(package.value, row.value);
        ddt_setup();
    }
}

TEST(ddt, trace_prints_a_prefix_when_it_is_on) {
    ddt &package = package_of("foo");
    ddt_addflags("foo=2");
    EXPECT_EQ(support::stderr_of([&] {
                  EXPECT_EQ(ddt_trace(&package, 2, 1), 1);
                  EXPECT_EQ(ddt_trace(&package, 1, 0), 1);
                  EXPECT_EQ(ddt_trace(&package, 3, 1), 0);
              }),
              "test: foo(2) ");
}

TEST(ddt, trace_prints_no_prefix_for_a_tool_without_a_name) {
    ddt &package = package_of("foo");
    ddt_addflags("foo");
    progname = nullptr;
    EXPECT_EQ(support::stderr_of([&] { ddt_trace(&package, 1, 1); }),
              "foo(1) ");
}

TEST(ddt, level_0_is_on_whatever_the_flags_say) {
    ddt &package = package_of("foo");
    EXPECT_EQ(ddt_trace(&package, 0, 0), 1);
    ddt_addflags("foo-");
    EXPECT_EQ(ddt_trace(&package, 0, 0), 1);
}

TEST(ddt, a_package_is_linked_when_it_is_first_looked_up) {
    ddt &first = package_of("foo");
    ddt &second = package_of("bar");
    EXPECT_EQ(first.next, nullptr);
    EXPECT_EQ(ddt_trace(&first, 1, 0), 0);
    EXPECT_EQ(ddt_trace(&second, 1, 0), 0);
    EXPECT_NE(first.next, nullptr);
    EXPECT_EQ(second.next, &first);
}

int looked_up = 0;

int counting_init(ddt *package, const char *suffix) {
    looked_up++;
    return ddt_level_init(package, suffix);
}

TEST(ddt, a_package_is_looked_up_once_until_the_flags_change) {
    ddt &package = package_of("foo", false, counting_init);
    EXPECT_EQ(ddt_trace(&package, 1, 0), 0);
    EXPECT_EQ(ddt_trace(&package, 1, 0), 0);
    EXPECT_EQ(looked_up, 1);
    ddt_addflags("foo");
    EXPECT_EQ(package.level, 65535u);
    EXPECT_EQ(package.looked_up, 0);
    EXPECT_EQ(ddt_trace(&package, 1, 0), 1);
    EXPECT_EQ(ddt_trace(&package, 1, 0), 1);
    EXPECT_EQ(looked_up, 2);
}

TEST(ddt, setup_prefers_the_programs_own_variable) {
    progname = "make";
    setenv("make_debug", "foo=2", 1);
    setenv("KRT_debug", "foo=3,bar=3", 1);
    ddt &foo = package_of("foo");
    ddt &bar = package_of("bar");
    ddt_setup();
    EXPECT_EQ(ddt_level(&foo), 2);
    EXPECT_EQ(ddt_level(&bar), 0);
    setenv("make_debug", "", 1);
    ddt_setup();
    EXPECT_EQ(ddt_level(&foo), 3);
    unsetenv("make_debug");
    ddt_setup();
    EXPECT_EQ(ddt_level(&bar), 3);
    unsetenv("KRT_debug");
    ddt_setup();
    EXPECT_EQ(ddt_level(&bar), 0);
}

TEST(ddt, setup_cuts_the_program_name_to_32_characters) {
    progname = "a_program_name_of_more_than_32_characters";
    setenv("a_program_name_of_more_than_32_c_debug", "foo=4", 1);
    ddt &package = package_of("foo");
    ddt_setup();
    EXPECT_EQ(ddt_level(&package), 4);
}

TEST(ddt, the_flag_area_takes_510_characters) {
    ddt &first = package_of("a");
    ddt &last = package_of("z");
    std::string flags = "a=1," + std::string(504, 'x') + ",z";
    ASSERT_EQ(flags.size(), 510u);
    ddt_addflags(flags.c_str());
    EXPECT_EQ(ddt_level(&last), 1);
    const char *warning =
        "test: Warning: ddt_flags area overflow - flags not added\n";
    EXPECT_EQ(support::stderr_of([] { ddt_addflags(""); }), warning);
    EXPECT_EQ(support::stderr_of([] { ddt_addflags("a-"); }), warning);
    EXPECT_EQ(ddt_level(&first), 1);
    ddt_setup();
    flags += "x";
    EXPECT_EQ(support::stderr_of([&] { ddt_addflags(flags.c_str()); }),
              warning);
    EXPECT_EQ(ddt_level(&first), 0);
}

TEST(ddt, additions_are_items_of_their_own) {
    ddt &package = package_of("foo");
    ddt_addflags("fo");
    ddt_addflags("o");
    EXPECT_EQ(ddt_level(&package), 0);
    ddt_addflags(nullptr);
    EXPECT_EQ(package.looked_up, 1);
    ddt_addflags("foo");
    EXPECT_EQ(ddt_level(&package), 1);
}

TEST(ddt_Vflags, x_prints_help_and_ends_well) {
    support::outcome end = support::in_child([] { ddt_Vflags("x"); });
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(
        end.out,
        "A debug flag string is a comma separated list of items,\n"
        "where an item is one of:\n"
        "\n"
        "\t<name>=<number>\n"
        "\t<name>\t\t# value defaults to 1\n"
        "\t<name>-\t\t# indicates package turned off\n"
        "\n"
        "<number> can be a decimal, octal (first digit is `0'),\n"
        "or hexadecimal digits (begins with `0x').\n"
        "The last specified setting for a name or its alias is the one "
        "used.\n"
        "\n"
        "To determine what -V <names> are supported by a particular program "
        "use:\n"
        "\n"
        "\twhat <program> | grep '^-D'\n"
        "\n"
        "``all'' is an alias for any package name that is followed by "
        "``|all''.\n");
}

TEST(ddt_Vflags, anything_else_is_added) {
    ddt &package = package_of("xy");
    ddt_Vflags("xy");
    EXPECT_EQ(ddt_level(&package), 1);
}

TEST(ddt_allptr, gives_what_follows_the_last_all) {
    EXPECT_EQ(ddt_allptr(), nullptr);
    ddt_addflags("all=1,b");
    EXPECT_STREQ(ddt_allptr(), "=1,b");
    ddt_addflags("alla");
    EXPECT_STREQ(ddt_allptr(), "=1,b,alla");
    ddt_addflags("all");
    EXPECT_STREQ(ddt_allptr(), "");
    ddt_setup();
    EXPECT_EQ(ddt_allptr(), nullptr);
}

TEST(ddt_set, forces_a_package_and_reset_gives_it_back) {
    ddt &package = package_of("foo");
    ddt_addflags("foo=3");
    ddt_level(&package);
    package.value = 8;
    int save[3];
    EXPECT_EQ(ddt_set(save, &package, 7, 9), save);
    EXPECT_EQ(ddt_trace(&package, 7, 0), 1);
    EXPECT_EQ(package.value, 9);
    ddt_reset(&package, static_cast<unsigned>(save[0]), save[1], save[2]);
    EXPECT_EQ(package.level, 3u);
    EXPECT_EQ(package.looked_up, 1);
    EXPECT_EQ(package.value, 8);
}

TEST(ddt_set, links_a_package_so_that_new_flags_reach_it) {
    ddt &package = package_of("foo");
    int save[3];
    ddt_set(save, &package, 7, 0);
    EXPECT_NE(package.next, nullptr);
    ddt_addflags("foo=2");
    EXPECT_EQ(package.level, 65535u);
    EXPECT_EQ(ddt_trace(&package, 3, 0), 0);
}

TEST(ddt_atoi, ddt_atoi_rows) {
    const struct {
        const char *text;
        unsigned number;
    } rows[] = {
        {"010", 8},
        {"0x1F", 31},
        {"0X1f", 31},
        {"019", 17},
        {"12", 12},
        {"12a", 12},
        {"", 0},
        {"-1", 0},
        {"0", 0},
        {"0x", 0},
        {"0xg", 0},
        {"4294967297", 1},
        {"0xffffffff", 0xffffffffu},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ddt_atoi(row.text), row.number) << row.text;
}

}  // namespace
