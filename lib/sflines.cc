// sflines.cc: lines of the file that is being fixed, and what they are.
//
// Most lines hold no "@": they are found out by one search and are written
// from where they were read to.
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
#include "private_strutil.h"
#include "sfdict.h"

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

using tovan::sf_line;
using tovan::sf_span;

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
    bool has_at_sign;  // the line read last
    dy line;
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

const char *end_of_line() {
    return file.line.buffer + file.line.length;
}

// Expands the line from `start` on.
void expand_from(const char *start) {
    dyreuse(&file.expansion, 0);
    sf_span text{start, end_of_line()};
    if (tovan::substitute(text, &file.expansion, sfixfile_file, sfixfile_lc))
        return;
    file.status |= 1;
    if (file.check == 0) return;
    if (progname != nullptr) fprintf(stderr, "%s: ", progname);
    fprintf(stderr, "%s:%d: possible syntax error\n", sfixfile_file,
            sfixfile_lc);
}

void expand_operand(const char *start) {
    expand_from(over_blanks(start));
    tovan::trim(file.expansion.buffer);
    dytruncate(&file.expansion,
               static_cast<int>(strlen(file.expansion.buffer)));
}

bool is_end_mark() {
    return file.line.length == sizeof end_mark - 1 &&
           memcmp(file.line.buffer, end_mark, sizeof end_mark) == 0;
}

// Chosen: what ends a file ends it for good: nothing is read behind an end
// mark, whoever asks.
bool fetch_line() {
    if (file.has_ended) return false;
    file.has_ended =
        getdyline(file.stream, &file.line, 0) == nullptr || is_end_mark();
    return !file.has_ended;
}

}  // namespace

void tovan::open_fixed(const char *path, int check) {
    file.stream = sf_openfile(path);
    file.check = check;
    file.status = 0;
    file.has_ended = false;
    sfixfile_file = path;
    sfixfile_lc = 0;
}

sf_line tovan::read_line() {
    if (!fetch_line()) return line_end;
    sfixfile_lc = tovan::line_after(sfixfile_lc);
    const char *line = file.line.buffer;
    const void *at = memchr(line, '@', static_cast<size_t>(file.line.length));
    file.has_at_sign = at != nullptr;
    if (at == nullptr || over_blanks(line) != at) return line_text;
    const char *sign = static_cast<const char *>(at);
    sf_line type = type_of(sign[1]);
    if (type != line_text) expand_operand(sign + 2);
    return type;
}

dy *tovan::line_operand() {
    return &file.expansion;
}

tovan::sf_output tovan::expand_line(int64_t tabs) {
    char *start = file.line.buffer;
    for (; tabs > 0 && *start == '\t'; --tabs)
        ++start;
    auto skipped = static_cast<int>(start - file.line.buffer);
    if (!file.has_at_sign) {
        dyaddc(&file.line, '\n');
        return {file.line.buffer + skipped, file.line.length - skipped};
    }
    expand_from(start);
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
