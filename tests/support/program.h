// program.h: programs that a test provides, and programs that it runs.
#ifndef TOVAN_TESTS_PROGRAM_H
#define TOVAN_TESTS_PROGRAM_H

#include <string>
#include <vector>

namespace support {

// The absolute path of the test's folder.
std::string current_folder();

// An executable file with this content.
void write_program(const std::string &path, const std::string &content);

// A program that runs these commands of the shell.
void write_script(const std::string &path, const std::string &commands);

// A program that writes its name and its arguments to standard output, each
// in angle brackets.
void write_argument_printer(const std::string &path);

// Puts a script under that name into bin/, and bin/ before the other
// directories of PATH.
void install_program(const std::string &name, const std::string &commands);

// What a run of a program is expected to give.
struct expected_run {
    std::string out;
    std::string err;
    int status;
};

// Runs a program: words[0] is looked up along PATH.
void check_run(const std::vector<std::string> &words, const std::string &input,
               const expected_run &expected);

}  // namespace support

#endif
