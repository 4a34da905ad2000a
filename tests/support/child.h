// child.h: code that ends the process, and what it leaves behind.
#ifndef TOVAN_TESTS_CHILD_H
#define TOVAN_TESTS_CHILD_H

#include <functional>
#include <string>
#include <vector>

namespace support {

// How a child ended and what it wrote.
struct outcome {
    int exit_status = -1;  // 0 to 255, -1 when a signal ended it
    int signal = 0;        // the signal that ended it, 0 when none did
    std::string out;       // standard output
    std::string err;       // standard error
};

// Runs `body` in a forked child with both outputs captured and standard input
// fed from `input`. A body that returns ends the child with status 0.
outcome in_child(const std::function<void()> &body,
                 const std::string &input = "");

// Runs a program; words[0] is looked up along PATH.
outcome run_program(const std::vector<std::string> &words,
                    const std::string &input = "");

// What `body` writes to standard output (stdio and raw writes), in this
// process.
std::string stdout_of(const std::function<void()> &body);

// The same for standard error.
std::string stderr_of(const std::function<void()> &body);

}  // namespace support

// `statement` ends the process with `status` and writes exactly `text` to
// standard error.
#define EXPECT_FATAL(statement, status, text)                            \
    do {                                                                 \
        support::outcome fatal_ = support::in_child([&] { statement; }); \
        EXPECT_EQ(fatal_.exit_status, status) << #statement;             \
        EXPECT_EQ(fatal_.err, text) << #statement;                       \
    } while (false)

#endif
