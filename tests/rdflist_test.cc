// rdflist_test.cc: the words of a whole input.
#include "support/child.h"
#include "support/input.h"
#include "support/records.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/getdylin.h>
#include <random>
#include <string>
#include <vector>

using support::in_pieces;
using support::input_descriptor;
using words = std::vector<std::string>;

namespace {

// Long words by their length: "w x 16256".
words brief(const words &all) {
    words texts;
    for (const std::string &word : all) {
        bool is_run =
            word.size() > 20 && word == std::string(word.size(), word[0]);
        texts.push_back(is_run ? word.substr(0, 1) + " x " +
                                     std::to_string(word.size())
                               : word);
    }
    return texts;
}

words words_in(const dyp &array) {
    words all;
    for (int i = 0; i < array.count; i++)
        all.push_back(static_cast<char *>(array.array[i]));
    return all;
}

words words_of(int descriptor) {
    dyp array{};
    dypnew(&array, 1);
    EXPECT_EQ(rdflist(descriptor, &array, "list"), array.array);
    EXPECT_EQ(support::flaw_of(array), "");
    words all = words_in(array);
    free(array.array);
    return all;
}

TEST(rdflist, word_rows) {
    const struct {
        std::string bytes;
        words result;
    } rows[] = {
        {"", {}},
        {" \n\t\v\f\r", {}},
        {"one", {"one"}},
        {"one\n", {"one"}},
        {" one\ttwo\nthree ", {"one", "two", "three"}},
        {"a\vb\fc\rd e", {"a", "b", "c", "d", "e"}},
        {"a # b", {"a", "#", "b"}},
        {"\xa0\xff", {"\xa0\xff"}},
        {std::string("a\0b c", 5), {"a", "c"}},
    };
    for (const auto &row : rows) {
        input_descriptor whole(row.bytes);
        EXPECT_EQ(words_of(whole), row.result) << row.bytes;
        input_descriptor bytewise(in_pieces(row.bytes, 1));
        EXPECT_EQ(words_of(bytewise), row.result) << row.bytes;
    }
}

TEST(rdflist, appends_to_the_array) {
    input_descriptor input(std::string("b c"));
    dyp array{};
    dypadd(&array, "a");
    rdflist(input, &array, "list");
    EXPECT_EQ(words_in(array), (words{"a", "b", "c"}));
    free(array.array);
}

TEST(rdflist, words_live_on) {
    dyp array{};
    words expected;
    for (int i = 0; i < 100; i++) {
        std::string word = "word" + std::to_string(i);
        input_descriptor input(word + " " + std::string(1000, 'x'));
        rdflist(input, &array, "list");
        expected.push_back(word);
        expected.push_back(std::string(1000, 'x'));
    }
    EXPECT_EQ(words_in(array), expected);
    free(array.array);
}

TEST(rdflist, a_word_of_16256_bytes_is_always_accepted) {
    const std::string word(16256, 'w');
    for (size_t before : {0, 1, 100, 128, 129, 1000, 8000, 16000, 16383}) {
        for (size_t piece : {1000, 128, 16384, 4096}) {
            std::string first(before, 'b');
            words expected = {word, "next"};
            if (before > 0) expected.insert(expected.begin(), first);
            // The long ones in front are words of their own, and short enough.
            if (before > 16256) expected[0] = first = std::string(16000, 'b');
            input_descriptor input(
                in_pieces(first + " " + word + "\nnext", piece));
            EXPECT_EQ(brief(words_of(input)), brief(expected))
                << before << ' ' << piece;
        }
    }
}

TEST(rdflist, a_longer_word_ends_the_process) {
    const char *const text =
        "test: list: contains excessively long file name\n";
    for (size_t piece : {1000, 128, 16384}) {
        std::string bytes = "a " + std::string(20000, 'w') + " b";
        EXPECT_FATAL(words_of(input_descriptor(in_pieces(bytes, piece))), 255,
                     text);
    }
    EXPECT_FATAL(words_of(input_descriptor(std::string(20000, 'w'))), 255,
                 text);
}

TEST(rdflist, a_word_may_end_with_the_input_wherever_that_is) {
    for (size_t n = 16240; n <= 16256; n++) {
        std::string word(n, 'w');
        input_descriptor input(in_pieces(word, 16000));
        EXPECT_EQ(brief(words_of(input)), brief({word}));
    }
}

TEST(rdflist, a_read_error_ends_the_process) {
    EXPECT_FATAL(words_of(-1), 255,
                 "test: list: " + std::string(strerror(EBADF)) + "\n");
}

TEST(rdflist, reads_as_splitting_the_whole_text) {
    std::mt19937 random(7);
    for (int round = 0; round < 60; round++) {
        std::string bytes;
        words expected;
        for (auto n = random() % 300; n > 0; n--) {
            bool is_long = random() % 20 == 0;
            std::string word(1 + random() % (is_long ? 16256 : 200), 'w');
            expected.push_back(word);
            bytes +=
                word + std::string(1 + random() % 3, " \n\t"[random() % 3]);
        }
        input_descriptor whole(bytes);
        ASSERT_EQ(brief(words_of(whole)), brief(expected));
        input_descriptor pieces(in_pieces(bytes, 1 + random() % 20000));
        ASSERT_EQ(brief(words_of(pieces)), brief(expected));
    }
}

}  // namespace
