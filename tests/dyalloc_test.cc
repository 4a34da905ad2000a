// dyalloc_test.cc: spare string records.
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <tovan/dystr.h>
#include <vector>

namespace {

// A spare record that holds no buffer lies on top of the pool.
void drop_kept_buffer() {
    dy *string = dyalloc();
    dygrow(string, 100000);
    dyfree(string);
}

TEST(dyalloc, gives_an_empty_string_of_56_bytes) {
    drop_kept_buffer();
    dy *string = dyalloc();
    EXPECT_STRING(*string, "", 56);
    EXPECT_EQ(string->next, nullptr);
    dyfree(string);
}

TEST(dyalloc, takes_127_records_at_once_the_last_one_first) {
    std::vector<dy *> taken = {dyalloc()};
    for (int i = 1; i < 127; i++) {
        taken.push_back(dyalloc());
        EXPECT_EQ(taken.back(), taken.front() - i);
    }
    dy *other = dyalloc();
    EXPECT_TRUE(other < taken.back() || other > taken.front());
    taken.push_back(other);
    for (dy *string : taken)
        dyfree(string);
}

TEST(dyalloc, gives_what_came_back_last) {
    dy *a = dyalloc();
    dy *b = dyalloc();
    dyfree(a);
    dyfree(b);
    EXPECT_EQ(dyalloc(), b);
    EXPECT_EQ(dyalloc(), a);
    dyfree(a);
    dyfree(b);
}

TEST(dyfree, keeps_a_small_buffer_for_the_next_one) {
    dy *string = dyalloc();
    dygrow(string, 119 - 56);
    char *buffer = dystr(string, "left over");
    string->marker = 0;
    dyfree(string);
    EXPECT_EQ(string->buffer, buffer);
    EXPECT_EQ(dyalloc(), string);
    EXPECT_EQ(string->buffer, buffer);
    EXPECT_STRING(*string, "", 119);
    EXPECT_EQ(string->next, nullptr);
    dyfree(string);
}

TEST(dyfree, releases_a_buffer_of_120_bytes) {
    dy *string = dyalloc();
    dygrow(string, 120 - 56);
    dyfree(string);
    EXPECT_EQ(string->capacity, 0);
    EXPECT_EQ(string->buffer, nullptr);
    EXPECT_EQ(dyalloc(), string);
    EXPECT_STRING(*string, "", 56);
    dyfree(string);
}

TEST(dyfree, takes_a_record_whose_buffer_went_elsewhere) {
    dy *string = dyalloc();
    char *buffer = string->buffer;
    string->capacity = 0;
    dyfree(string);
    EXPECT_EQ(dyalloc(), string);
    EXPECT_NE(string->buffer, buffer);
    EXPECT_STRING(*string, "", 56);
    free(buffer);
    dyfree(string);
}

TEST(dyalloc_sizes, set_what_is_given_and_what_is_kept) {
    drop_kept_buffer();
    dyalloc_sizes(10, 20);
    dy *string = dyalloc();
    EXPECT_EQ(string->capacity, 10);
    dygrow(string, 9);
    dyfree(string);
    EXPECT_EQ(string->capacity, 19);
    dyalloc();
    dygrow(string, 1);
    dyfree(string);
    EXPECT_EQ(string->capacity, 0);
}

TEST(dyalloc_sizes, other_values_change_nothing) {
    drop_kept_buffer();
    dyalloc_sizes(56, 120);
    dyalloc_sizes(0, -1);
    dyalloc_sizes(INT_MIN, 0);
    dy *string = dyalloc();
    EXPECT_EQ(string->capacity, 56);
    dygrow(string, 119 - 56);
    dyfree(string);
    EXPECT_EQ(string->capacity, 119);
}

TEST(dyalloc_sizes, each_setting_stands_alone) {
    drop_kept_buffer();
    dyalloc_sizes(200, 0);
    dy *string = dyalloc();
    EXPECT_EQ(string->capacity, 200);
    dyalloc_sizes(0, 201);
    dyfree(string);
    EXPECT_EQ(string->capacity, 200);
}

}  // namespace
