// convert_test.cc: numbers to text and back, bytes and the calendar's names.
#include "support/child.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/convert.h>
#include <random>

namespace {

TEST(atoin, rows) {
    const struct {
        const char *text;
        int n;
        int value;
    } rows[] = {
        {"  -42x", 10, -42},
        {"  -42x", 3, 0},
        {"  -42x", 4, -4},
        {"  -42x", 5, -42},
        {"+-5", 10, 0},
        {"-+5", 10, 0},
        {"--5", 10, 0},
        {"+5", 10, 5},
        {"123", 0, 0},
        {"123", -1, 0},
        {"123", INT_MIN, 0},
        {"123", 2, 12},
        {"", 10, 0},
        {"x1", 10, 0},
        {"1x2", 10, 1},
        {"\t 7", 10, 7},
        {"\n7", 10, 0},
        {"- 7", 10, 0},
        {"-7 8", 10, -7},
        {"0007", 10, 7},
        {"7\0008", 10, 7},
        {"2147483647", 10, INT_MAX},
        {"-2147483648", 11, INT_MIN},
        {"-", 10, 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(atoin(row.text, row.n), row.value)
            << row.text << " of " << row.n;
        EXPECT_EQ(atoln(row.text, row.n), row.value)
            << row.text << " of " << row.n;
    }
}

TEST(atoin, atoin_sign_after_digits) {
    EXPECT_EQ(atoin("12 34", 10), 1234);
    EXPECT_EQ(atoin("12-3", 10), -123);
    EXPECT_EQ(atoin("12\t+3 4", 10), 123);
    EXPECT_EQ(atoin("1 - 2", 10), -1);
    EXPECT_EQ(atoln("12 34", 10), 1234);
    EXPECT_EQ(atoln("12-3", 10), -123);
}

TEST(atoin, larger_numbers_wrap) {
    EXPECT_EQ(atoin("4294967297", 20), 1);
    EXPECT_EQ(atoin("2147483648", 20), INT_MIN);
    EXPECT_EQ(atoln("9223372036854775807", 20), LONG_MAX);
    EXPECT_EQ(atoln("-9223372036854775808", 20), LONG_MIN);
    EXPECT_EQ(atoln("18446744073709551617", 20), 1);
    EXPECT_EQ(atoln("4294967297", 20), 4294967297L);
}

// The rules as a table of states, on every text of five characters.
int by_the_states(const char *text, int n) {
    long value = 0;
    bool sign_seen = false, is_negative = false;
    for (int i = 0; i < n && text[i] != '\0'; i++) {
        if (isdigit(text[i])) {
            value = value * 10 + text[i] - '0';
        } else if (sign_seen) {
            break;
        } else if (text[i] == '-' || text[i] == '+') {
            sign_seen = true;
            is_negative = text[i] == '-';
        } else if (text[i] != ' ') {
            break;
        }
    }
    return static_cast<int>(is_negative ? -value : value);
}

TEST(atoin, agrees_with_the_rules_on_all_short_texts) {
    for (unsigned code = 0; code < 6 * 6 * 6 * 6 * 6; code++) {
        std::string text;
        for (unsigned rest = code; text.size() < 5; rest /= 6)
            text += "12 -+x"[rest % 6];
        for (int n = 0; n <= 6; n++)
            ASSERT_EQ(atoin(text.c_str(), n), by_the_states(text.c_str(), n))
                << text;
    }
}

std::string itoa_of(int value) {
    char buffer[12];
    EXPECT_EQ(itoa(value, buffer, 10), buffer);
    return buffer;
}

TEST(itoa, agrees_with_printf) {
    EXPECT_EQ(itoa_of(-7), "-7");
    EXPECT_EQ(itoa_of(0), "0");
    EXPECT_EQ(itoa_of(INT_MAX), "2147483647");
    EXPECT_EQ(itoa_of(INT_MIN), "-2147483648");
    std::mt19937 random(5);
    for (int i = 0; i < 20000; i++) {
        int value = static_cast<int>(random()) >> random() % 31;
        EXPECT_EQ(itoa_of(value), std::to_string(value));
    }
}

TEST(itoa, another_radix_aborts_and_names_the_place) {
    for (int radix : {0, 2, 16, -10}) {
        support::outcome end = support::in_child([&] {
            char buffer[40];
            itoa(5, buffer, radix);
        });
        EXPECT_EQ(end.signal, SIGABRT);
        EXPECT_NE(end.err.find("lib/itoa:43: itoa: Assertion `radix == 10'"),
                  std::string::npos)
            << end.err;
    }
}

TEST(convlong, reverses_four_bytes) {
    EXPECT_EQ(convlong(0x01020304u), 0x04030201u);
    EXPECT_EQ(convlong(0xff000000u), 0x000000ffu);
    EXPECT_EQ(convlong(0), 0u);
}

TEST(convshrt, swaps_two_bytes) {
    EXPECT_EQ(convshrt(0x0102), 0x0201);
    EXPECT_EQ(convshrt(0xff00), 0x00ff);
}

TEST(convmlong, reverses_count_values_in_place) {
    uint32_t values[] = {0x01020304u, 0x05060708u, 0x090a0b0cu};
    EXPECT_EQ(convmlong(values, 2), values);
    EXPECT_EQ(values[0], 0x04030201u);
    EXPECT_EQ(values[1], 0x08070605u);
    EXPECT_EQ(values[2], 0x090a0b0cu);
}

TEST(convmshrt, swaps_count_values_in_place) {
    uint16_t values[] = {0x0102, 0x0304, 0x0506};
    EXPECT_EQ(convmshrt(values, 2), values);
    EXPECT_EQ(values[0], 0x0201);
    EXPECT_EQ(values[1], 0x0403);
    EXPECT_EQ(values[2], 0x0506);
}

TEST(convmlong, a_count_of_0_or_less_does_nothing) {
    uint32_t longs[] = {0x01020304u};
    uint16_t shorts[] = {0x0102};
    for (int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(convmlong(longs, count), longs);
        EXPECT_EQ(convmshrt(shorts, count), shorts);
        EXPECT_EQ(longs[0], 0x01020304u);
        EXPECT_EQ(shorts[0], 0x0102);
    }
}

TEST(r64tol, rows) {
    const struct {
        const char *text;
        uint32_t value;
        int used;
    } rows[] = {
        {"z@", 2302, 2}, {"0", 0, 1},        {"", 0, 0},
        {"10", 64, 2},   {" 1", 0, 0},       {"1 ", 1, 1},
        {"1-", 1, 1},    {"/", 63, 1},       {"Z", 61, 1},
        {"a", 10, 1},    {"A", 36, 1},       {"%", 0, 0},
        {"\xff", 0, 0},  {"3/////", ~0u, 6}, {"4000001", 1u << 30 << 2 | 1, 7},
    };
    for (const auto &row : rows) {
        const char *end = nullptr;
        EXPECT_EQ(r64tol(row.text, &end), row.value) << row.text;
        EXPECT_EQ(end - row.text, row.used) << row.text;
        EXPECT_EQ(r64tol(row.text, nullptr), row.value) << row.text;
    }
}

TEST(ltor64, rows) {
    EXPECT_STREQ(ltor64(0), "0");
    EXPECT_STREQ(ltor64(63), "/");
    EXPECT_STREQ(ltor64(62), "@");
    EXPECT_STREQ(ltor64(64), "10");
    EXPECT_STREQ(ltor64(2302), "z@");
    EXPECT_STREQ(ltor64(0xffffffffu), "3/////");
}

TEST(ltor64, the_next_call_overwrites) {
    const char *first = ltor64(1);
    EXPECT_STREQ(first, "1");
    ltor64(2);
    EXPECT_STREQ(first, "2");
}

TEST(ltor64, every_digit_of_the_alphabet_in_order) {
    const std::string alphabet =
        "0123456789abcdefghijklmnopqrstuvwxyz"
        "ABCDEFGHIJKLMNOPQRSTUVWXYZ@/";
    for (uint32_t digit = 0; digit < 64; digit++)
        EXPECT_EQ(ltor64(digit), alphabet.substr(digit, 1));
}

TEST(ltor64, r64tol_reads_back_what_it_writes) {
    std::mt19937 random(9);
    for (int i = 0; i < 20000; i++) {
        uint32_t value = static_cast<uint32_t>(random()) >> random() % 32;
        EXPECT_EQ(r64tol(ltor64(value), nullptr), value);
    }
}

TEST(r64_init, may_be_called_at_any_time) {
    EXPECT_EQ(r64tol("z@", nullptr), 2302u);
    r64_init();
    r64_init();
    EXPECT_EQ(r64tol("z@", nullptr), 2302u);
}

TEST(monthnms, names_in_order) {
    EXPECT_STREQ(monthnms[0], "January");
    EXPECT_STREQ(monthnms[8], "September");
    EXPECT_STREQ(monthnms[11], "December");
    EXPECT_STREQ(daynms[0], "Sunday");
    EXPECT_STREQ(daynms[6], "Saturday");
}

// A second opinion from the C library's own names.
TEST(monthnms, agree_with_strftime) {
    struct tm date {};
    char name[32];
    for (date.tm_mon = 0; date.tm_mon < 12; date.tm_mon++) {
        strftime(name, sizeof name, "%B", &date);
        EXPECT_STREQ(monthnms[date.tm_mon], name);
    }
    for (date.tm_wday = 0, date.tm_mon = 0; date.tm_wday < 7; date.tm_wday++) {
        strftime(name, sizeof name, "%A", &date);
        EXPECT_STREQ(daynms[date.tm_wday], name);
    }
}

TEST(monlimits, starts_of_months_and_lengths_of_years) {
    const short ordinary[] = {0,   31,  59,  90,  120, 151, 181,
                              212, 243, 273, 304, 334, 365};
    for (int month = 0; month <= 12; month++) {
        EXPECT_EQ(monlimits[0][month], ordinary[month]);
        EXPECT_EQ(monlimits[1][month], ordinary[month] + (month > 1));
    }
}

}  // namespace
