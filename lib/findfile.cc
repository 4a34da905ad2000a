// findfile.cc: search paths and files along them.
#include "findfile.h"

#include "errexit.h"
#include "ident.h"
#include "private_findfile.h"
#include "private_io.h"
#include "strutil.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr unsigned char separator_classes = 0x04 | 0x08;  // ":" and ";"

constexpr char null_path_text[] =
    "logic error - buildpath() called with NULL path";

// What a variable's name and default need, as deflvar() asks for it.
constexpr int variable_room = 100;

// Most expanded paths and file names are shorter; longer ones grow.
constexpr int path_room = 128;

struct element {
    const char *start;
    const char *end;
};

bool is_separator(char character) {
    return (p_table[static_cast<unsigned char>(character)] &
            separator_classes) != 0;
}

// Takes the next element that is not empty off the front of [*rest, end);
// false when there is none.
bool next_element(const char **rest, const char *end, element *found) {
    const char *at = *rest;
    while (at < end && is_separator(*at))
        ++at;
    found->start = at;
    while (at < end && !is_separator(*at))
        ++at;
    found->end = *rest = at;
    return found->start < at;
}

void add_element(dy *output, const element *added) {
    if (output->length > 0) dyaddc(output, ':');
    dyspan(output, added->start, added->end);
}

// Deliberate: the NUL at the text's end is written too, and no newline (test
// buildpath_without_elements_is_a_logic_error).
[[noreturn]] void fail_without_path() {
    tovan::write_full(2, null_path_text, sizeof null_path_text);
    lclexit(-1);
}

// "directory/file", or the directory alone.
void form_candidate(dy *candidate, const element *directory, const char *file) {
    dytruncate(candidate, 0);
    dyspan(candidate, directory->start, directory->end);
    if (file == nullptr) return;
    dyaddslash(candidate);
    dystr(candidate, file);
}

// Leaves the first candidate that exists, else the last one.
bool find_candidate(dy *candidate, const dy *directories, const char *file) {
    const char *rest = directories->buffer;
    const char *end = rest + directories->length;
    element directory;
    while (next_element(&rest, end, &directory)) {
        form_candidate(candidate, &directory, file);
        if (access(candidate->buffer, F_OK) == 0) return true;
    }
    return false;
}

void form_fallback(dy *candidate, const dy *directories, const char *file) {
    const char *rest = directories->buffer;
    element directory;
    next_element(&rest, rest + directories->length, &directory);
    dytruncate(candidate, 0);
    dyspan(candidate, directory.start, directory.end);
    // Deliberate: a directory that ends with "/" gets a second one (test
    // findfile_fallback_always_adds_a_slash).
    dyaddc(candidate, '/');
    dystr(candidate, file);
}

}  // namespace

void tovan::spread(const char *start, const char *end, int use_defaults,
                   dy *output) {
    const char *suffix = start;
    while (suffix < end && *suffix != '/')
        ++suffix;
    dy *name = dyalloc();
    dyspan(name, start, suffix);
    char buffer[variable_room];
    const char *value = deflvar(name->buffer, use_defaults, buffer);
    dyfree(name);
    if (value == nullptr) return;
    const char *value_end = value + strlen(value);
    element piece;
    while (next_element(&value, value_end, &piece)) {
        add_element(output, &piece);
        dyspan(output, suffix, end);
    }
}

char *buildpath(dy *output, const char *path) {
    if (path == nullptr) fail_without_path();
    dyreuse(output, path_room);
    const char *end = path + strlen(path);
    element part;
    while (next_element(&path, end, &part)) {
        bool defaults = *part.start == '%';
        if (defaults || *part.start == '$') {
            tovan::spread(part.start + 1, part.end, defaults, output);
        } else {
            add_element(output, &part);
        }
    }
    if (output->length == 0) fail_without_path();
    return output->buffer;
}

char *findfile(const char *file, const char *path, int mode) {
    if (file != nullptr && *file == '\0') file = nullptr;
    dy *directories = dyalloc();
    buildpath(directories, path);
    dy candidate;
    dynew(&candidate, path_room);
    bool found = mode != -1 && find_candidate(&candidate, directories, file);
    bool falls_back = !found && (mode == 1 || mode == -1);
    if (falls_back) form_fallback(&candidate, directories, file);
    dyfree(directories);
    if (found || mode != 0) return candidate.buffer;
    free(candidate.buffer);
    return nullptr;
}

TOVAN_IDENT(findfile, "8.4", "26/11/21")
