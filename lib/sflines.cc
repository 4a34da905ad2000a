// sflines.cc: lines of the file that is being fixed, and what they are.
//
// Most lines hold no "@": they are found out by one search and are written
// from where they were read to. Standard input comes through the stream that
// the rest of the program reads it from; other files come in blocks.
#include "sfixfile.h"

#include "dystr.h"
#include "errexit.h"
#include "getdylin.h"
#include "ident.h"
#include "private_error.h"
#include "private_istype.h"
#include "private_sflines.h"
#include "private_sfopen.h"
#include "private_sfproc.h"
#include "private_sfwindow.h"
#include "private_strutil.h"
#include "sfdict.h"

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

using tovan::sf_line;
using tovan::sf_span;
using tovan::sf_text;
using tovan::sf_window;

constinit const char *sfixfile_file = nullptr;
constinit int sfixfile_lc = 0;

namespace {

constexpr char end_mark[] = "@$EOF";
constexpr int status_structure = 2;  // beside bit 0, a wrong reference

// The file in work. Set up by open_fixed(); the strings are kept for their
// room.
struct fixed_file {
    FILE *stream;
    int check;
    int status;
    bool has_ended;
    sf_text line;  // the one read last
    sf_window window;
    dy stdin_line;
    dy expansion;
};
constinit fixed_file file{};

// The line type that a character behind a leading "@" makes.
sf_line type_of(char character) {
    switch (character) {
        case '{':
            return tovan::line_case;
        case '|':
            return tovan::line_label;
        case '}':
            return tovan::line_esac;
        case '!':
            return tovan::line_error;
        case '#':
            return tovan::line_comment;
        case '-':
            return tovan::line_flag;
        default:
            return tovan::line_text;
    }
}

const char *over_blanks(const char *next) {
    while (tovan::in_class(*next, tovan::class_blank | tovan::class_tab))
        ++next;
    return next;
}

// Expands the line from `start` on; `at_sign` is the first one there, or null.
void expand_from(const char *start, const char *at_sign) {
    dyreuse(&file.expansion, 0);
    sf_span text{start, file.line.end};
    if (tovan::substitute(text, at_sign, &file.expansion, sfixfile_file,
                          sfixfile_lc))
        return;
    file.status |= 1;
    if (file.check == 0) return;
    if (progname != nullptr) fprintf(stderr, "%s: ", progname);
    fprintf(stderr, "%s:%d: possible syntax error\n", sfixfile_file,
            sfixfile_lc);
}

void expand_operand(const char *start) {
    start = over_blanks(start);
    expand_from(start, tovan::find_at_sign({start, file.line.end}));
    tovan::trim(file.expansion.buffer);
    dytruncate(&file.expansion,
               static_cast<int>(strlen(file.expansion.buffer)));
}

bool is_end_mark() {
    constexpr size_t length = sizeof end_mark - 1;
    return file.line.at_sign == file.line.start &&
           file.line.end == file.line.start + length &&
           memcmp(file.line.start, end_mark, length) == 0;
}

bool read_stdin_line() {
    char *start = getdyline(file.stream, &file.stdin_line, 0);
    if (start == nullptr) return false;
    char *end = start + file.stdin_line.length;
    file.line = {start, end, tovan::find_at_sign({start, end})};
    return true;
}

bool read_file_line() {
    if (next_line(&file.window, &file.line)) return true;
    if (file.window.has_failed) errexit("%s: %s", sfixfile_file, syserr());
    return false;
}

// Chosen: what ends a file ends it for good: nothing is read behind an end
// mark, whoever asks.
bool fetch_line() {
    if (file.has_ended) return false;
    bool is_there = file.stream == stdin ? read_stdin_line() : read_file_line();
    file.has_ended = !is_there || is_end_mark();
    return !file.has_ended;
}

}  // namespace

void tovan::open_fixed(const char *path, int check) {
    file.stream = sf_openfile(path);
    open_window(&file.window, fileno(file.stream));
    file.check = check;
    file.status = 0;
    file.has_ended = false;
    sfixfile_file = path;
    sfixfile_lc = 0;
}

sf_line tovan::read_line() {
    if (!fetch_line()) return line_end;
    sfixfile_lc = tovan::line_after(sfixfile_lc);
    const char *sign = file.line.at_sign;
    if (sign == nullptr || over_blanks(file.line.start) != sign)
        return line_text;
    sf_line type = type_of(sign[1]);
    if (type != line_text) expand_operand(sign + 2);
    return type;
}

dy *tovan::line_operand() {
    return &file.expansion;
}

tovan::sf_output tovan::expand_line(int64_t tabs) {
    sf_text line = file.line;
    for (; tabs > 0 && *line.start == '\t'; --tabs)
        ++line.start;
    if (line.at_sign == nullptr) {
        *line.end = '\n';
        return {line.start, static_cast<int>(line.end - line.start) + 1};
    }
    expand_from(line.start, line.at_sign);
    dyaddc(&file.expansion, '\n');
    return {file.expansion.buffer, file.expansion.length};
}

void tovan::report_structure(const char *format, ...) {
    if (progname != nullptr) fprintf(stderr, "%s: ", progname);
    va_list arguments;
    va_start(arguments, format);
    verror(format, arguments, "\n");
    va_end(arguments);
    if (sf_uflag == 0) lclexit(-1);
    file.status = status_structure;
}

void tovan::close_fixed() {
    close_input(file.stream, sfixfile_file);
}

int tovan::fixed_status() {
    return file.status;
}

TOVAN_IDENT(sflines, "8.4", "26/11/21")
