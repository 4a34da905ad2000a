// getdywrd_test.cc: words of a stream.
#include "support/input.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/getdylin.h>
#include <string>
#include <vector>

using support::input_stream;
using support::owned_string;
using support::text_of;
using words = std::vector<std::string>;

namespace {

words words_of(const std::string &bytes, int flags) {
    input_stream stream(bytes);
    owned_string word;
    words all;
    while (char *buffer = getdyword(stream, &word, flags)) {
        EXPECT_EQ(buffer, word.buffer);
        EXPECT_EQ(support::flaw_of(word), "");
        all.push_back(text_of(word));
    }
    return all;
}

TEST(getdyword, word_rows) {
    const struct {
        std::string bytes;
        words plain;
        words without_comments;
    } rows[] = {
        {"", {}, {}},
        {" \t\n\v\f\r", {}, {}},
        {"one", {"one"}, {"one"}},
        {"one two\tthree\n", {"one", "two", "three"}, {"one", "two", "three"}},
        {"a\vb\fc\rd\r\ne",
         {"a", "b", "c", "d", "e"},
         {"a", "b", "c", "d", "e"}},
        {"# c\nx", {"#", "c", "x"}, {"x"}},
        {"a #b c\nd", {"a", "#b", "c", "d"}, {"a", "d"}},
        {"a#b\n", {"a#b"}, {"a#b"}},
        {"#", {"#"}, {}},
        {"##\n#\n x #", {"##", "#", "x", "#"}, {"x"}},
        {"\xa0\xff\n", {"\xa0\xff"}, {"\xa0\xff"}},
        {std::string("a\0b c", 5),
         {std::string("a\0b", 3), "c"},
         {std::string("a\0b", 3), "c"}},
        {std::string(5000, 'x') + " y",
         {std::string(5000, 'x'), "y"},
         {std::string(5000, 'x'), "y"}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(words_of(row.bytes, 0), row.plain) << row.bytes;
        EXPECT_EQ(words_of(row.bytes, 1), row.without_comments) << row.bytes;
        EXPECT_EQ(words_of(row.bytes, 2), row.plain) << row.bytes;
    }
}

TEST(getdyword, consumes_the_character_behind_the_word) {
    input_stream stream("one\n two");
    owned_string word;
    getdyword(stream, &word, 0);
    EXPECT_EQ(getc(stream), ' ');
    EXPECT_STREQ(getdyword(stream, &word, 0), "two");
}

TEST(getdyword, makes_a_string_of_56_bytes) {
    input_stream stream("abc");
    dy word{};
    EXPECT_STREQ(getdyword(stream, &word, 0), "abc");
    EXPECT_STRING(word, "abc", 56);
    free(word.buffer);
}

TEST(getdyword, without_a_word_the_string_stays) {
    owned_string word("before", 16);
    for (const char *bytes : {"", "  \n", "# comment"}) {
        input_stream stream(bytes);
        EXPECT_EQ(getdyword(stream, &word, 1), nullptr);
        EXPECT_EQ(getdyword(stream, &word, 1), nullptr);
        EXPECT_STRING(word, "before", 16);
    }
}

}  // namespace
