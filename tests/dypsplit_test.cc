// dypsplit_test.cc: the words of a string.
#include "support/records.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <string>
#include <vector>

namespace {

std::vector<std::string> words_of(const dyp &array) {
    std::vector<std::string> words;
    for (void **word = array.array; *word != nullptr; word++)
        words.push_back(static_cast<char *>(*word));
    EXPECT_EQ(static_cast<int>(words.size()), array.count);
    return words;
}

using words = std::vector<std::string>;

TEST(dypsplit, dypsplit_rows) {
    const struct {
        const char *text;
        words result;
    } rows[] = {
        {"", {}},
        {" \t\n", {}},
        {"one", {"one"}},
        {"one two", {"one", "two"}},
        {" \tone \t\n two\n", {"one", "two"}},
        {"a\rb\vc\fd e", {"a\rb\vc\fd", "e"}},
        {"\r", {"\r"}},
        {"a  b   c", {"a", "b", "c"}},
        {"\xa0 \xff", {"\xa0", "\xff"}},
    };
    for (const auto &row : rows) {
        for (int flags : {0, 1}) {
            std::string text = row.text;
            dyp array{};
            dypnew(&array, 2);
            EXPECT_EQ(dypsplit(&array, text.data(), flags), array.array);
            EXPECT_EQ(support::flaw_of(array), "");
            EXPECT_EQ(words_of(array), row.result) << row.text;
            if (flags == 1 && array.count > 0) free(array.array[0]);
            free(array.array);
        }
    }
}

TEST(dypsplit, dypsplit_keeps_other_white_space_in_words) {
    char text[] = "\ra\v \fb\n";
    dyp array{};
    dypsplit(&array, text, 0);
    EXPECT_EQ(words_of(array), (words{"\ra\v", "\fb"}));
    free(array.array);
}

TEST(dypsplit, works_in_the_callers_string) {
    char text[] = " one \ttwo\n";
    dyp array{};
    dypsplit(&array, text, 0);
    EXPECT_EQ(array.count, 2);
    EXPECT_EQ(array.array[0], text + 1);
    EXPECT_EQ(array.array[1], text + 6);
    // Only the separator right behind a word is overwritten.
    EXPECT_EQ(std::string(text, sizeof text),
              std::string(" one\0\ttwo\0\0", 11));
    free(array.array);
}

TEST(dypsplit, leaves_the_callers_string_alone_with_bit_0) {
    for (int flags : {1, 3}) {
        char text[] = " one two ";
        dyp array{};
        dypsplit(&array, text, flags);
        EXPECT_STREQ(text, " one two ");
        EXPECT_EQ(words_of(array), (words{"one", "two"}));
        free(array.array[0]);  // the copy begins at the first word
        free(array.array);
    }
}

TEST(dypsplit, appends_to_what_is_there) {
    char text[] = "b c";
    dyp array{};
    dypadd(&array, "a");
    dypsplit(&array, text, 0);
    EXPECT_EQ(words_of(array), (words{"a", "b", "c"}));
    free(array.array);
}

TEST(dypsplit, a_null_string_changes_nothing) {
    dyp array{};
    dypadd(&array, "a");
    void **slots = array.array;
    EXPECT_EQ(dypsplit(&array, nullptr, 0), slots);
    EXPECT_EQ(array.count, 1);
    free(array.array);
}

}  // namespace
