// script.h: small programs of a test, written in the shell's language.
#ifndef TOVAN_TESTS_SCRIPT_H
#define TOVAN_TESTS_SCRIPT_H

#include "support/tree.h"

#include <sys/stat.h>
#include <filesystem>
#include <string>

namespace support {

// The absolute path of the test's folder.
inline std::string current_folder() {
    return std::filesystem::current_path();
}

// An executable file with this content.
inline void write_program(const std::string &path, const std::string &content) {
    write_file(path, content);
    chmod(path.c_str(), 0755);
}

// A program that runs these commands.
inline void write_script(const std::string &path, const std::string &commands) {
    write_program(path, "#!/bin/sh\n" + commands + "\n");
}

// A program that writes its name and its arguments to standard output, each
// in angle brackets.
inline void write_argument_printer(const std::string &path) {
    write_script(path, "printf '<%s>' \"${0##*/}\" \"$@\"");
}

}  // namespace support

#endif
