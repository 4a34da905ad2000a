// expansion.h: texts and what they expand to.
#ifndef TOVAN_TESTS_EXPANSION_H
#define TOVAN_TESTS_EXPANSION_H

#include "support/variables.h"

#include <functional>
#include <string>
#include <vector>

namespace support {

// What lvexpand() appends to an empty string.
std::string expansion_of(const std::string &text, const char *file = "f",
                         int line = 0);

// What standard error shows of a wrong text, without a line.
std::string complaint(const std::string &message);

struct expansion_row {
    std::string text;
    std::string expected;
};

void expect_expansions(const std::vector<expansion_row> &rows);

// Every text ends the process with status 255 and its message.
void expect_complaints(const std::vector<expansion_row> &rows);

// Runs expectations in a child, whose caches nobody sees.
void expect_in_fresh_process(const std::function<void()> &body);

}  // namespace support

#endif
