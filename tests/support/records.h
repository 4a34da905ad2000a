// records.h: dynamic strings and arrays in tests, and what is always true of
// them.
#ifndef TOVAN_TESTS_RECORDS_H
#define TOVAN_TESTS_RECORDS_H

#include <tovan/dypadd.h>
#include <tovan/dystr.h>
#include <string>

namespace support {

// A string record that releases its buffer.
struct owned_string : dy {
    // Holds `text` in a buffer of `size` bytes, or of just enough.
    explicit owned_string(const std::string &text = "", int size = 0);
    ~owned_string();
    owned_string(const owned_string &) = delete;
    owned_string &operator=(const owned_string &) = delete;
};

// What is wrong with a record: an empty text when it is sane.
std::string flaw_of(const dy &string);
std::string flaw_of(const dyp &array);
std::string flaw_of(const dyd &array);

// The content, embedded NULs included.
std::string text_of(const dy &string);

}  // namespace support

// The record is sane and holds `text`; the capacity is `size`.
#define EXPECT_STRING(string, text, size)          \
    do {                                           \
        EXPECT_EQ(support::flaw_of(string), "");   \
        EXPECT_EQ(support::text_of(string), text); \
        EXPECT_EQ((string).capacity, size);        \
    } while (false)

#endif
