// getdylin_test.cc: lines of a stream.
#include "support/child.h"
#include "support/input.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/getdylin.h>
#include <unistd.h>
#include <random>
#include <string>
#include <vector>

using support::input_stream;
using support::owned_string;
using support::text_of;
using lines = std::vector<std::string>;

namespace {

lines lines_of(const std::string &bytes, int skip = 0) {
    input_stream stream(bytes);
    owned_string line;
    lines all;
    while (char *buffer = getdyline(stream, &line, skip)) {
        EXPECT_EQ(buffer, line.buffer);
        EXPECT_EQ(support::flaw_of(line), "");
        all.push_back(text_of(line));
    }
    EXPECT_EQ(support::flaw_of(line), "");
    return all;
}

std::string repeated(size_t n, char character = 'x') {
    return std::string(n, character);
}

TEST(getdyline, line_rows) {
    const struct {
        std::string bytes;
        lines result;
    } rows[] = {
        {"", {}},
        {"\n", {""}},
        {"abc", {"abc"}},
        {"abc\n", {"abc"}},
        {"abc\r\n", {"abc"}},
        {"abc\r", {"abc"}},
        {"a\n\nb\n", {"a", "", "b"}},
        {"a\rb\n", {"a\rb"}},
        {"a\r\r\n", {"a\r"}},
        {"\r\n", {""}},
        {"a\\\nb\n", {"a\\", "b"}},
        {"# a\n", {"# a"}},
        {" \ta \n", {" \ta "}},
        {"\xff\xfe\n", {"\xff\xfe"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(lines_of(row.bytes), row.result) << row.bytes;
}

TEST(getdyline, a_control_z_at_the_end_is_no_text) {
    const struct {
        std::string bytes;
        lines result;
    } rows[] = {
        {"\x1a", {}},           {"a\x1a", {"a"}},
        {"a\n\x1a", {"a"}},     {"a\r\x1a", {"a"}},
        {"\r\x1a", {""}},       {"a\x1a\x1a", {"a\x1a"}},
        {"\x1a\x1a", {"\x1a"}}, {"a\x1a\n", {"a\x1a"}},
        {"\x1a\n", {"\x1a"}},   {"\x1a\r", {"\x1a"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(lines_of(row.bytes), row.result) << row.bytes;
}

TEST(getdyline, a_lone_carriage_return_at_the_end_is_an_empty_line) {
    EXPECT_EQ(lines_of("\r"), (lines{""}));
    EXPECT_EQ(lines_of("a\n\r"), (lines{"a", ""}));
}

TEST(getdyline, skips_leading_blanks_and_tabs_if_asked) {
    const struct {
        std::string bytes;
        lines result;
    } rows[] = {
        {" \t a b \n\tc\nd\n", {"a b ", "c", "d"}},
        {"  \n\t\n", {"", ""}},
        {"  ", {}},
        {" \r\n", {""}},
        {"\v a\n", {"\v a"}},
        {repeated(5000, ' ') + "a\n", {"a"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(lines_of(row.bytes, 1), row.result) << row.bytes;
}

TEST(getdyline, keeps_embedded_nuls) {
    const std::string nul(1, '\0');
    const lines rows[] = {
        {"a" + nul + "b"},      {nul},
        {nul + nul + nul},      {repeated(300, '\0')},
        {repeated(254) + nul},  {repeated(255) + nul + nul},
        {nul + "a", "b" + nul},
    };
    for (const lines &row : rows) {
        std::string bytes;
        for (const std::string &line : row)
            bytes += line + "\n";
        EXPECT_EQ(lines_of(bytes), row);
        bytes.pop_back();
        EXPECT_EQ(lines_of(bytes), row);
    }
}

TEST(getdyline, lines_of_every_length) {
    for (size_t n = 0; n < 1200; n++) {
        for (const char *end : {"\n", "\r\n", "", "\x1a"}) {
            std::string line = repeated(n);
            lines expected = {line};
            if (n == 0 && *end != '\n' && *end != '\r') expected.clear();
            ASSERT_EQ(lines_of(line + end), expected) << n;
        }
    }
}

TEST(getdyline, a_short_line_behind_a_long_one) {
    lines expected = {repeated(1000000), "a", "", repeated(300000, 'y'), "b"};
    std::string bytes;
    for (const std::string &line : expected)
        bytes += line + "\n";
    EXPECT_EQ(lines_of(bytes), expected);
}

TEST(getdyline, a_line_of_many_megabytes) {
    EXPECT_TRUE(lines_of(repeated(20000000)) == lines{repeated(20000000)});
}

TEST(getdyline, makes_a_string_of_56_bytes) {
    input_stream stream("abc\n");
    dy line{};
    EXPECT_STREQ(getdyline(stream, &line, 0), "abc");
    EXPECT_STRING(line, "abc", 56);
    free(line.buffer);
}

TEST(getdyline, empties_the_string) {
    input_stream stream("abc\n");
    owned_string line("before", 16);
    EXPECT_STREQ(getdyline(stream, &line, 0), "abc");
    EXPECT_STRING(line, "abc", 16);
}

TEST(getdyline, at_the_end_the_string_stays) {
    input_stream stream("abc");
    owned_string line;
    getdyline(stream, &line, 0);
    EXPECT_NE(feof(stream), 0);
    EXPECT_EQ(getdyline(stream, &line, 0), nullptr);
    EXPECT_EQ(text_of(line), "abc");
    EXPECT_EQ(getdycline(stream, &line, 0), nullptr);
    EXPECT_EQ(text_of(line), "abc");
}

TEST(getdyline, the_end_behind_a_newline_empties_the_string) {
    input_stream stream("abc\n");
    owned_string line;
    getdyline(stream, &line, 0);
    EXPECT_EQ(feof(stream), 0);
    EXPECT_EQ(getdyline(stream, &line, 0), nullptr);
    EXPECT_EQ(text_of(line), "");
}

TEST(getdycline, appends_to_what_is_there) {
    input_stream stream("def\nghi");
    owned_string line("abc", 16);
    EXPECT_EQ(getdycline(stream, &line, 0), line.buffer);
    EXPECT_STRING(line, "abcdef", 16);
    getdycline(stream, &line, 0);
    EXPECT_STRING(line, "abcdefghi", 16);
}

TEST(getdycline, makes_a_string_of_120_bytes) {
    input_stream stream("abc\n");
    dy line{};
    EXPECT_STREQ(getdycline(stream, &line, 0), "abc");
    EXPECT_STRING(line, "abc", 120);
    free(line.buffer);
}

TEST(readdyline, the_last_character_means_one_of_this_line) {
    const struct {
        const char *before;
        const char *bytes;
        const char *result;
        bool is_end;
    } rows[] = {
        {"a\r", "\n", "a\r", false},   {"a\r", "", "a\r", true},
        {"a\x1a", "", "a\x1a", true},  {"a\r", "\x1a", "a\r", true},
        {"a\n", "", "a\n", true},      {"a\n", "\n", "a\n", false},
        {"a\r", "\r\n", "a\r", false},
    };
    for (const auto &row : rows) {
        input_stream stream(row.bytes);
        owned_string line(row.before, 16);
        EXPECT_EQ(readdyline(stream, &line, 0) == nullptr, row.is_end);
        EXPECT_STRING(line, row.result, 16);
    }
}

TEST(readdyline, works_on_a_zeroed_record) {
    for (const char *bytes : {"abc\n", ""}) {
        input_stream stream(bytes);
        dy line{};
        line.marker = 1;
        readdyline(stream, &line, 0);
        EXPECT_STRING(line, bytes[0] ? "abc" : "", 64);
        free(line.buffer);
    }
}

TEST(readdyline, takes_nothing_beyond_the_newline) {
    input_stream stream("one\ntwo\nthree\nfour five\n");
    owned_string line;
    char text[10];
    EXPECT_STREQ(getdyline(stream, &line, 0), "one");
    EXPECT_EQ(getc(stream), 't');
    EXPECT_STREQ(getdyline(stream, &line, 0), "wo");
    EXPECT_STREQ(fgets(text, sizeof text, stream), "three\n");
    EXPECT_EQ(ungetc('>', stream), '>');
    EXPECT_STREQ(getdyword(stream, &line, 0), ">four");
    EXPECT_EQ(ftell(stream), 19);
    EXPECT_STREQ(getdyline(stream, &line, 1), "five");
}

// The same, character by character.
char *slow_readdyline(FILE *stream, dy *line, int skip) {
    int start = line->length;
    int character = getc(stream);
    while (skip && (character == ' ' || character == '\t'))
        character = getc(stream);
    for (; character != '\n' && character != EOF; character = getc(stream)) {
        char byte = static_cast<char>(character);
        dynstr(line, &byte, 1);
    }
    auto drop = [&](char last) {
        if (line->length > start && line->buffer[line->length - 1] == last)
            dytruncate(line, -1);
    };
    if (character == EOF) {
        drop(26);
        bool is_end = line->length == start;
        drop('\r');
        return is_end ? nullptr : line->buffer;
    }
    drop('\r');
    return line->buffer;
}

TEST(readdyline, reads_as_character_by_character_capacity_included) {
    std::mt19937 random(5);
    const std::string letters("\n\r\x1a \ta\0b", 8);
    for (int round = 0; round < 2000; round++) {
        std::string bytes;
        for (auto n = random() % 12; n > 0; n--) {
            bytes += letters[random() % letters.size()];
            if (random() % 8 == 0) bytes += repeated(random() % 700);
        }
        input_stream fast_stream(bytes);
        input_stream slow_stream(bytes);
        owned_string fast("", 1 + static_cast<int>(random() % 300));
        owned_string slow("", fast.capacity);
        for (int step = 0; step < 20; step++) {
            if (random() % 2 == 0) {
                dytruncate(&fast, 0);
                dytruncate(&slow, 0);
            }
            int skip = random() % 2 == 0;
            bool is_end = slow_readdyline(slow_stream, &slow, skip) == nullptr;
            ASSERT_EQ(readdyline(fast_stream, &fast, skip) == nullptr, is_end);
            ASSERT_EQ(support::flaw_of(fast), "");
            ASSERT_EQ(text_of(fast), text_of(slow));
            ASSERT_EQ(fast.capacity, slow.capacity);
        }
    }
}

// A string that is nearly as long as any can be; of its block only the end is
// touched.
TEST(readdyline, a_line_beyond_2_31_bytes_ends_as_out_of_memory) {
    for (size_t n : {99, 100, 1000}) {
        support::outcome end = support::in_child([n] {
            input_stream stream(repeated(n) + "\n");
            dy line = {INT_MAX - 101, 1, nullptr, INT_MAX,
                       static_cast<char *>(malloc(INT_MAX))};
            readdyline(stream, &line, 0);
            _exit(line.length != INT_MAX - 2);
        });
        EXPECT_EQ(end.signal, n == 99 ? 0 : SIGABRT);
        EXPECT_EQ(end.exit_status, n == 99 ? 0 : -1);
        EXPECT_EQ(end.err, n == 99 ? "" : "test: Ran out of memory\n");
    }
}

TEST(readdyline, a_read_error_is_the_end_of_the_input) {
    FILE *stream = fopen(".", "r");
    owned_string line("abc", 16);
    EXPECT_EQ(readdyline(stream, &line, 0), nullptr);
    EXPECT_STRING(line, "abc", 16);
    EXPECT_EQ(getdyline(stream, &line, 1), nullptr);
    EXPECT_EQ(getdyword(stream, &line, 0), nullptr);
    fclose(stream);
}

}  // namespace
