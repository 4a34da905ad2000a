// sfdict.cc: reading dictionary files.
//
// What messages say, and where terms were defined, comes from a stack of
// levels: one for the file, and one for each "#{ NAME" in it up to its "#}",
// with which a program that puts files together says where lines come from.
// Each level counts its own lines; the line that opens one counts there, the
// line that closes it counts in the level below.
#include "sfdict.h"

#include "chkalloc.h"
#include "errexit.h"
#include "getdylin.h"
#include "ident.h"
#include "private_sfdict.h"
#include "private_sfopen.h"
#include "private_sfterm.h"
#include "strutil.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace {

struct level {
    int line;
    level *below;
    const char *name;  // for ever: terms point at it
};

struct operation_word {
    const char *word;
    int operation;
};

constexpr operation_word operation_words[] = {
    {"append", tovan::sf_append},
    {"cset", tovan::sf_set_if_undefined},
    {"cnilset", tovan::sf_set_if_empty},
    {"set", tovan::sf_set},
    {"setifnil", tovan::sf_set_if_empty},
    {"unset", tovan::sf_unset},
    {"unsetifnil", tovan::sf_unset_if_empty},
};

// The levels, innermost first. sfdict() and "#{" push, sfdict() and "#}" pop.
constinit level *top = nullptr;

// Whether this call of sfdict() has reported an error.
constinit int had_error = 0;

// The logical line that is being read; kept for its room.
constinit dy text{};

void push_level(const char *name) {
    auto *pushed = static_cast<level *>(chkalloc(sizeof(level)));
    *pushed = {1, top, dycache(name, static_cast<int>(strlen(name)))};
    top = pushed;
}

void pop_level() {
    level *popped = top;
    top = popped->below;
    free(popped);
}

void report(const char *message) {
    if (progname != nullptr) fprintf(stderr, "%s: ", progname);
    if (top->line < 0)
        fputs("-s arg ", stderr);
    else
        fprintf(stderr, "%s:%d ", top->name, top->line);
    fprintf(stderr, "%s\n", message);
    had_error = 1;
}

// A line that starts with "#"; what follows that.
void take_comment(const char *rest) {
    if (*rest == '{') push_level(overwhite(rest + 1));
    if (*rest == '}' && top->below != nullptr) pop_level();
}

// Puts the next line at the end of the text.
//   result    false: there is none
bool join_next_line(FILE *file) {
    if (getdycline(file, &text, 1) == nullptr) return false;
    top->line = tovan::line_after(top->line);
    return true;
}

// Resolves backslashes, joins lines, cuts the comment off.
//   result    false: the file ended where a line was to be joined
bool clean_text(FILE *file) {
    char *to = text.buffer + strcspn(text.buffer, "\\#");
    const char *from = to;
    while (*from != '\0' && *from != '#') {
        if (*from == '\\' && from[1] == '\0') {
            auto kept = static_cast<int>(to - text.buffer);
            dytruncate(&text, kept);
            if (!join_next_line(file)) return false;
            from = to = text.buffer + kept;
            continue;
        }
        if (*from == '\\' && (from[1] == '\\' || from[1] == '#')) ++from;
        *to++ = *from++;
    }
    dytruncate(&text, static_cast<int>(to - text.buffer));
    dytrim(&text);
    return true;
}

// Cuts the first word off a text; empty when there is none.
char *take_word(char **rest) {
    char *word = *rest;
    char *end = nextwhite(word);
    if (*end != '\0') *end++ = '\0';
    *rest = overwhite(end);
    return word;
}

// The operation of a word; -1 when it is none.
int operation_of(const char *word) {
    for (const operation_word &known : operation_words) {
        if (*known.word == *word && strcmp(known.word, word) == 0)
            return known.operation;
    }
    return -1;
}

// What is wrong with a name; null when nothing is.
const char *fault_of(const char *name) {
    if (!tovan::starts_name(*name))
        return "1st character must be alphabetic or an underbar";
    if (*tovan::end_of_name(name) != '\0') return "illegal character in name";
    return nullptr;
}

void apply_text() {
    char *value = text.buffer;
    const char *name = take_word(&value);
    int operation = operation_of(name);
    if (operation < 0)
        operation = tovan::sf_set;
    else
        name = take_word(&value);
    if (const char *fault = fault_of(name)) return report(fault);
    sf_dictext(name, value, top->name, top->line, operation);
}

// Takes the line that has been read.
//   result    false: the file has ended inside
bool take_line(FILE *file) {
    char first = *text.buffer;
    if (first == '#') take_comment(text.buffer + 1);
    if (first == '\0' || first == '#') return true;
    if (!clean_text(file)) return false;
    apply_text();
    return true;
}

}  // namespace

// Deliberate: the error at the end of the file has no place, as if it came
// from an argument (test end_of_file_behind_a_backslash_is_reported_as_arg).
int sfdict(const char *path) {
    had_error = 0;
    FILE *file = sf_openfile(path);
    push_level(path);
    while (getdyline(file, &text, 1) != nullptr) {
        if (!take_line(file)) {
            top->line = -1;
            report("unexpected EOF after \\<newline>");
            break;
        }
        top->line = tovan::line_after(top->line);
    }
    tovan::close_input(file, path);
    pop_level();
    return had_error;
}

TOVAN_IDENT(sfdict, "8.4", "26/11/21")
