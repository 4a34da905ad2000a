// dypadd_test.cc: growing pointer arrays and their spare records.
#include "support/child.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <signal.h>
#include <stdlib.h>
#include <tovan/dypadd.h>
#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

// Letters to point at: "a", "b" and so on.
const char *letter(int i) {
    static const char letters[] =
        "a\0b\0c\0d\0e\0f\0g\0h\0i\0j\0k\0l\0m\0n\0o\0p\0q\0r\0s\0t\0u\0v\0w\0"
        "x\0y\0z";
    return letters + 2 * (i % 26);
}

// A pointer array that releases its slots.
struct owned_array : dyp {
    explicit owned_array(int held = 0, int slots = 7) : dyp{} {
        dypnew(this, slots);
        for (int i = 0; i < held; i++)
            dypadd(this, letter(i));
    }
    ~owned_array() {
        free(array);
    }
    owned_array(const owned_array &) = delete;
    owned_array &operator=(const owned_array &) = delete;
};

// The letters in order, "-" for a null pointer.
std::string letters_of(const dyp &array) {
    std::string all;
    for (int i = 0; i < array.count; i++) {
        const char *text = static_cast<const char *>(array.array[i]);
        all += text != nullptr ? text : "-";
    }
    return all;
}

#define EXPECT_ARRAY(array, letters, slots)     \
    do {                                        \
        EXPECT_EQ(support::flaw_of(array), ""); \
        EXPECT_EQ(letters_of(array), letters);  \
        EXPECT_EQ((array).capacity, slots);     \
    } while (false)

TEST(dypnew, makes_an_empty_array) {
    dyp other{};
    for (int slots : {1, 7, 500}) {
        dyp array = {9, 9, &other, 9, nullptr};
        EXPECT_EQ(dypnew(&array, slots), array.array);
        EXPECT_ARRAY(array, "", slots);
        EXPECT_EQ(array.next, nullptr);
        free(array.array);
    }
}

TEST(dypreuse, empties_the_array) {
    owned_array array(3, 20);
    array.marker = 1;
    void **slots = array.array;
    EXPECT_EQ(dypreuse(&array), slots);
    EXPECT_ARRAY(array, "", 20);
}

TEST(dypreuse, gives_a_zeroed_record_seven_slots) {
    dyp array{};
    EXPECT_EQ(dypreuse(&array), array.array);
    EXPECT_ARRAY(array, "", 7);
    free(array.array);
}

TEST(dypadd, appends_and_terminates) {
    owned_array array;
    EXPECT_EQ(dypadd(&array, letter(0)), array.array);
    EXPECT_ARRAY(array, "a", 7);
    dypadd(&array, nullptr);
    dypadd(&array, letter(1));
    EXPECT_ARRAY(array, "a-b", 7);
}

TEST(dypadd, the_twentieth_pointer_of_twenty_slots_adds_eight) {
    owned_array array(19, 20);
    EXPECT_EQ(array.capacity, 20);
    dypadd(&array, letter(19));
    EXPECT_ARRAY(array, "abcdefghijklmnopqrst", 28);
}

TEST(dypadd, grows_by_eight) {
    owned_array array(0, 1);
    for (int i = 1; i <= 1000; i++) {
        dypadd(&array, letter(i));
        ASSERT_EQ(support::flaw_of(array), "");
        ASSERT_EQ(array.capacity, 9 + (i - 1) / 8 * 8);
    }
    for (int i = 0; i < 1000; i++)
        ASSERT_EQ(array.array[i], letter(i + 1));
}

TEST(dypadd, works_on_a_zeroed_record) {
    dyp array{};
    dypadd(&array, letter(0));
    EXPECT_ARRAY(array, "a", 8);
    free(array.array);
}

TEST(dypadd, serves_as_an_argument_vector) {
    owned_array array(3);
    char **words = reinterpret_cast<char **>(array.array);
    EXPECT_STREQ(words[2], "c");
    EXPECT_EQ(words[3], nullptr);
}

TEST(dypinsert, dypinsert_rows) {
    const struct {
        int held;
        int index;
        const char *result;
    } rows[] = {{2, 100, "abz"}, {2, -3, "zab"},      {2, 0, "zab"},
                {2, 1, "azb"},   {2, 2, "abz"},       {0, 0, "z"},
                {0, 5, "z"},     {2, INT_MIN, "zab"}, {2, INT_MAX, "abz"}};
    for (const auto &row : rows) {
        owned_array array(row.held);
        EXPECT_EQ(dypinsert(&array, "z", row.index), array.array);
        EXPECT_ARRAY(array, row.result, 7);
    }
}

TEST(dypinsert, grows_by_eight_as_appending_does) {
    owned_array array(6, 7);
    EXPECT_EQ(array.capacity, 7);
    dypinsert(&array, "z", 3);
    EXPECT_ARRAY(array, "abczdef", 15);
}

TEST(dypdelete, dypdelete_rows) {
    const struct {
        int held;
        int index;
        const char *result;
    } rows[] = {{3, 0, "bc"},       {3, 1, "ac"},    {3, 2, "ab"},
                {3, 3, "abc"},      {3, 100, "abc"}, {3, -1, "ab"},
                {3, -3, "bc"},      {3, -4, "abc"},  {2, -5, "ab"},
                {0, 0, ""},         {0, -1, ""},     {3, INT_MIN, "abc"},
                {3, INT_MAX, "abc"}};
    for (const auto &row : rows) {
        owned_array array(row.held);
        EXPECT_EQ(dypdelete(&array, row.index), array.array);
        EXPECT_ARRAY(array, row.result, 7);
    }
}

TEST(dypseti, dypseti_rows) {
    const struct {
        int held;
        int slots;
        int index;
        const char *result;
        int capacity;
    } rows[] = {
        {3, 7, 1, "azc", 7},
        {3, 7, 3, "abcz", 7},
        {0, 7, 5, "-----z", 7},
        {0, 7, 6, "------z", 16},
        {0, 7, 0, "z", 7},
        {0, 1, 0, "z", 16},
        {2, 7, 15, "ab-------------z", 24},
        {2, 7, 8, "ab------z", 24},
    };
    for (const auto &row : rows) {
        owned_array array(row.held, row.slots);
        EXPECT_EQ(dypseti(&array, "z", row.index), array.array);
        EXPECT_ARRAY(array, row.result, row.capacity);
    }
}

TEST(dypseti, inside_the_array_nothing_else_changes) {
    owned_array array(3, 4);
    dypseti(&array, "z", 2);
    EXPECT_ARRAY(array, "abz", 4);
}

TEST(dypseti, dypseti_stores_at_a_negative_index_as_it_is) {
    void *slots[8] = {};
    dyp array = {2, 0, nullptr, 5, slots + 3};
    EXPECT_EQ(dypseti(&array, "z", -1), slots + 3);
    EXPECT_STREQ(static_cast<char *>(slots[2]), "z");
    EXPECT_EQ(array.count, 2);
}

TEST(dypadd, growth_asks_the_allocator_rarely) {
    owned_array array;
    size_t size = 0;
    int changes = 0;
    for (int i = 0; i < 1000000; i++) {
        size_t now = malloc_usable_size(dypadd(&array, "x"));
        changes += now != size;
        size = now;
    }
    EXPECT_LT(changes, 40);
}

TEST(dypadd, a_count_beyond_2_31_ends_as_out_of_memory) {
    dyp array = {INT_MAX - 1, 0, nullptr, INT_MAX,
                 static_cast<void **>(malloc(16))};
    for (const std::function<void()> &grow : {
             std::function<void()>([&] { dypadd(&array, "x"); }),
             std::function<void()>([&] { dypinsert(&array, "x", 0); }),
             std::function<void()>([&] { dypseti(&array, "x", INT_MAX - 1); }),
             std::function<void()>([&] { dypseti(&array, "x", INT_MAX); }),
         }) {
        support::outcome end = support::in_child(grow);
        EXPECT_EQ(end.signal, SIGABRT);
        EXPECT_EQ(end.err, "test: Ran out of memory\n");
    }
    free(array.array);
}

TEST(dypflist, gives_an_empty_array_of_seven_slots) {
    dyp *array = dypflist(nullptr);
    EXPECT_ARRAY(*array, "", 7);
    EXPECT_EQ(array->next, nullptr);
    EXPECT_EQ(dypflist(array), nullptr);
}

TEST(dypflist, takes_15_records_at_once_the_last_one_first) {
    std::vector<dyp *> taken = {dypflist(nullptr)};
    for (int i = 1; i < 15; i++) {
        taken.push_back(dypflist(nullptr));
        EXPECT_EQ(taken.back(), taken.front() - i);
    }
    dyp *other = dypflist(nullptr);
    EXPECT_TRUE(other < taken.back() || other > taken.front());
    taken.push_back(other);
    for (dyp *array : taken)
        dypflist(array);
}

TEST(dypflist, keeps_up_to_30_slots) {
    for (int slots : {30, 31}) {
        dyp *array = dypflist(nullptr);
        free(array->array);
        dypnew(array, slots);
        dypadd(array, "x");
        dypflist(array);
        EXPECT_EQ(array->capacity, slots == 30 ? 30 : 0);
        EXPECT_EQ(array->array != nullptr, slots == 30);
        EXPECT_EQ(dypflist(nullptr), array);
        EXPECT_ARRAY(*array, "", slots == 30 ? 30 : 7);
        dypflist(array);
    }
}

TEST(dypadd, any_sequence_of_operations_keeps_content_and_capacity) {
    std::mt19937 random(3);
    auto below = [&](int n) {
        return static_cast<int>(random() % static_cast<unsigned>(n));
    };
    for (int round = 0; round < 200; round++) {
        int capacity = 1 + below(40);
        owned_array array(0, capacity);
        std::vector<void *> model;
        for (int step = 0; step < 100; step++) {
            int count = static_cast<int>(model.size());
            int index = below(count + 30) - 10;
            void *pointer = const_cast<char *>(letter(below(26)));
            int clamped = std::clamp(index, 0, count);
            switch (below(4)) {
                case 0:
                    if (count + 1 >= capacity) capacity += 8;
                    model.push_back(pointer);
                    dypadd(&array, pointer);
                    break;
                case 1:
                    if (count + 1 >= capacity) capacity += 8;
                    model.insert(model.begin() + clamped, pointer);
                    dypinsert(&array, pointer, index);
                    break;
                case 2:
                    dypdelete(&array, index);
                    if (index < 0) index += count;
                    if (index >= 0 && index < count)
                        model.erase(model.begin() + index);
                    break;
                default:
                    index = std::max(index, 0);
                    if (index >= count) {
                        if (index + 1 >= capacity)
                            capacity = (index + 16) / 8 * 8;
                        model.resize(static_cast<size_t>(index) + 1);
                    }
                    model[static_cast<size_t>(index)] = pointer;
                    dypseti(&array, pointer, index);
            }
            ASSERT_EQ(support::flaw_of(array), "");
            ASSERT_EQ(array.capacity, capacity);
            ASSERT_EQ(
                std::vector<void *>(array.array, array.array + array.count),
                model);
        }
    }
}

}  // namespace
