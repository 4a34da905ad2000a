// frogtostr_test.cc: mnemonics of the characters of code page 437.

#include <gtest/gtest.h>
#include <string.h>
#include <tovan/istype.h>

namespace {

// Codes 128 to 175 and 224 to 254 have one each; below 128 there are four.
const char *const from_128[] = {
    "C,", "u:", "e'", "a^", "a:", "a`", "a.", "c,", "e^", "e:", "e`", "i:",
    "i^", "i`", "A:", "A.", "E'", "ae", "AE", "o^", "o:", "o`", "u^", "u`",
    "y:", "O:", "U:", "c$", "lb", "ye", "Pt", "f$", "a'", "i'", "o'", "u'",
    "n~", "N~", "a_", "o_", "?^", ":-", "-:", "/2", "/4", "!^", "<<", ">>",
};
const char *const from_224[] = {
    "al", "ss", "gm", "pi", "sm", "sg", "mo", "to", "Fi", "ta", "Om",
    "dt", "in", "NL", "el", "iN", "=-", "+-", ">=", "<=", "it", "ib",
    "di", "ap", "dg", "Bu", "bu", "sr", "n?", "sq", "bx",
};

const char *expected_of(int code) {
    switch (code) {
        case 16:
            return "^>";
        case 17:
            return "^<";
        case 24:
            return "^^";
        case 25:
            return "^v";
    }
    if (code >= 128 && code <= 175) return from_128[code - 128];
    if (code >= 224 && code <= 254) return from_224[code - 224];
    return nullptr;
}

TEST(frogtostr, every_code) {
    int count = 0;
    for (int code = 0; code < 256; code++) {
        EXPECT_STREQ(frogtostr(code), expected_of(code)) << code;
        count += frogtostr(code) != nullptr;
    }
    EXPECT_EQ(count, 83);
}

TEST(frogtostr, outside_of_0_to_255_there_is_none) {
    for (int code : {-1, 256, 16 + 256, 2147483647, -2147483647 - 1})
        EXPECT_EQ(frogtostr(code), nullptr) << code;
}

TEST(strtofrog, finds_the_way_back) {
    EXPECT_EQ(strtofrog("pi"), 227);
    for (int code = 0; code < 256; code++) {
        if (expected_of(code) == nullptr) continue;
        EXPECT_EQ(strtofrog(expected_of(code)), code);
    }
}

TEST(strtofrog, unknown_texts_give_minus_one) {
    for (const char *text : {"", "p", "pii", "PI", "xx", "\xff\xff", "ip"})
        EXPECT_EQ(strtofrog(text), -1) << text;
}

// Every text of two characters, against a walk over the codes.
TEST(strtofrog, agrees_with_a_search_through_all_codes) {
    for (int first = 1; first < 128; first++) {
        for (int second = 1; second < 128; second++) {
            const char text[] = {static_cast<char>(first),
                                 static_cast<char>(second), '\0'};
            int expected = -1;
            for (int code = 0; code < 256; code++) {
                const char *mnemonic = frogtostr(code);
                if (mnemonic != nullptr && strcmp(mnemonic, text) == 0)
                    expected = code;
            }
            ASSERT_EQ(strtofrog(text), expected) << text;
        }
    }
}

}  // namespace
