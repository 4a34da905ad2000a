// dyedit_test.cc: trimming, cutting, inserting and joining paths.
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>

using support::owned_string;
using support::text_of;

namespace {

TEST(dytrim, removes_blanks_tabs_and_newlines_only) {
    const char *const rows[][2] = {
        {"x \t\n", "x"}, {"x\r", "x\r"}, {"x\v", "x\v"},    {"x\f", "x\f"},
        {"", ""},        {" \n\t", ""},  {" x y ", " x y"}, {"x\r \n", "x\r"}};
    for (const auto &row : rows) {
        owned_string string(row[0], 16);
        EXPECT_EQ(dytrim(&string), string.buffer);
        EXPECT_STRING(string, row[1], 16);
    }
}

TEST(dytrim, every_other_character_stays) {
    for (int c = 0; c < 256; c++) {
        std::string text = {'x', static_cast<char>(c)};
        owned_string string(text, 16);
        dytrim(&string);
        bool goes = c == ' ' || c == '\t' || c == '\n';
        EXPECT_EQ(text_of(string), goes ? "x" : text) << c;
    }
}

TEST(dydiradd, dydiradd_rows) {
    const struct {
        const char *path;
        const char *component;
        int n;
        const char *result;
    } rows[] = {
        {"", "usr", -1, "usr/"},   {"usr/", "lib", -1, "usr/lib/"},
        {"", "a//", -1, "a/"},     {"x", "/", -1, "x"},
        {"x", "/y", -1, "x/y/"},   {"x/", "/y", -1, "x//y/"},
        {"x", "y", -1, "x/y/"},    {"x", "", -1, "x/"},
        {"x/", "", -1, "x/"},      {"", "", -1, ""},
        {"", "/", -1, ""},         {"", "/usr", -1, "/usr/"},
        {"x", "///", -1, "x"},     {"x", "abc", 2, "x/ab/"},
        {"x", "a/b", 2, "x/a/"},   {"x", "abc", 0, "x/"},
        {"x", "..", -1, "x/../"},  {"x", ".a", -1, "x/.a/"},
        {"/", "usr", -1, "/usr/"}, {"x", "a b", -1, "x/a b/"},
    };
    for (const auto &row : rows) {
        owned_string string(row.path, 32);
        EXPECT_EQ(dydiradd(&string, row.component, row.n), string.buffer);
        EXPECT_STRING(string, row.result, 32);
    }
}

TEST(dydiradd, dydiradd_dot_adds_only_the_slash) {
    const struct {
        const char *path;
        const char *component;
        const char *result;
    } rows[] = {{"x", ".", "x/"},   {"x/", ".", "x/"},  {"", ".", ""},
                {"x", "./", "x/"},  {"x", ".//", "x/"}, {"", "./", ""},
                {"x", "/.", "x/./"}};
    for (const auto &row : rows) {
        owned_string string(row.path, 16);
        dydiradd(&string, row.component, -1);
        EXPECT_STRING(string, row.result, 16);
    }
}

TEST(dydiradd, grows_by_all_that_is_added) {
    const struct {
        std::string path;
        int size;
        int n;
        int capacity;
    } rows[] = {{"x", 16, 12, 16}, {"x", 16, 13, 80},  {"", 16, 61, 80},
                {"x", 16, 61, 80}, {"x", 16, 62, 144}, {"x", 2, 0, 66}};
    for (const auto &row : rows) {
        std::string component(static_cast<size_t>(row.n), 'c');
        owned_string string(row.path, row.size);
        dydiradd(&string, component.data(), row.n);
        std::string expected = row.path;
        if (row.path != "") expected += "/";
        if (row.n > 0) expected += component + "/";
        EXPECT_STRING(string, expected, row.capacity);
    }
}

TEST(dydiradd, nothing_to_add_leaves_the_buffer) {
    owned_string string("x/", 3);
    char *buffer = string.buffer;
    EXPECT_EQ(dydiradd(&string, "", -1), buffer);
    EXPECT_STRING(string, "x/", 3);
}

TEST(dydiradd, the_component_may_be_a_part_of_the_string) {
    owned_string string("alpha/beta", 11);
    dydiradd(&string, string.buffer + 6, 4);
    EXPECT_EQ(text_of(string), "alpha/beta/beta/");
}

TEST(dyinsert, dyinsert_rows) {
    const struct {
        const char *text;
        int position;
        const char *bytes;
        int n;
        const char *result;
    } rows[] = {
        {"ab", 99, "z", -1, "abz"},     {"ab", -5, "z", -1, "zab"},
        {"ab", 1, "z", -1, "azb"},      {"ab", 0, "xyz", 2, "xyab"},
        {"ab", 2, "z", -1, "abz"},      {"ab", 1, "z", 0, "ab"},
        {"ab", 1, "", -1, "ab"},        {"", 0, "z", -1, "z"},
        {"ab", INT_MIN, "z", 1, "zab"}, {"ab", INT_MAX, "z", 1, "abz"},
    };
    for (const auto &row : rows) {
        owned_string string(row.text, 16);
        EXPECT_EQ(dyinsert(&string, row.position, row.bytes, row.n),
                  string.buffer);
        EXPECT_STRING(string, row.result, 16);
    }
}

TEST(dyinsert, grows_when_the_text_would_fill_the_buffer) {
    const struct {
        int n;
        int capacity;
    } rows[] = {{5, 16}, {6, 80}, {7, 80}, {64, 144}};
    for (const auto &row : rows) {
        owned_string string("0123456789", 16);
        std::string more(static_cast<size_t>(row.n), 'n');
        dyinsert(&string, 5, more.data(), row.n);
        EXPECT_STRING(string, "01234" + more + "56789", row.capacity);
    }
}

TEST(dyinsert, any_part_of_the_string_itself) {
    const std::string text = "0123456789";
    for (int size : {11, 100}) {
        for (size_t from = 0; from < 10; from++) {
            for (size_t to = from + 1; to <= 10; to++) {
                for (size_t at = 0; at <= 10; at++) {
                    owned_string string(text, size);
                    dyinsert(&string, static_cast<int>(at),
                             string.buffer + from, static_cast<int>(to - from));
                    std::string expected = text;
                    expected.insert(at, text, from, to - from);
                    ASSERT_EQ(text_of(string), expected)
                        << from << ' ' << to << ' ' << at;
                }
            }
        }
    }
}

TEST(dycut, removes_a_range) {
    const struct {
        int from;
        int to;
        const char *result;
    } rows[] = {{0, 1, "bcdef"},
                {1, 3, "adef"},
                {3, 6, "abc"},
                {0, 6, ""},
                {5, 6, "abcde"}};
    for (const auto &row : rows) {
        owned_string string("abcdef", 16);
        char *start = string.buffer;
        EXPECT_EQ(dycut(&string, start + row.from, start + row.to), start);
        EXPECT_STRING(string, row.result, 16);
    }
}

TEST(dycut, refuses_what_is_no_range_inside) {
    owned_string string("abcdef", 16);
    char *start = string.buffer;
    const int rows[][2] = {{-1, 3}, {2, 7}, {3, 3}, {4, 2}, {6, 6}, {6, 7}};
    for (const auto &row : rows) {
        EXPECT_EQ(dycut(&string, start + row[0], start + row[1]), nullptr);
        EXPECT_STRING(string, "abcdef", 16);
    }
}

TEST(dytruncate, dytruncate_rows) {
    const struct {
        int n;
        const char *result;
    } rows[] = {{-1, "ab"},    {-9, ""},        {10, "abc"}, {3, "abc"},
                {2, "ab"},     {0, ""},         {-3, ""},    {-2, "a"},
                {INT_MIN, ""}, {INT_MAX, "abc"}};
    for (const auto &row : rows) {
        owned_string string("abc", 16);
        EXPECT_EQ(dytruncate(&string, row.n), string.buffer);
        EXPECT_STRING(string, row.result, 16);
    }
}

TEST(dytruncate, rewrites_the_terminator) {
    owned_string string("abc", 16);
    string.buffer[3] = 'x';
    dytruncate(&string, 10);
    EXPECT_STRING(string, "abc", 16);
}

}  // namespace
