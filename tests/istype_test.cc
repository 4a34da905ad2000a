// istype_test.cc: character classes and printable forms.
#include "support/child.h"

#include <ctype.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <tovan/istype.h>

namespace {

std::string range(int first, int last) {
    std::string members;
    for (int c = first; c <= last; c++)
        members += static_cast<char>(c);
    return members;
}

TEST(istype, every_class_has_exactly_its_members) {
    const std::string upper = range('A', 'Z');
    const std::string lower = range('a', 'z');
    const std::string punctuation =
        range('!', '/') + range(':', '@') + range('[', '`') + range('{', '~');
    const struct {
        int bit;
        std::string members;
    } rows[] = {
        {0x0001, upper},
        {0x0002, lower},
        {0x0004, "0123456789"},
        {0x0008, "\t\n\v\f\r "},
        {0x0010, punctuation},
        {0x0020, range(0, 31) + "\177"},
        {0x0040, "ABCDEFabcdef"},
        {0x0080, "_"},
        {0x0100, " "},
        {0x0200, "\t"},
        {0x0400, "\n"},
        {0x0800, "\"$&'()*;<=>?[\\]^`|"},
        {0x1000, "\"$\\`"},
        {0x2000, std::string(1, '\0')},
        {0x4000, "#"},
        {0x8000, ""},
    };
    for (const auto &row : rows) {
        for (int c = 0; c < 256; c++) {
            bool is_member =
                row.members.find(static_cast<char>(c)) != std::string::npos;
            EXPECT_EQ((_istype[c] & row.bit) != 0, is_member)
                << "class " << std::hex << row.bit << " code " << c;
        }
    }
}

TEST(istype, whole_words_of_some_characters) {
    EXPECT_EQ(_istype[' '], 0x0108);
    EXPECT_EQ(_istype['\t'], 0x0228);
    EXPECT_EQ(_istype['\n'], 0x0428);
    EXPECT_EQ(_istype['\0'], 0x2020);
    EXPECT_EQ(_istype['#'], 0x4010);
    EXPECT_EQ(_istype['_'], 0x0090);
    EXPECT_EQ(_istype['"'], 0x1810);
    EXPECT_EQ(_istype['^'], 0x0810);
    EXPECT_EQ(_istype['F'], 0x0041);
}

TEST(istype, codes_from_128_have_no_class) {
    for (int c = 128; c < 256; c++)
        EXPECT_EQ(_istype[c], 0) << c;
}

// A second opinion from the C locale.
TEST(istype, agrees_with_the_c_locale) {
    for (int c = 0; c < 128; c++) {
        EXPECT_EQ((_istype[c] & 0x0001) != 0, isupper(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0002) != 0, islower(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0004) != 0, isdigit(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0008) != 0, isspace(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0010) != 0, ispunct(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0020) != 0, iscntrl(c) != 0) << c;
        EXPECT_EQ((_istype[c] & 0x0044) != 0, isxdigit(c) != 0) << c;
    }
}

TEST(applistype, marks_the_characters_and_nothing_else) {
    support::outcome end = support::in_child([] {
        unsigned short before[256];
        memcpy(before, _istype, sizeof before);
        applistype("a_\xff\x80");
        for (int c = 0; c < 256; c++) {
            bool is_marked = c == 'a' || c == '_' || c == 0xff || c == 0x80;
            if (_istype[c] != (before[c] | (is_marked ? 0x8000 : 0)))
                printf("code %d\n", c);
        }
    });
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.exit_status, 0);
}

TEST(applistype, a_second_call_is_fatal) {
    EXPECT_FATAL(applistype("a");
                 applistype("b"), 255,
                 "test: LOGIC ERROR - applistype() called a second time\n");
    EXPECT_FATAL(applistype("");
                 applistype(""), 255,
                 "test: LOGIC ERROR - applistype() called a second time\n");
}

TEST(rep_char, printable_characters_stand_for_themselves) {
    for (int c = 32; c <= 126; c++)
        EXPECT_EQ(rep_char[c], std::string(1, static_cast<char>(c)));
}

TEST(rep_char, seven_to_thirteen_have_letters) {
    const char *const forms[] = {"\\a", "\\b", "\\t", "\\n",
                                 "\\v", "\\f", "\\r"};
    for (int c = 7; c <= 13; c++)
        EXPECT_STREQ(rep_char[c], forms[c - 7]);
}

TEST(rep_char, all_others_are_octal) {
    for (int c = 0; c < 256; c++) {
        if ((c >= 7 && c <= 13) || (c >= 32 && c <= 126)) continue;
        char form[8];
        snprintf(form, sizeof form, "\\%03o", static_cast<unsigned>(c));
        EXPECT_STREQ(rep_char[c], form);
    }
    EXPECT_STREQ(rep_char[0], "\\000");
    EXPECT_STREQ(rep_char[27], "\\033");
    EXPECT_STREQ(rep_char[255], "\\377");
}

}  // namespace
