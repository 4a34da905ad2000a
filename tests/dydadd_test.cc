// dydadd_test.cc: growing arrays of elements of a fixed size.
#include "support/child.h"
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/dypadd.h>
#include <string>
#include <vector>

namespace {

struct owned_data : dyd {
    owned_data(int elements, int size) : dyd{} {
        dydnew(this, elements, size);
    }
    ~owned_data() {
        free(data);
    }
    owned_data(const owned_data &) = delete;
    owned_data &operator=(const owned_data &) = delete;
};

std::string bytes_of(const dyd &array) {
    return std::string(static_cast<const char *>(array.data),
                       static_cast<size_t>(array.count) *
                           static_cast<size_t>(array.element_size));
}

#define EXPECT_DATA(array, bytes, elements)     \
    do {                                        \
        EXPECT_EQ(support::flaw_of(array), ""); \
        EXPECT_EQ(bytes_of(array), bytes);      \
        EXPECT_EQ((array).capacity, elements);  \
    } while (false)

TEST(dydnew, makes_an_empty_array) {
    dyd other{};
    dyd array = {9, 9, 9, &other, 9, nullptr};
    EXPECT_EQ(dydnew(&array, 5, 12), array.data);
    EXPECT_DATA(array, "", 5);
    EXPECT_EQ(array.element_size, 12);
    EXPECT_EQ(array.next, nullptr);
    free(array.data);
}

TEST(dydadd, appends_and_terminates) {
    owned_data array(3, 2);
    EXPECT_EQ(dydadd(&array, "ab"), array.data);
    dydadd(&array, "cd");
    EXPECT_DATA(array, "abcd", 3);
    dydadd(&array, "ef");
    EXPECT_DATA(array, "abcdef", 11);
}

TEST(dydadd, grows_by_eight_for_every_size) {
    for (int size : {1, 3, 8, 100}) {
        owned_data array(1, size);
        std::string expected;
        for (int i = 1; i <= 200; i++) {
            std::string element(static_cast<size_t>(size),
                                static_cast<char>(i));
            expected += element;
            dydadd(&array, element.data());
            ASSERT_EQ(array.capacity, 9 + (i - 1) / 8 * 8);
            ASSERT_EQ(support::flaw_of(array), "");
        }
        EXPECT_EQ(bytes_of(array), expected);
    }
}

TEST(dydadd, an_element_of_the_array_itself) {
    owned_data array(2, 3);
    dydadd(&array, "abc");
    std::string expected = "abc";
    for (int i = 0; i < 100; i++) {
        dydadd(&array, array.data);
        expected += "abc";
        ASSERT_EQ(bytes_of(array), expected);
    }
}

TEST(dydadd, works_on_a_record_with_nothing_but_a_size) {
    dyd array{};
    array.element_size = 4;
    dydadd(&array, "abcd");
    EXPECT_DATA(array, "abcd", 8);
    free(array.data);
}

// Refused with and without the room that is asked for first.
TEST(dydadd, ends_when_memory_ends) {
    constexpr int most = INT_MAX;
    dyd array = {most / 2 - 1, 0, most, nullptr, most / 2, malloc(16)};
    support::outcome end = support::in_child([&] { dydadd(&array, "x"); });
    EXPECT_EQ(end.signal, SIGABRT);
    // The sanitizers say something of their own before.
    EXPECT_TRUE(end.err.ends_with("test: Ran out of memory\n")) << end.err;
    free(array.data);
}

TEST(dydreuse, dydreuse_rows) {
    const struct {
        int capacity;
        int old_size;
        int asked;
        int size;
        int elements;
        bool is_kept;
    } rows[] = {
        {7, 4, 4, 4, 7, true},   {7, 4, 0, 4, 7, true},
        {7, 4, -1, 4, 7, true},  {6, 4, 4, 4, 7, false},
        {7, 8, 4, 4, 14, true},  {14, 4, 8, 8, 7, true},
        {13, 4, 8, 8, 7, false}, {20, 4, 8, 8, 10, true},
        {21, 4, 8, 8, 10, true}, {7, 1, 100, 100, 7, false},
    };
    for (const auto &row : rows) {
        owned_data array(row.capacity, row.old_size);
        std::string element(static_cast<size_t>(row.old_size), 'x');
        dydadd(&array, element.data());
        array.marker = 1;
        void *data = array.data;
        EXPECT_EQ(dydreuse(&array, row.asked), array.data);
        EXPECT_DATA(array, "", row.elements);
        EXPECT_EQ(array.element_size, row.size);
        if (row.is_kept) {
            EXPECT_EQ(array.data, data);
        }
    }
}

TEST(dydreuse, the_counted_capacity_is_there) {
    owned_data array(100, 3);
    dydreuse(&array, 7);
    EXPECT_EQ(array.capacity, 42);
    for (int i = 0; i < 41; i++)
        dydadd(&array, "abcdefg");
    EXPECT_EQ(array.capacity, 42);
    EXPECT_EQ(support::flaw_of(array), "");
}

TEST(dydreuse, works_on_a_zeroed_record) {
    dyd array{};
    dydreuse(&array, 6);
    EXPECT_DATA(array, "", 7);
    free(array.data);
}

TEST(dydreuse, elements_of_no_bytes_are_harmless) {
    dyd array{};
    for (int i = 0; i < 3; i++) {
        dydreuse(&array, 0);
        EXPECT_EQ(array.capacity, 7);
        for (int k = 0; k < 10; k++)
            dydadd(&array, "");
        EXPECT_EQ(array.count, 10);
        dydreuse(&array, 0);
        array.capacity = 7;
    }
    free(array.data);
}

TEST(dydflist, gives_an_empty_array_of_seven) {
    dyd *array = dydflist(nullptr, 16);
    EXPECT_DATA(*array, "", 7);
    EXPECT_EQ(array->element_size, 16);
    EXPECT_EQ(array->next, nullptr);
    EXPECT_EQ(dydflist(array, 16), nullptr);
}

TEST(dydflist, takes_15_records_at_once_the_last_one_first) {
    std::vector<dyd *> taken = {dydflist(nullptr, 4)};
    for (int i = 1; i < 15; i++) {
        taken.push_back(dydflist(nullptr, 4));
        EXPECT_EQ(taken.back(), taken.front() - i);
    }
    dyd *other = dydflist(nullptr, 4);
    EXPECT_TRUE(other < taken.back() || other > taken.front());
    taken.push_back(other);
    for (dyd *array : taken)
        dydflist(array, 4);
}

TEST(dydflist, keeps_up_to_120_bytes) {
    const struct {
        int capacity;
        int size;
        bool is_kept;
    } rows[] = {{7, 17, true}, {30, 4, true}, {31, 4, false}, {121, 1, false}};
    for (const auto &row : rows) {
        dyd *array = dydflist(nullptr, row.size);
        free(array->data);
        dydnew(array, row.capacity, row.size);
        // The record's own element size counts, whatever the call says.
        dydflist(array, row.is_kept ? 1000 : 1);
        EXPECT_EQ(array->data != nullptr, row.is_kept);
        EXPECT_EQ(array->capacity, row.is_kept ? row.capacity : 0);
        EXPECT_EQ(dydflist(nullptr, row.size), array);
        EXPECT_DATA(*array, "", row.is_kept ? row.capacity : 7);
        dydflist(array, row.size);
    }
}

}  // namespace
