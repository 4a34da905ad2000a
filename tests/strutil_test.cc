// strutil_test.cc: searches, hashes, paths and clean-ups of strings.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/strutil.h>
#include <algorithm>
#include <random>

namespace {

TEST(str_chr, finds_the_first_and_the_terminator) {
    const char *text = "abcabc";
    EXPECT_EQ(str_chr(text, 'b'), text + 1);
    EXPECT_EQ(str_chr(text, 'x'), nullptr);
    EXPECT_EQ(str_chr(text, 0), text + 6);
    EXPECT_EQ(str_chr("", 'a'), nullptr);
}

TEST(str_chr, a_null_string_gives_null) {
    EXPECT_EQ(str_chr(nullptr, 'a'), nullptr);
    EXPECT_EQ(str_chr(nullptr, 0), nullptr);
    EXPECT_EQ(str_rchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(str_rchr(nullptr, 0), nullptr);
}

TEST(str_rchr, finds_the_last_and_the_terminator) {
    const char *text = "abcabc";
    EXPECT_EQ(str_rchr(text, 'b'), text + 4);
    EXPECT_EQ(str_rchr(text, 'x'), nullptr);
    EXPECT_EQ(str_rchr(text, 0), text + 6);
}

TEST(str_chr, bytes_above_127_are_found_signed_or_not) {
    const char *text = "a\xe9z\xe9";
    EXPECT_EQ(str_chr(text, 0xe9), text + 1);
    EXPECT_EQ(str_chr(text, -23), text + 1);
    EXPECT_EQ(str_rchr(text, 0xe9), text + 3);
}

TEST(strindex, rows) {
    const struct {
        const char *text, *pattern;
        int first, last;
    } rows[] = {
        {"abcabc", "bc", 1, 4},   {"abcabc", "x", -1, -1},
        {"abcabc", "abc", 0, 3},  {"abcabc", "abcabc", 0, 0},
        {"abc", "abcd", -1, -1},  {"", "a", -1, -1},
        {"", "", -1, -1},         {"abc", "", -1, -1},
        {"aaaa", "aa", 0, 2},     {"a", "a", 0, 0},
        {"abababa", "aba", 0, 4}, {"\xff\xfe\xff", "\xff", 0, 2},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(strindex(row.text, row.pattern), row.first)
            << row.text << " " << row.pattern;
        EXPECT_EQ(strrindex(row.text, row.pattern), row.last)
            << row.text << " " << row.pattern;
    }
}

// Texts over two letters, so that partial matches abound; patterns on both
// sides of the length that needs the heap.
TEST(strrindex, agrees_with_a_plain_search_on_random_texts) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; round++) {
        std::string text(random() % 200, 'a');
        for (char &c : text)
            c = "aab"[random() % 3];
        size_t length = 1 + random() % (round % 10 == 0 ? 100 : 6);
        std::string pattern = text.substr(text.size() / 2, length) + "a";
        EXPECT_EQ(strrindex(text.c_str(), pattern.c_str()),
                  static_cast<int>(text.rfind(pattern)));
        EXPECT_EQ(strindex(text.c_str(), pattern.c_str()),
                  static_cast<int>(text.find(pattern)));
    }
}

TEST(strrindex, is_linear_on_repeated_text) {
    std::string text(2000000, 'a');
    std::string pattern = "b" + std::string(1000000, 'a');
    EXPECT_EQ(strrindex(text.c_str(), pattern.c_str()), -1);
    EXPECT_EQ(strindex(text.c_str(), pattern.c_str()), -1);
}

TEST(strhash, follows_the_table) {
    int length = -1;
    EXPECT_EQ(strhash("", &length, fhash_tab), 0);
    EXPECT_EQ(length, 0);
    int hash = fhash_tab['a'];
    EXPECT_EQ(strhash("a", nullptr, fhash_tab), hash);
    hash = fhash_tab[hash ^ 0xff];
    EXPECT_EQ(strhash("a\xff", &length, fhash_tab), hash);
    EXPECT_EQ(length, 2);
}

TEST(strhash, uses_the_table_that_is_given) {
    unsigned char identity[256];
    for (int i = 0; i < 256; i++)
        identity[i] = static_cast<unsigned char>(i);
    EXPECT_EQ(strhash("ab", nullptr, identity), 'a' ^ 'b');
    EXPECT_EQ(strnhash("ab", 2, identity), 'a' ^ 'b');
}

TEST(strnhash, counts_bytes_and_does_not_stop_at_nul) {
    EXPECT_EQ(strnhash("abc", 2, fhash_tab), strhash("ab", nullptr, fhash_tab));
    EXPECT_EQ(strnhash("abc", 0, fhash_tab), 0);
    EXPECT_EQ(strnhash("abc", -1, fhash_tab), 0);
    int hash = fhash_tab[fhash_tab['a'] ^ 0];
    EXPECT_EQ(strnhash("a\0b", 2, fhash_tab), hash);
}

TEST(fhash_tab, is_a_permutation) {
    std::vector<bool> seen(256);
    for (unsigned char value : fhash_tab)
        seen[value] = true;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), true), 256);
}

// Hash values may be kept from one version to the next.
TEST(fhash_tab, values_stay) {
    EXPECT_EQ(strhash("tovan", nullptr, fhash_tab), 184);
    EXPECT_EQ(strhash("SrcPath", nullptr, fhash_tab), 251);
}

int compare(const char *a, const char *b) {
    return strpcmp(&a, &b);
}

TEST(strpcmp, orders_arrays_of_strings) {
    const char *words[] = {"b", "", "abc", "ab", "b", "aa"};
    qsort(words, 6, sizeof *words, strpcmp);
    const char *const sorted[] = {"", "aa", "ab", "abc", "b", "b"};
    for (int i = 0; i < 6; i++)
        EXPECT_STREQ(words[i], sorted[i]);
}

TEST(strpcmp, gives_the_difference_of_the_first_characters) {
    EXPECT_EQ(compare("a", "d"), -3);
    EXPECT_EQ(compare("", ""), 0);
    EXPECT_EQ(compare("", "a"), -'a');
    EXPECT_EQ(compare("a", ""), 'a');
    EXPECT_EQ(compare("ab", "ab"), 0);
    EXPECT_LT(compare("ab", "ac"), 0);
    EXPECT_GT(compare("ab", "a"), 0);
}

TEST(strpcmp, strpcmp_first_bytes_are_signed) {
    EXPECT_EQ(compare("\xff", "a"), -1 - 'a');
    EXPECT_GT(compare("a\xff", "aa"), 0);
}

TEST(lenmatch, rows) {
    EXPECT_EQ(lenmatch("abc", "abd"), 2);
    EXPECT_EQ(lenmatch("abc", "abc"), 3);
    EXPECT_EQ(lenmatch("abc", "abcd"), 3);
    EXPECT_EQ(lenmatch("", "a"), 0);
    EXPECT_EQ(lenmatch("", ""), 0);
    EXPECT_EQ(lenmatch("x", "y"), 0);
}

TEST(p_table, marks_four_separators) {
    for (int c = 0; c < 256; c++) {
        int mark = c == '/' ? 1 : c == '\\' ? 2 : c == ':' ? 4 : 0;
        if (c == ';') mark = 8;
        EXPECT_EQ(p_table[c], mark) << c;
    }
}

TEST(leafnm, rows) {
    const struct {
        const char *path, *leaf;
    } rows[] = {
        {"/a/b/", ""}, {"file", "file"}, {"/a/b", "b"},  {"", ""},
        {"/", ""},     {"a\\b", "a\\b"}, {"a:b", "a:b"}, {"//x", "x"},
    };
    for (const auto &row : rows)
        EXPECT_STREQ(leafnm(row.path), row.leaf);
    const char *path = "file";
    EXPECT_EQ(leafnm(path), path);
}

TEST(p_rootlen, counts_leading_slashes) {
    EXPECT_EQ(p_rootlen("//x"), 2);
    EXPECT_EQ(p_rootlen("x"), 0);
    EXPECT_EQ(p_rootlen("x/"), 0);
    EXPECT_EQ(p_rootlen(""), 0);
    EXPECT_EQ(p_rootlen("/"), 1);
    EXPECT_EQ(p_rootlen("///"), 3);
    EXPECT_EQ(p_rootlen("\\x"), 0);
}

TEST(trim, removes_trailing_white_space_of_every_kind) {
    const struct {
        const char *text, *trimmed;
    } rows[] = {
        {"abc", "abc"}, {"abc \t\n\v\f\r", "abc"}, {" a b ", " a b"}, {"", ""},
        {" \n", ""},    {"a\xa0", "a\xa0"},
    };
    for (const auto &row : rows) {
        std::string text = row.text;
        EXPECT_EQ(trim(text.data()), text.data());
        EXPECT_STREQ(text.data(), row.trimmed);
    }
}

TEST(overwhite, stops_at_anything_but_blank_tab_newline) {
    EXPECT_STREQ(overwhite(" \t\n a"), "a");
    EXPECT_STREQ(overwhite(" \ra"), "\ra");
    EXPECT_STREQ(overwhite("a "), "a ");
    EXPECT_STREQ(overwhite("  "), "");
    EXPECT_STREQ(overwhite(""), "");
}

TEST(nextwhite, stops_at_blank_tab_newline_or_the_end) {
    EXPECT_STREQ(nextwhite("ab c"), " c");
    EXPECT_STREQ(nextwhite("ab\tc"), "\tc");
    EXPECT_STREQ(nextwhite("ab\nc"), "\nc");
    EXPECT_STREQ(nextwhite("ab\r\v\fc"), "");
    EXPECT_STREQ(nextwhite(" a"), " a");
    EXPECT_STREQ(nextwhite(""), "");
}

TEST(clean, rows) {
    const struct {
        const char *text;
        int fold;
        const char *cleaned;
    } rows[] = {
        {"  Hello, World!! ", 1, "hello world"},
        {"  Hello, World!! ", 0, "Hello World"},
        {"", 1, ""},
        {"?!", 1, ""},
        {"a", 0, "a"},
        {"a_b", 0, "a b"},
        {"A1b2", 1, "a1b2"},
        {"x\xe9y", 0, "x y"},
        {"a - b", 0, "a b"},
    };
    for (const auto &row : rows) {
        std::string text = row.text;
        EXPECT_EQ(clean(text.data(), row.fold), text.data());
        EXPECT_STREQ(text.data(), row.cleaned) << row.text;
    }
}

TEST(closing_bracket, rows) {
    const struct {
        const char *text;
        int index;
    } rows[] = {
        {"a(b)c)d", 5}, {")", 0},        {"", 0},     {"abc", 3},
        {"(", 1},       {"((a)", 4},     {"(())", 4}, {"()())", 4},
        {"a)b)", 1},    {"(a)(b)c)", 7}, {"[)", 1},
    };
    for (const auto &row : rows)
        EXPECT_EQ(closing_bracket(row.text, '(', ')') - row.text, row.index)
            << row.text;
}

TEST(closing_bracket, equal_characters_close_at_the_first) {
    const char *text = "a'b'";
    EXPECT_EQ(closing_bracket(text, '\'', '\''), text + 1);
}

TEST(closing_bracket, bytes_above_127_are_brackets_signed_or_not) {
    const char *text = "\xab\xbb\xbb";
    EXPECT_EQ(closing_bracket(text, 0xab, 0xbb), text + 2);
    EXPECT_EQ(closing_bracket(text, -85, -69), text + 2);
}

// The obvious way: a bracket inside is skipped by the same search.
const char *close_by_recursion(const char *text) {
    for (; *text != '\0' && *text != ')'; text++) {
        if (*text != '(') continue;
        text = close_by_recursion(text + 1);
        if (*text == '\0') return text;
    }
    return text;
}

TEST(closing_bracket, agrees_with_recursion_on_all_short_texts) {
    for (unsigned code = 0; code < 3 * 3 * 3 * 3 * 3 * 3 * 3 * 3; code++) {
        std::string text;
        for (unsigned rest = code; text.size() < 8; rest /= 3)
            text += "(a)"[rest % 3];
        EXPECT_EQ(closing_bracket(text.c_str(), '(', ')'),
                  close_by_recursion(text.c_str()))
            << text;
    }
}

TEST(closing_bracket, depth_is_counted_and_not_stacked) {
    std::string text(10000000, '(');
    EXPECT_EQ(*closing_bracket(text.c_str(), '(', ')'), '\0');
    text += std::string(text.size() + 1, ')');
    EXPECT_EQ(closing_bracket(text.c_str(), '(', ')'),
              text.c_str() + text.size() - 1);
}

std::vector<int> given_back;

void record(int character) {
    given_back.push_back(character);
}

struct token {
    char text[8] = "abc\xff\0zz";
    int length = 4;
    int last = 999;

    void less(int n) {
        given_back.clear();
        lexless(n, &length, &last, text, record);
    }
};

TEST(lexless, gives_back_from_the_end) {
    token scanned;
    scanned.less(2);
    EXPECT_EQ(given_back, (std::vector<int>{-1, 'c'}));
    EXPECT_STREQ(scanned.text, "ab");
    EXPECT_EQ(scanned.last, 'b');
    EXPECT_EQ(scanned.length, 2);
}

TEST(lexless, the_last_character_is_sign_extended) {
    token scanned;
    scanned.less(4);
    EXPECT_EQ(given_back, std::vector<int>{});
    EXPECT_EQ(scanned.last, -1);
    EXPECT_EQ(scanned.length, 4);
}

TEST(lexless, out_of_range_gives_everything_back) {
    for (int n : {0, -1, 5, 2147483647, -2147483647 - 1}) {
        token scanned;
        scanned.less(n);
        EXPECT_EQ(given_back, (std::vector<int>{-1, 'c', 'b', 'a'})) << n;
        EXPECT_STREQ(scanned.text, "");
        EXPECT_EQ(scanned.length, 0);
        EXPECT_EQ(scanned.last, 999) << "left alone";
    }
}

}  // namespace
