// traces.h: what programs can trace.
#ifndef TOVAN_TESTS_TRACES_H
#define TOVAN_TESTS_TRACES_H

#include <string>
#include <vector>

namespace support {

// The names of the trace packages that a program's file lists ("@(#)-D" in
// it), sorted; fails the test for one that does not follow the flag "all".
std::vector<std::string> listed_packages(const std::string &program);

// A command and what one package writes about it.
struct traced_run {
    std::string package;
    std::vector<std::string> words;
    std::string input;
    std::string trace;  // standard error, "#" for any one character
};

// Checks that each command writes its trace, with the package's flag as -V and
// in the environment, and no trace without; and that the packages of the rows
// are exactly those that the program lists.
void check_traces(const std::string &program,
                  const std::vector<traced_run> &rows);

}  // namespace support

#endif
