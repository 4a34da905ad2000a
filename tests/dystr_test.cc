// dystr_test.cc: making strings and appending to them.
#include "support/child.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dystr.h>
#include <unistd.h>
#include <random>

using support::owned_string;
using support::text_of;

namespace {

TEST(dynew, makes_an_empty_string) {
    const struct {
        int size;
        int capacity;
    } rows[] = {{0, 16}, {-1, 16}, {INT_MIN, 16}, {1, 1}, {16, 16}, {500, 500}};
    for (const auto &row : rows) {
        dy other{};
        dy string = {7, 7, &other, 7, nullptr};
        EXPECT_EQ(dynew(&string, row.size), &string);
        EXPECT_STRING(string, "", row.capacity);
        EXPECT_EQ(string.next, nullptr);
        free(string.buffer);
    }
}

TEST(dyreuse, empties_and_makes_room) {
    const struct {
        int before;
        int size;
        int after;
    } rows[] = {{16, 0, 16},  {16, -1, 16}, {16, 16, 16},
                {16, 17, 17}, {80, 40, 80}, {80, 1000, 1000}};
    for (const auto &row : rows) {
        owned_string string("some text", row.before);
        string.marker = 0;
        EXPECT_EQ(dyreuse(&string, row.size), &string);
        EXPECT_STRING(string, "", row.after);
    }
}

TEST(dyreuse, keeps_the_buffer_that_suffices) {
    owned_string string("text", 100);
    const char *buffer = string.buffer;
    dyreuse(&string, 100);
    EXPECT_EQ(string.buffer, buffer);
}

TEST(dyreuse, works_on_a_zeroed_record) {
    for (int size : {40, 0}) {
        dy string{};
        dyreuse(&string, size);
        EXPECT_STRING(string, "", size != 0 ? size : 16);
        free(string.buffer);
    }
}

TEST(dygrow, adds_to_the_capacity_and_nothing_else) {
    owned_string string("abc", 16);
    EXPECT_EQ(dygrow(&string, 5), string.buffer);
    EXPECT_STRING(string, "abc", 21);
    dygrow(&string, 100000);
    EXPECT_STRING(string, "abc", 100021);
}

TEST(dystr, appends_the_text) {
    owned_string string("ab");
    EXPECT_EQ(dystr(&string, "cd"), string.buffer);
    EXPECT_EQ(text_of(string), "abcd");
}

TEST(dystr, null_is_the_empty_text) {
    owned_string string("ab", 16);
    EXPECT_EQ(dystr(&string, nullptr), string.buffer);
    EXPECT_STRING(string, "ab", 16);
}

TEST(dystr, appends_to_a_zeroed_record) {
    for (const char *text : {"", "x"}) {
        dy string{};
        string.marker = 1;
        dystr(&string, text);
        EXPECT_STRING(string, text, 64);
        free(string.buffer);
    }
}

TEST(dystr, a_record_without_capacity_has_no_buffer_whatever_it_points_at) {
    char place[1] = "";
    dy string = {0, 1, nullptr, 0, place};
    dystr(&string, "text");
    EXPECT_STRING(string, "text", 64);
    EXPECT_NE(string.buffer, place);
    free(string.buffer);
}

TEST(dystr, appends_the_string_to_itself) {
    owned_string string("0123456789", 16);
    std::string expected = "0123456789";
    for (int i = 0; i < 15; i++) {
        dystr(&string, string.buffer);
        expected += expected;
        ASSERT_EQ(text_of(string), expected);
    }
}

TEST(dynstr, appends_exactly_n_bytes) {
    owned_string string;
    dynstr(&string, "ab\0cd", 5);
    EXPECT_EQ(text_of(string), std::string("ab\0cd", 5));
    dynstr(&string, "xyz", 1);
    EXPECT_EQ(text_of(string), std::string("ab\0cdx", 6));
}

TEST(dynstr, copies_runs_of_every_length) {
    std::string bytes;
    for (int i = 0; i < 70; i++)
        bytes += static_cast<char>('0' + i);
    for (size_t n = 0; n <= bytes.size(); n++) {
        owned_string string("<", 200);
        dynstr(&string, bytes.data(), static_cast<int>(n));
        EXPECT_EQ(text_of(string), "<" + bytes.substr(0, n));
    }
}

TEST(dynstr, nothing_appended_is_still_terminated) {
    for (int n : {0, -1, INT_MIN}) {
        owned_string string("abc", 4);
        string.buffer[3] = 'x';
        EXPECT_EQ(dynstr(&string, "z", n), string.buffer);
        EXPECT_STRING(string, "abc", 4);
    }
}

TEST(dyspan, appends_up_to_the_end) {
    const char *text = "abcdef";
    owned_string string("<", 16);
    EXPECT_EQ(dyspan(&string, text + 1, text + 4), string.buffer);
    EXPECT_STRING(string, "<bcd", 16);
}

TEST(dyspan, an_end_before_the_start_is_nothing) {
    const char *text = "abcdef";
    owned_string string("<", 16);
    dyspan(&string, text + 4, text + 1);
    dyspan(&string, text, text);
    EXPECT_STRING(string, "<", 16);
}

// Growth happens when the new length reaches the capacity.
TEST(dynstr, growth_rows) {
    const struct {
        int held;
        int size;
        int n;
        int capacity;
    } rows[] = {
        {0, 16, 15, 16},   {15, 16, 1, 80},  {0, 16, 16, 80},
        {0, 16, 63, 80},   {0, 16, 64, 144}, {0, 16, 127, 144},
        {0, 16, 128, 208}, {10, 11, 0, 11},  {0, 16, 1000, 1040},
        {5, 6, 1, 70},     {5, 70, 64, 70},  {5, 70, 65, 198},
    };
    for (const auto &row : rows) {
        owned_string string(std::string(static_cast<size_t>(row.held), 'h'),
                            row.size);
        std::string more(static_cast<size_t>(row.n), 'n');
        dynstr(&string, more.data(), row.n);
        EXPECT_STRING(string,
                      std::string(static_cast<size_t>(row.held), 'h') + more,
                      row.capacity);
    }
}

TEST(dyaddc, gives_the_character_back) {
    owned_string string("", 16);
    for (int character : {int{'a'}, 0x141, -1, 0x80}) {
        EXPECT_EQ(dyaddc(&string, character), character);
    }
    EXPECT_STRING(string, "aA\xff\x80", 16);
}

TEST(dyaddc, a_nul_only_terminates) {
    for (int nul : {0, 0x100}) {
        owned_string string("abc", 4);
        string.buffer[3] = 'x';
        EXPECT_EQ(dyaddc(&string, nul), nul);
        EXPECT_STRING(string, "abc", 4);
    }
}

TEST(dyaddc, grows_by_64) {
    owned_string string("", 16);
    for (int i = 1; i <= 1000; i++) {
        dyaddc(&string, 'c');
        EXPECT_EQ(support::flaw_of(string), "");
        ASSERT_EQ(string.capacity, i < 16 ? 16 : 16 + (i - 16) / 64 * 64 + 64);
    }
    EXPECT_EQ(text_of(string), std::string(1000, 'c'));
}

TEST(dyaddc, works_on_a_zeroed_record) {
    for (int character : {0, int{'x'}}) {
        dy string{};
        string.marker = 1;
        dyaddc(&string, character);
        EXPECT_STRING(string, character ? "x" : "", 64);
        free(string.buffer);
    }
}

TEST(dyaddslash, adds_one_where_there_is_none) {
    const char *const rows[][2] = {
        {"", ""}, {"a", "a/"}, {"a/", "a/"}, {"/", "/"}, {"a//", "a//"}};
    for (const auto &row : rows) {
        owned_string string(row[0], 16);
        EXPECT_EQ(dyaddslash(&string), string.buffer);
        EXPECT_STRING(string, row[1], 16);
    }
}

TEST(dyaddspace, adds_a_blank_behind_text) {
    const char *const rows[][2] = {{"", ""},        {"a", "a "},
                                   {"a ", "a "},    {"a\t", "a\t"},
                                   {"a\n", "a\n "}, {" ", " "}};
    for (const auto &row : rows) {
        owned_string string(row[0], 16);
        EXPECT_EQ(dyaddspace(&string), string.buffer);
        EXPECT_STRING(string, row[1], 16);
    }
}

TEST(dyaddslash, grows_by_64_like_any_character) {
    owned_string path("abc", 4);
    dyaddslash(&path);
    EXPECT_STRING(path, "abc/", 68);
    owned_string words("abc", 4);
    dyaddspace(&words);
    EXPECT_STRING(words, "abc ", 68);
    owned_string full("ab/", 4);
    dyaddslash(&full);
    EXPECT_STRING(full, "ab/", 4);
}

TEST(dypadc, pads_up_to_the_column) {
    const struct {
        const char *text;
        int character;
        int column;
        const char *result;
    } rows[] = {{"ab", '.', 5, "ab..."}, {"", '-', 3, "---"},
                {"abc", '.', 3, "abc"},  {"abc", '.', 2, "abc"},
                {"abc", '.', -1, "abc"}, {"abc", '.', INT_MIN, "abc"},
                {"abc", 0, 8, "abc"},    {"ab", 0x12e, 4, "ab.."}};
    for (const auto &row : rows) {
        owned_string string(row.text, 16);
        EXPECT_EQ(dypadc(&string, row.character, row.column), string.buffer);
        EXPECT_STRING(string, row.result, 16);
    }
}

TEST(dypadc, dypadc_grows_by_the_column) {
    const struct {
        int held;
        int size;
        int column;
        int capacity;
    } rows[] = {
        {0, 16, 14, 16},  {0, 16, 15, 80},      {0, 16, 63, 80},
        {0, 16, 64, 144}, {130, 140, 138, 140}, {130, 140, 139, 332},
        {3, 5, 3, 5},     {3, 4, 3, 68},        {3, 4, 0, 68},
    };
    for (const auto &row : rows) {
        std::string text(static_cast<size_t>(row.held), 'h');
        owned_string string(text, row.size);
        dypadc(&string, 'c', row.column);
        if (row.column > row.held)
            text.resize(static_cast<size_t>(row.column), 'c');
        EXPECT_STRING(string, text, row.capacity);
    }
}

TEST(dypadc, makes_room_for_a_nul_too) {
    owned_string string("abc", 4);
    dypadc(&string, 0, 100);
    EXPECT_STRING(string, "abc", 132);
}

// How often the block changes while the capacity goes up step by step.
TEST(dystr, growth_asks_the_allocator_rarely) {
    owned_string string("", 16);
    size_t size = 0;
    int changes = 0;
    for (int i = 0; i < 1000000; i++) {
        dyaddc(&string, 'c');
        size_t now = malloc_usable_size(string.buffer);
        changes += now != size;
        size = now;
    }
    EXPECT_LT(changes, 40);
    EXPECT_EQ(string.capacity, 16 + (1000000 - 16) / 64 * 64 + 64);
}

void expect_out_of_memory(const std::function<void()> &body) {
    support::outcome end = support::in_child(body);
    EXPECT_EQ(end.signal, SIGABRT);
    EXPECT_EQ(end.err, "test: Ran out of memory\n");
}

// As long as a string can be. Its block is small: what grows it must end
// before it touches anything.
dy longest() {
    return {INT_MAX - 1, 1, nullptr, INT_MAX, static_cast<char *>(malloc(16))};
}

TEST(dystr, a_length_beyond_2_31_bytes_ends_as_out_of_memory) {
    dy string = longest();
    char bytes[2] = "x";
    expect_out_of_memory([&] { dystr(&string, bytes); });
    expect_out_of_memory([&] { dynstr(&string, bytes, 1); });
    expect_out_of_memory([&] { dynstr(&string, bytes, INT_MAX); });
    expect_out_of_memory([&] { dyspan(&string, bytes, bytes + 1); });
    expect_out_of_memory([&] { dyaddc(&string, 'x'); });
    expect_out_of_memory([&] { dypadc(&string, 'x', INT_MAX); });
    expect_out_of_memory([&] { dyinsert(&string, 0, bytes, 1); });
    expect_out_of_memory([&] { dygrow(&string, 1); });
    free(string.buffer);
}

// The capacity stops at 2^31-1, and the string may use all of it.
TEST(dystr, the_last_step_of_growth_is_cut) {
    support::outcome end = support::in_child([] {
        dy string = {INT_MAX - 50, 1, nullptr, INT_MAX - 49,
                     static_cast<char *>(malloc(INT_MAX))};
        dynstr(&string, "0123456789", 10);
        _exit(string.capacity != INT_MAX || string.length != INT_MAX - 40);
    });
    EXPECT_EQ(end.exit_status, 0) << end.err;
}

// The same appends on a record and on a plain string, the capacity by the
// rules as they are written down.
class model {
  public:
    explicit model(int size) : capacity_(size) {
        dynew(&string_, size);
    }
    ~model() {
        free(string_.buffer);
    }

    void append(const std::string &bytes) {
        int k = static_cast<int>(bytes.size());
        if (length() + k >= capacity_) capacity_ += (k + 64) / 64 * 64;
        text_ += bytes;
        dynstr(&string_, bytes.data(), k);
    }

    void append(char character) {
        if (length() + 1 >= capacity_) capacity_ += 64;
        text_ += character;
        dyaddc(&string_, character);
    }

    void pad(char character, int column) {
        if (column > length()) {
            if (column + 1 >= capacity_) capacity_ += (column + 64) / 64 * 64;
            text_.resize(static_cast<size_t>(column), character);
        } else if (length() + 1 >= capacity_) {
            capacity_ += 64;
        }
        dypadc(&string_, character, column);
    }

    void insert(int position, const std::string &bytes) {
        int n = static_cast<int>(bytes.size());
        if (length() + n >= capacity_ && n != 0)
            capacity_ += (n + 64) / 64 * 64;
        int place = position < 0 ? 0 : std::min(position, length());
        text_.insert(static_cast<size_t>(place), bytes);
        dyinsert(&string_, position, bytes.data(), n);
    }

    void cut(int from, int to) {
        char *start = string_.buffer;
        bool allowed = from >= 0 && to <= length() && from < to;
        if (allowed)
            text_.erase(static_cast<size_t>(from),
                        static_cast<size_t>(to - from));
        EXPECT_EQ(dycut(&string_, start + from, start + to) != nullptr,
                  allowed);
    }

    void truncate(int n) {
        int to = n < 0 ? std::max(0, length() + n) : std::min(n, length());
        text_.resize(static_cast<size_t>(to));
        dytruncate(&string_, n);
    }

    void reuse(int size) {
        capacity_ = std::max(capacity_, size);
        text_.clear();
        dyreuse(&string_, size);
    }

    int length() const {
        return static_cast<int>(text_.size());
    }

    void check() const {
        ASSERT_EQ(support::flaw_of(string_), "");
        ASSERT_EQ(text_of(string_), text_);
        ASSERT_EQ(string_.capacity, capacity_);
    }

  private:
    dy string_;
    std::string text_;
    int capacity_;
};

TEST(dystr, any_sequence_of_operations_keeps_content_and_capacity) {
    std::mt19937 random(1);
    auto below = [&](int n) {
        return static_cast<int>(random() % static_cast<unsigned>(n));
    };
    auto some = [&](int n) {
        std::string bytes;
        for (int i = below(n); i > 0; i--)
            bytes += static_cast<char>(below(256));
        return bytes;
    };
    for (int round = 0; round < 300; round++) {
        model string(1 + below(100));
        for (int step = 0; step < 100; step++) {
            switch (below(9)) {
                case 0:
                    string.append(some(200));
                    break;
                case 1:
                    string.append(some(20));
                    break;
                case 2:
                    string.append(static_cast<char>(1 + below(255)));
                    break;
                case 3:
                    string.pad(static_cast<char>(1 + below(255)), below(400));
                    break;
                case 4:
                    string.insert(below(400) - 20, some(100));
                    break;
                case 5:
                    string.cut(below(200), below(200));
                    break;
                case 6:
                    string.truncate(below(600) - 200);
                    break;
                case 7:
                    string.insert(string.length() / 2, some(9));
                    break;
                default:
                    if (below(10) == 0) string.reuse(below(300));
            }
            string.check();
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
