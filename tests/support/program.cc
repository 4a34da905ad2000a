// program.cc: programs that a test provides, and programs that it runs.
#include "support/program.h"

#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <filesystem>

namespace support {

std::string current_folder() {
    return std::filesystem::current_path();
}

void write_program(const std::string &path, const std::string &content) {
    write_file(path, content);
    chmod(path.c_str(), 0755);
}

void write_script(const std::string &path, const std::string &commands) {
    write_program(path, "#!/bin/sh\n" + commands + "\n");
}

void write_argument_printer(const std::string &path) {
    write_script(path, "printf '<%s>' \"${0##*/}\" \"$@\"");
}

void install_program(const std::string &name, const std::string &commands) {
    write_script("bin/" + name, commands);
    setenv("PATH", (current_folder() + "/bin:/usr/bin:/bin").c_str(), 1);
}

void check_run(const std::vector<std::string> &words, const std::string &input,
               const expected_run &expected) {
    outcome end = run_program(words, input);
    std::string command;
    for (const std::string &word : words)
        command += word + " ";
    EXPECT_EQ(end.out, expected.out) << command;
    EXPECT_EQ(end.err, expected.err) << command;
    EXPECT_EQ(end.exit_status, expected.status) << command;
}

}  // namespace support
