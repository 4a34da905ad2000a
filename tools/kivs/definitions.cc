// definitions.cc: definitions of variables, as they are read.
#include "kivs/definitions.h"

#include "shared/trace.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/chkalloc.h>
#include <tovan/dystr.h>
#include <tovan/errexit.h>
#include <tovan/getdylin.h>
#include <tovan/istype.h>
#include <tovan/strutil.h>

using kivs::definitions;
using tools::heap_variable;

namespace {

TOOL_TRACE(files, "how much each file of definitions holds")
TOOL_TRACE(define, "each definition, and those that are replaced")

// A file and the logical line that was read last.
struct line_reader {
    FILE *stream;
    const char *file;
    int line;  // the last physical one
    dy text;
};

[[noreturn]] void refuse(const line_reader *reader, const char *reason) {
    errexit("%s:%d: %s", reader->file, reader->line, reason);
}

void take_line(line_reader *reader) {
    ++reader->line;
    if (strlen(reader->text.buffer) != static_cast<size_t>(reader->text.length))
        refuse(reader, "NUL byte");
}

bool is_comment(const line_reader *reader) {
    return reader->text.buffer[0] == '#';
}

bool is_continued(const line_reader *reader) {
    const dy *text = &reader->text;
    return text->length > 0 && text->buffer[text->length - 1] == '\\';
}

// Reads a line and those that continue it, without white space at both ends.
bool next_line(line_reader *reader) {
    if (getdyline(reader->stream, &reader->text, 1) == nullptr) return false;
    take_line(reader);
    while (!is_comment(reader) && is_continued(reader)) {
        dytruncate(&reader->text, -1);
        dytrim(&reader->text);
        dyaddc(&reader->text, ' ');
        if (getdycline(reader->stream, &reader->text, 1) == nullptr)
            refuse(reader, "last line ends with a backslash");
        take_line(reader);
    }
    dytrim(&reader->text);
    return true;
}

bool starts_name(char c) {
    constexpr unsigned letters = 0x0001 | 0x0002 | 0x0080;
    return (_istype[static_cast<unsigned char>(c)] & letters) != 0;
}

bool continues_name(char c) {
    constexpr unsigned digits = 0x0004;
    return starts_name(c) ||
           (_istype[static_cast<unsigned char>(c)] & digits) != 0;
}

// The text behind a leading word "export"; a variable may have that name.
char *without_export(char *text, unsigned char *flags) {
    constexpr size_t n = sizeof "export" - 1;
    if (strncmp(text, "export", n) != 0) return text;
    if (text[n] != ' ' && text[n] != '\t') return text;
    char *rest = overwhite(text + n);
    if (!starts_name(*rest)) return text;
    *flags = tools::exported;
    return rest;
}

char *end_of_name(const line_reader *reader, char *name) {
    if (!starts_name(*name)) refuse(reader, "no name");
    char *end = name;
    while (continues_name(*end))
        ++end;
    if (*end != '[') return end;
    end = closing_bracket(end + 1, '[', ']');
    if (*end == '\0') refuse(reader, "no closing ]");
    return end + 1;
}

void read_definition(line_reader *reader, definitions *all) {
    unsigned char flags = 0;
    char *text = overwhite(reader->text.buffer);
    char *name = without_export(text, &flags);
    char *end = end_of_name(reader, name);
    char *equals = overwhite(end);
    if (*equals != '=') refuse(reader, "no `=' behind the name");
    *end = '\0';
    const char *value = overwhite(equals + 1);
    heap_variable variable = {name, value, flags};
    const char *refusal = tools::heap_refusal(&variable);
    if (refusal != nullptr) refuse(reader, refusal);
    kivs::define(all, name, value, flags);
}

uint32_t bytes_read(FILE *stream) {
    off_t position = ftello(stream);
    return position > 0 ? static_cast<uint32_t>(position) : 0;  // 0: no file
}

// Earlier definitions of a name before later ones.
int compare_variables(const void *a, const void *b) {
    auto *first = *static_cast<const heap_variable *const *>(a);
    auto *second = *static_cast<const heap_variable *const *>(b);
    int order = strcmp(first->name, second->name);
    if (order != 0) return order;
    return first < second ? -1 : first > second;
}

// The variables in the order of their names.
heap_variable **sorted(heap_variable *variables, size_t count) {
    auto **order = static_cast<heap_variable **>(
        chkalloc((count + 1) * sizeof(heap_variable *)));
    for (size_t i = 0; i < count; ++i)
        order[i] = variables + i;
    qsort(order, count, sizeof *order, compare_variables);
    return order;
}

}  // namespace

void kivs::define(definitions *all, const char *name, const char *value,
                  unsigned char flags) {
    if (all->variables.element_size == 0)
        dydnew(&all->variables, 64, sizeof(heap_variable));
    heap_variable variable = {dycache(name, -1), dycache(value, -1), flags};
    dydadd(&all->variables, &variable);
    if (ddt_trace(&trace_define, 1, 1)) eprintf("%s = %s\n", name, value);
}

void kivs::read_definitions(definitions *all, const char *file) {
    line_reader reader{};
    reader.file = file;
    reader.stream = static_cast<FILE *>(ferrcheck(fopen(file, "re"), file));
    while (next_line(&reader)) {
        const char *text = overwhite(reader.text.buffer);
        if (*text != '\0' && *text != '#') read_definition(&reader, all);
    }
    if (ferror(reader.stream) != 0) errcheck(-1, file);
    all->bytes += bytes_read(reader.stream);
    all->lines += static_cast<uint32_t>(reader.line);
    if (ddt_trace(&trace_files, 1, 1))
        eprintf("%s: %d lines\n", file, reader.line);
    fclose(reader.stream);
    free(reader.text.buffer);
}

void kivs::drop_replaced(definitions *all) {
    auto *variables = static_cast<heap_variable *>(all->variables.data);
    auto count = static_cast<size_t>(all->variables.count);
    heap_variable **order = sorted(variables, count);
    for (size_t i = 1; i < count; ++i) {
        heap_variable *earlier = order[i - 1];
        if (strcmp(earlier->name, order[i]->name) != 0) continue;
        if (ddt_trace(&trace_define, 1, 1))
            eprintf("%s = %s is replaced\n", earlier->name, earlier->value);
        earlier->value = nullptr;
    }
    free(order);
    int kept = 0;
    for (size_t i = 0; i < count; ++i) {
        if (variables[i].value != nullptr) variables[kept++] = variables[i];
    }
    all->variables.count = kept;
}

tools::heap_contents kivs::contents_of(const definitions *all) {
    return {static_cast<const heap_variable *>(all->variables.data),
            static_cast<size_t>(all->variables.count), all->bytes, all->lines};
}
