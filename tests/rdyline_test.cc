// rdyline_test.cc: lines of a descriptor.
#include "support/child.h"
#include "support/input.h"
#include "support/records.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/time.h>
#include <tovan/getdylin.h>
#include <unistd.h>
#include <random>
#include <string>
#include <vector>

using support::in_pieces;
using support::input_descriptor;
using support::owned_string;
using support::text_of;
using lines = std::vector<std::string>;

namespace {

constexpr int skip_leading = 1;
constexpr int trim_trailing = 2;
constexpr int append_to_string = 4;

lines lines_of(int descriptor, int flags) {
    rdy *reader = rdy_init(descriptor);
    owned_string line;
    lines all;
    while (char *buffer = rdy_getline(reader, &line, flags)) {
        EXPECT_EQ(buffer, line.buffer);
        EXPECT_EQ(support::flaw_of(line), "");
        all.push_back(text_of(line));
    }
    EXPECT_EQ(support::flaw_of(line), "");
    free(reader);
    return all;
}

TEST(rdy_getline, line_rows) {
    const struct {
        std::string bytes;
        int flags;
        lines result;
    } rows[] = {
        {"", 0, {}},
        {"\n", 0, {""}},
        {"abc", 0, {"abc"}},
        {"abc\n", 0, {"abc"}},
        {"abc\r\n", 0, {"abc"}},
        {"a\n\nb\n", 0, {"a", "", "b"}},
        {" \ta \t\n", 0, {" \ta \t"}},
        {" \ta \t\n", skip_leading, {"a \t"}},
        {" \ta \t\n", trim_trailing, {" \ta"}},
        {" \ta \t\n", skip_leading | trim_trailing, {"a"}},
        {"a  \r\n", trim_trailing, {"a"}},
        {"a  \r\n", 0, {"a  "}},
        {"a\r  \n", trim_trailing, {"a\r"}},
        {"a\r\r\n", trim_trailing, {"a\r"}},
        {" \t \n", skip_leading, {""}},
        {" \t \n", trim_trailing, {""}},
        {" \t ", skip_leading, {}},
        {"a\v \n", trim_trailing, {"a\v"}},
        {"\n\n", skip_leading, {"", ""}},
        {std::string("a\0b\n\0", 5),
         0,
         {std::string("a\0b", 3), std::string("\0", 1)}},
        {"\x1a", 0, {"\x1a"}},
    };
    for (const auto &row : rows) {
        input_descriptor whole(row.bytes);
        EXPECT_EQ(lines_of(whole, row.flags), row.result) << row.bytes;
        input_descriptor bytewise(in_pieces(row.bytes, 1));
        EXPECT_EQ(lines_of(bytewise, row.flags), row.result) << row.bytes;
    }
}

TEST(rdy_getline, rdy_getline_leaves_the_end_of_an_unfinished_line) {
    for (const char *bytes : {"a \r", "a \t", "a\r", "\r"}) {
        input_descriptor input{std::string(bytes)};
        EXPECT_EQ(lines_of(input, trim_trailing), (lines{bytes}));
    }
}

TEST(rdy_getline, lines_that_end_at_every_place_of_the_block) {
    for (size_t n = 4090; n < 4100; n++) {
        for (const char *end : {"\n", "\r\n", "  \r\n"}) {
            std::string line(n, 'x');
            input_descriptor input(line + end + "next\n");
            EXPECT_EQ(lines_of(input, trim_trailing), (lines{line, "next"}));
        }
    }
}

TEST(rdy_getline, leading_blanks_over_several_blocks) {
    input_descriptor input(std::string(10000, ' ') + "a\n");
    EXPECT_EQ(lines_of(input, skip_leading), (lines{"a"}));
}

TEST(rdy_getline, a_line_of_many_megabytes) {
    std::string line(20000000, 'x');
    input_descriptor input(line + "\n");
    EXPECT_TRUE(lines_of(input, 0) == lines{line});
}

TEST(rdy_getline, makes_a_string_of_120_bytes) {
    for (int flags : {0, append_to_string}) {
        input_descriptor input(std::string("abc\n"));
        rdy *reader = rdy_init(input);
        dy line{};
        EXPECT_STREQ(rdy_getline(reader, &line, flags), "abc");
        EXPECT_STRING(line, "abc", 120);
        free(line.buffer);
        free(reader);
    }
}

TEST(rdy_getline, appends_if_asked) {
    input_descriptor input(std::string("def\n  ghi \n\njkl"));
    rdy *reader = rdy_init(input);
    owned_string line("abc", 100);
    EXPECT_EQ(rdy_getline(reader, &line, append_to_string), line.buffer);
    EXPECT_STRING(line, "abcdef", 100);
    rdy_getline(reader, &line, append_to_string | skip_leading | trim_trailing);
    EXPECT_STRING(line, "abcdefghi", 100);
    EXPECT_NE(rdy_getline(reader, &line, append_to_string), nullptr);
    EXPECT_NE(rdy_getline(reader, &line, append_to_string), nullptr);
    EXPECT_STRING(line, "abcdefghijkl", 100);
    EXPECT_EQ(rdy_getline(reader, &line, append_to_string), nullptr);
    EXPECT_STRING(line, "abcdefghijkl", 100);
    free(reader);
}

TEST(rdy_getline, the_clean_up_sees_the_whole_string) {
    input_descriptor input(std::string("\n\n"));
    rdy *reader = rdy_init(input);
    owned_string line("a \r", 100);
    rdy_getline(reader, &line, append_to_string);
    EXPECT_EQ(text_of(line), "a ");
    rdy_getline(reader, &line, append_to_string | trim_trailing);
    EXPECT_EQ(text_of(line), "a");
    free(reader);
}

// A line that comes in one block grows the string once, by the rule for its
// length.
TEST(rdy_getline, grows_by_the_span) {
    const struct {
        size_t length;
        int capacity;
    } rows[] = {{15, 16}, {16, 80}, {63, 80}, {64, 144}, {1000, 1040}};
    for (const auto &row : rows) {
        std::string text(row.length, 'x');
        input_descriptor input(text + "\n");
        rdy *reader = rdy_init(input);
        owned_string line("", 16);
        rdy_getline(reader, &line, 0);
        EXPECT_STRING(line, text, row.capacity);
        free(reader);
    }
}

TEST(rdy_init, starts_with_nothing) {
    rdy *reader = rdy_init(77);
    EXPECT_EQ(reader->descriptor, 77);
    EXPECT_EQ(reader->position, 0);
    EXPECT_EQ(reader->fill, 0);
    EXPECT_EQ(reader->at_end, 0);
    free(reader);
}

TEST(rdyfilbuf, reads_up_to_4096_bytes) {
    input_descriptor input(std::string(5000, 'x'));
    rdy *reader = rdy_init(input);
    EXPECT_EQ(rdyfilbuf(reader), 4096);
    reader->position = 10;
    EXPECT_EQ(rdyfilbuf(reader), 904);
    EXPECT_EQ(reader->position, 0);
    EXPECT_EQ(reader->fill, 904);
    EXPECT_EQ(reader->at_end, 0);
    EXPECT_EQ(rdyfilbuf(reader), 0);
    EXPECT_EQ(reader->fill, 0);
    EXPECT_EQ(reader->at_end, 1);
    free(reader);
}

TEST(rdyfilbuf, reads_nothing_more_after_the_end) {
    input_descriptor input(std::string("abc"));
    rdy *reader = rdy_init(input);
    reader->at_end = 1;
    reader->fill = 5;
    EXPECT_EQ(rdyfilbuf(reader), 0);
    EXPECT_EQ(reader->fill, 0);
    EXPECT_EQ(lseek(input, 0, SEEK_CUR), 0);
    free(reader);
}

TEST(rdyfilbuf, a_failed_read_is_the_end) {
    rdy *reader = rdy_init(-1);
    EXPECT_EQ(rdyfilbuf(reader), 0);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(reader->at_end, 1);
    owned_string line;
    EXPECT_EQ(rdy_getline(reader, &line, 0), nullptr);
    free(reader);
}

TEST(rdyfilbuf, a_signal_is_not_the_end) {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // and no SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    if (fork() == 0) {
        usleep(50000);
        _exit(write(ends[1], "abc\n", 4) != 4);
    }
    close(ends[1]);
    const itimerval timer = {{0, 0}, {0, 10000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
    EXPECT_EQ(lines_of(ends[0], 0), (lines{"abc"}));
    close(ends[0]);
}

// The same over the whole text.
lines slow_lines(const std::string &bytes, int flags) {
    lines all;
    size_t at = 0;
    while (at < bytes.size()) {
        size_t end = bytes.find('\n', at);
        bool is_whole = end != std::string::npos;
        std::string line = bytes.substr(at, is_whole ? end - at : end);
        at = is_whole ? end + 1 : bytes.size();
        if (flags & skip_leading)
            line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
        if (!is_whole && line.empty()) break;
        if (is_whole && !line.empty() && line.back() == '\r') line.pop_back();
        if (is_whole && (flags & trim_trailing))
            line.resize(line.find_last_not_of(" \t") + 1);
        all.push_back(line);
    }
    return all;
}

TEST(rdy_getline, reads_as_over_the_whole_text) {
    std::mt19937 random(6);
    const std::string letters("\n\n\r \ta\0b", 8);
    for (int round = 0; round < 500; round++) {
        std::string bytes;
        for (auto n = random() % 100; n > 0; n--) {
            bytes += letters[random() % letters.size()];
            if (random() % 16 == 0) bytes += std::string(random() % 3000, 'x');
        }
        for (int flags = 0; flags < 4; flags++) {
            input_descriptor input(bytes);
            ASSERT_EQ(lines_of(input, flags), slow_lines(bytes, flags));
        }
        if (round % 20 != 0) continue;
        input_descriptor input(in_pieces(bytes, 1 + random() % 50));
        ASSERT_EQ(lines_of(input, 3), slow_lines(bytes, 3));
    }
}

}  // namespace
