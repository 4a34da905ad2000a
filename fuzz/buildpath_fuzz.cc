// buildpath_fuzz.cc: search paths with variables, and files along them. The
// input is the variable V's value, a search path and a file's name, each
// ended by a NUL.
#include "fuzz.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/findfile.h>

namespace {

// The text up to the next NUL; the rest stays in the input.
std::string take_text(std::string *input) {
    size_t end = input->find('\0');
    std::string text = input->substr(0, end);
    input->erase(0, end == std::string::npos ? end : end + 1);
    return text;
}

// setenv() would keep every value that it ever saw.
void set_variable(const std::string &value) {
    static char variable[8192];
    snprintf(variable, sizeof variable, "V=%s", value.c_str());
    putenv(variable);
}

// Expansion leaves elements without separators or empty ones.
void check_expanded(const dy *output) {
    if (strlen(output->buffer) != static_cast<size_t>(output->length)) abort();
    if (strchr(output->buffer, ';') != nullptr) abort();
    if (strstr(output->buffer, "::") != nullptr) abort();
    if (output->buffer[0] == ':') abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static dy output;
    std::string input(reinterpret_cast<const char *>(data), size);
    set_variable(take_text(&input));
    std::string path = take_text(&input);
    std::string file = take_text(&input);
    bool expands = fuzz::survives([&] { buildpath(&output, path.c_str()); });
    if (!expands) return 0;
    check_expanded(&output);
    fuzz::survives([&] {
        for (int mode = -1; mode <= 2; ++mode)
            free(findfile(file.c_str(), path.c_str(), mode));
    });
    return 0;
}
