// sfputdict_test.cc: the sorted listing.
#include "support/child.h"
#include "support/dictionary.h"
#include "support/doc.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <tovan/sfdict.h>
#include <random>
#include <string>

namespace {

using support::listing;

class sf_putdict_test : public support::dictionary_test {
  protected:
    // Defines a name as this very text.
    static void define(const std::string &name, const std::string &value,
                       const char *where = "dict", int line = 12) {
        std::string doubled;
        for (char c : value)
            doubled += std::string(c == '@' ? 2 : 1, c);
        sf_dictext(name.c_str(), doubled.c_str(), where, line, 0);
    }

    // The listing of A alone, without the name and its tabs.
    static std::string listed(const std::string &value) {
        support::empty_dictionary();
        define("A", value);
        std::string all = listing();
        EXPECT_EQ(all.substr(0, 3), "A\t\t") << all;
        return all.substr(3);
    }
};

TEST_F(sf_putdict_test, empty_dictionary_is_an_empty_list) {
    EXPECT_EQ(listing(), "");
    EXPECT_EQ(listing(1), "");
}

TEST_F(sf_putdict_test, terms_are_sorted_by_bytes) {
    for (const char *name : {"b", "a", "B", "_", "ab", "a1", "aB", "A\xe9"})
        define(name, "x");
    EXPECT_EQ(listing(),
              "A\xe9\t\tx\nB\t\tx\n_\t\tx\na\t\tx\na1\t\tx\naB\t\tx\nab\t\tx\n"
              "b\t\tx\n");
}

TEST_F(sf_putdict_test, short_names_have_two_tabs) {
    define("seven77", "x");
    define("eight888", "x");
    EXPECT_EQ(listing(), "eight888\tx\nseven77\t\tx\n");
    EXPECT_EQ(listing(1), "dict:000012:eight888\tx\ndict:000012:seven77\tx\n");
}

TEST_F(sf_putdict_test, places_have_six_digits_or_more) {
    define("A", "x", "some where", 7);
    define("B", "x", "f", 1234567);
    EXPECT_EQ(listing(2), "some where:000007:A\tx\nf:1234567:B\tx\n");
}

TEST_F(sf_putdict_test, empty_values_are_a_comment) {
    define("A", "");
    EXPECT_EQ(listing(), "A\t\t# NONE\n");
    EXPECT_EQ(listing(1), "dict:000012:A\t# NONE\n");
}

TEST_F(sf_putdict_test, special_characters_are_escaped) {
    EXPECT_EQ(listed("a@b"), "a@@b\n");
    EXPECT_EQ(listed("a\\b"), "a\\\\b\n");
    EXPECT_EQ(listed("a#b"), "a\\#b\n");
    EXPECT_EQ(listed("a\nb"), "a\\nb\n");
    EXPECT_EQ(listed("a\tb\"c%"), "a\tb\"c%\n");
}

std::string x(size_t count) {
    return std::string(count, 'x');
}

// The value of a short name starts at column 16.
TEST_F(sf_putdict_test, lines_are_folded_before_words_beyond_column_78) {
    EXPECT_EQ(listed(x(50) + " " + x(11)), x(50) + " " + x(11) + "\n");
    EXPECT_EQ(listed(x(50) + " " + x(12)), x(50) + " \\\n\t\t" + x(12) + "\n");
    EXPECT_EQ(listed(x(100)), x(100) + "\n");
    EXPECT_EQ(listed(x(100) + " a b"), x(100) + " \\\n\t\ta b\n");
}

TEST_F(sf_putdict_test, folded_lines_go_on_at_column_16) {
    EXPECT_EQ(listed(x(60) + " " + x(50) + " " + x(11) + " y"),
              x(60) + " \\\n\t\t" + x(50) + " " + x(11) + " \\\n\t\ty\n");
}

TEST_F(sf_putdict_test, empty_words_beyond_column_78_are_folded_too) {
    EXPECT_EQ(listed(x(63) + "  y"), x(63) + " \\\n\t\t y\n");
    EXPECT_EQ(listed(x(63) + " "), x(63) + " \\\n\t\t\n");
    EXPECT_EQ(listed(x(61) + " "), x(61) + " \n");
}

TEST_F(sf_putdict_test, escapes_count_two_columns) {
    for (const char *character : {"#", "\\", "\n"}) {
        std::string escaped =
            *character == '\n' ? "\\n" : std::string("\\") + character;
        EXPECT_EQ(listed(x(49) + character + " " + x(10)),
                  x(49) + escaped + " " + x(10) + "\n");
        EXPECT_EQ(listed(x(49) + character + " " + x(11)),
                  x(49) + escaped + " \\\n\t\t" + x(11) + "\n");
    }
}

TEST_F(sf_putdict_test, doubled_at_sign_counts_one_column) {
    EXPECT_EQ(listed(x(49) + "@ " + x(11)), x(49) + "@@ " + x(11) + "\n");
    EXPECT_EQ(listed(x(49) + "@ " + x(12)),
              x(49) + "@@ \\\n\t\t" + x(12) + "\n");
}

TEST_F(sf_putdict_test, next_word_is_measured_as_it_is_stored) {
    EXPECT_EQ(listed(x(50) + " " + std::string(11, '#')),
              x(50) + " \\#\\#\\#\\#\\#\\#\\#\\#\\#\\#\\#\n");
}

TEST_F(sf_putdict_test, long_names_start_at_the_next_multiple_of_8) {
    define("name_of_15_____", x(50) + " " + x(11));
    define("name_of_16______", x(42) + " " + x(12));
    EXPECT_EQ(listing(), "name_of_15_____\t" + x(50) + " " + x(11) +
                             "\nname_of_16______\t" + x(42) + " \\\n\t\t" +
                             x(12) + "\n");
}

// "dict" and ":000012:" are 12 columns, "A" and its tab make it 16.
TEST_F(sf_putdict_test, places_count_before_the_name) {
    define("A", x(50) + " " + x(11));
    EXPECT_EQ(listing(1), "dict:000012:A\t" + x(50) + " " + x(11) + "\n");
    define("A", x(50) + " " + x(12));
    EXPECT_EQ(listing(1),
              "dict:000012:A\t" + x(50) + " \\\n\t\t" + x(12) + "\n");
    support::empty_dictionary();
    define("A", x(50) + " " + x(11), "dict+++", 12);
    EXPECT_EQ(listing(1),
              "dict+++:000012:A\t" + x(50) + " \\\n\t\t" + x(11) + "\n");
}

TEST_F(sf_putdict_test, documented_dictionary_gives_the_documented_list) {
    const char page[] = "formats/dictionary.md";
    EXPECT_EQ(support::read_dictionary(support::doc_block(page, "dictionary")),
              "");
    EXPECT_EQ(listing(), support::doc_block(page, "listing"));
}

std::string random_value(std::mt19937 *random) {
    static const std::string letters = "abcXYZ019._-:@@##\\\\\"'%$?*(){}\xe9";
    std::string value;
    for (size_t words = (*random)() % 30; words > 0; --words) {
        if (!value.empty()) value += (*random)() % 20 == 0 ? '\t' : ' ';
        for (size_t n = 1 + (*random)() % 12; n > 0; --n)
            value += letters[(*random)() % letters.size()];
    }
    return value;
}

TEST_F(sf_putdict_test, list_read_and_listed_again_is_the_same) {
    std::mt19937 random(78);
    for (int round = 0; round < 100; ++round) {
        support::empty_dictionary();
        for (int i = 0; i < 30; ++i) {
            std::string name =
                "N" + std::string(random() % 12, '_') + std::to_string(i);
            define(name, random_value(&random));
        }
        std::string first = listing();
        support::empty_dictionary();
        EXPECT_EQ(support::read_dictionary(first), "");
        ASSERT_EQ(listing(), first);
    }
}

TEST_F(sf_putdict_test, values_survive_the_list) {
    for (const char *value :
         {"@", "@@", "a\\", "\\", "\\\\#", "#", "# NONE", "a @A@ b", "x@NotSet",
          "@NotSet@", "\\n", "\"quoted\"", "-s arg", "@{ x", "unset A"}) {
        support::empty_dictionary();
        define("A", value);
        EXPECT_EQ(support::value_of("A"), value);
        std::string list = listing();
        support::empty_dictionary();
        support::read_dictionary(list);
        EXPECT_EQ(support::value_of("A"), value) << list;
    }
}

}  // namespace
