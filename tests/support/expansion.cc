// expansion.cc: texts and what they expand to.
#include "support/expansion.h"

#include "support/child.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/lvexpand.h>

namespace support {

std::string expansion_of(const std::string &text, const char *file, int line) {
    dy output;
    dynew(&output, 0);
    lvexpand(text.c_str(), &output, file, line);
    std::string result(output.buffer, static_cast<size_t>(output.length));
    EXPECT_EQ(output.buffer[output.length], '\0') << text;
    free(output.buffer);
    return result;
}

std::string complaint(const std::string &message) {
    return "test:f: " + message +
           "\ntest: aborted due to above error in kivs expansion\n";
}

void expect_expansions(const std::vector<expansion_row> &rows) {
    for (const expansion_row &row : rows) {
        EXPECT_EQ(expansion_of(row.text), row.expected) << row.text;
    }
}

void expect_complaints(const std::vector<expansion_row> &rows) {
    for (const expansion_row &row : rows) {
        outcome ended = in_child([&] { expansion_of(row.text); });
        EXPECT_EQ(ended.exit_status, 255) << row.text;
        EXPECT_EQ(ended.err, complaint(row.expected)) << row.text;
    }
}

void expect_in_fresh_process(const std::function<void()> &body) {
    outcome ended = in_child(body);
    EXPECT_EQ(ended.exit_status, 0);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "");
}

}  // namespace support
