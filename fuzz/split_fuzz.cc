// split_fuzz.cc: command lines, with nothing behind them that runs.
#include "fuzz.h"

#include <stdlib.h>
#include <string.h>
#include <tovan/errexit.h>
#include <tovan/execstr.h>
#include <string>
#include <vector>

namespace {

// The words of the last command.
std::vector<std::string> command;

void expect(bool holds) {
    if (!holds) abort();
}

// The words as anybody would quote them to be safe.
std::string quoted(const std::vector<std::string> &words) {
    std::string line;
    for (const std::string &word : words) {
        line += "'";
        for (char c : word)
            line += c == '\'' ? "'\\''" : std::string(1, c);
        line += "' ";
    }
    return line;
}

bool went_to_the_shell(const std::string &line) {
    size_t start = strspn(line.c_str(), " \t\n");
    return command.size() == 3 && command[0] == "the shell" &&
           command[1] == "-c" && command[2] == line.substr(start) + "\n\n";
}

void run(const std::string &line) {
    command.clear();
    expect(execstr(0, 1, 2, 1, 0, line.c_str()) == 0);
}

}  // namespace

extern "C" int forkcmmd(int, int, int, char **argv) {
    argv[-1] = argv[0];
    for (; *argv != nullptr; argv++)
        command.push_back(*argv);
    return 0;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***);
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    setenv("_T_sh", "the shell", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string line(reinterpret_cast<const char *>(data), size);
    line.resize(strlen(line.c_str()));
    run(line);
    if (went_to_the_shell(line)) return 0;
    // Quoted, the same words come out again, whatever they hold.
    std::vector<std::string> words = command;
    if (!words.empty() && words[0] == "exec") return 0;
    run(quoted(words));
    expect(command == words);
    return 0;
}
