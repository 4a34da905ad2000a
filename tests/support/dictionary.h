// dictionary.h: the dictionary of a test.
#ifndef TOVAN_TESTS_DICTIONARY_H
#define TOVAN_TESTS_DICTIONARY_H

#include <gtest/gtest.h>
#include <string>

namespace support {

// A dictionary without names, and everything else as in a new process.
void empty_dictionary();

// Writes the file "dict" and reads it.
//   result    what was reported
std::string read_dictionary(const std::string &content);

// The value of a name; "(undefined)" when there is none.
std::string value_of(const std::string &name);

// Where a name was defined, "where:line".
std::string place_of(const std::string &name);

// What a text expands to, in the place "text", line 7.
std::string expanded(const std::string &text);

// What is reported while a text expands.
std::string fault_of(const std::string &text);

// What sf_putdict() writes.
std::string listing(int uflag = 0);

// Tests that start with an empty dictionary, in a process of their own or
// not.
class dictionary_test : public testing::Test {
  protected:
    void SetUp() override {
        empty_dictionary();
    }
};

}  // namespace support

#endif
