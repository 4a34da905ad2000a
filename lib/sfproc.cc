// sfproc.cc: references in a text and what stands for them.
//
// A reference is "@", a name, perhaps "%s", an operator, perhaps a text for
// it, and the closing "@":
//
//     lib@ARCH:x86@/@NAME%s=a\@b@
//        -----------  name ARCH, operator ":", argument "x86"
//                    -----------  quoted, name NAME, "=", argument "a@b"
//
// The text is walked once. What lies between references is found by the next
// "@" and appended in one run. A reference is read whole before anything is
// written for it; a wrong one is reported, its "@" is written, and the walk
// goes on right behind that, so that its characters come out as they are and
// the "@" that was to close it may start another one. Arguments are texts:
// references in them are not looked at, which is why there is no nesting.
#include "sfdict.h"

#include "ident.h"
#include "private_error.h"
#include "private_istype.h"
#include "private_sfproc.h"
#include "private_sfrefer.h"
#include "private_sfterm.h"

#include <stdio.h>
#include <string.h>

using tovan::sf_reference;
using tovan::sf_span;

constinit char sf_splitchar = '\\';
constinit unsigned char sf_uflag = 0;

namespace {

constexpr char split_indent[] = "\n\t\t";

// One text on its way.
struct expansion {
    dy *output;
    const char *end;
    const char *where;
    int line;
    bool is_sound;
};

sf_span span_of(const char *text) {
    return {text, text + strlen(text)};
}

sf_span value_span(const sf_reference *found) {
    const tovan::sf_term *term =
        tovan::find_term(found->name, found->name_length);
    if (term != nullptr)
        return {term->value.buffer, term->value.buffer + term->value.length};
    const char *undefined = tovan::text_of_undefined();
    return span_of(undefined != nullptr ? undefined : "");
}

bool is_empty(sf_span text) {
    return text.start == text.end;
}

bool is_equal(sf_span a, sf_span b) {
    size_t length = static_cast<size_t>(a.end - a.start);
    if (static_cast<size_t>(b.end - b.start) != length) return false;
    return memcmp(a.start, b.start, length) == 0;
}

// The result of a form that chooses one text.
sf_span chosen(const sf_reference *found, sf_span value) {
    bool is_set = !is_empty(value);
    switch (found->operation) {
        case ':':
            return is_set ? value : found->argument;
        case '+':
            return is_set ? found->argument : span_of("");
        case '-':
            return is_set ? span_of("") : found->argument;
        case '?':
            return span_of(is_set ? "1" : "0");
        case '=':
            return span_of(is_equal(value, found->argument) ? "1" : "0");
        default:
            return value;
    }
}

// "#i": an include line for the value or else for the argument.
void write_include(dy *output, sf_span file, sf_span otherwise) {
    if (is_empty(file)) {
        file = otherwise;
        while (!is_empty(file) &&
               tovan::in_class(file.end[-1], tovan::class_space))
            --file.end;
        if (is_empty(file)) return;
    }
    dystr(output, "\n#include\t<");
    dyspan(output, file.start, file.end);
    dyaddc(output, '>');
}

void write_hash_form(dy *output, const sf_reference *found, sf_span value) {
    switch (found->variant) {
        case 'd':
            return tovan::write_each(output, value, "\n#define\t", "\t1");
        case 'u':
            return tovan::write_each(output, value, "\n#undef\t", "");
        case 's':
            return tovan::write_each(output, value, "\nset\t", "\t1");
        case ':':
            return tovan::write_joined(output, value, ':');
        default:
            return write_include(output, value, found->argument);
    }
}

// "|", "\_" and "\:": the words of the value, or else of the argument, a line
// each.
void write_split_form(dy *output, const sf_reference *found, sf_span value) {
    char between[8];
    char *next = between;
    const char *separators = "  ";
    if (found->operation == '\\') {
        bool splits_paths = found->variant == ':';
        if (splits_paths) separators = " :";
        *next++ = splits_paths ? ':' : ' ';
        if (sf_splitchar != '\0') *next++ = sf_splitchar;
    }
    memcpy(next, split_indent, sizeof split_indent);
    tovan::write_split(output, is_empty(value) ? found->argument : value,
                       separators, span_of(between));
}

void write_result(dy *output, const sf_reference *found) {
    sf_span value = value_span(found);
    switch (found->operation) {
        case '#':
            return write_hash_form(output, found, value);
        case '|':
        case '\\':
            return write_split_form(output, found, value);
        default:
            break;
    }
    sf_span text = chosen(found, value);
    if (found->is_quoted) return tovan::write_quoted(output, text);
    dyspan(output, text.start, text.end);
}

// Deliberate: a whole value "@NotSet" says that the name is not defined, so
// at the end of a text it stays as it is; anywhere else NotSet is a name
// (test notset_is_special_only_at_the_end).
bool is_not_set_mark(const sf_reference *found, const char *text_end) {
    constexpr char mark[] = "NotSet";
    constexpr size_t length = sizeof mark - 1;
    return found->name_length == length && found->name + length == text_end &&
           memcmp(found->name, mark, length) == 0;
}

void report(expansion *each, const char *what, const char *name) {
    tovan::error("%s:%d: %s in '%s'", each->where, each->line, what, name);
    each->is_sound = false;
}

void trace(const expansion *each, const sf_reference *found) {
    printf("%s:%06d:%.*s\n", each->where, each->line,
           static_cast<int>(found->name_length), found->name);
}

// Replaces the reference whose name starts here.
//   result    where the text goes on
const char *replace_reference(expansion *each, const char *name) {
    const char *name_end = tovan::end_of_name(name);
    sf_reference found{};
    found.name = name;
    found.name_length = static_cast<size_t>(name_end - name);
    if (*name_end == '@' && (sf_uflag & tovan::trace_names) == 0) {
        // What most references are.
        sf_span value = value_span(&found);
        dyspan(each->output, value.start, value.end);
        return name_end + 1;
    }
    bool is_kept = is_not_set_mark(&found, each->end);
    if (!is_kept) {
        const char *what = tovan::read_reference(&found, name_end);
        is_kept = what != nullptr;
        if (is_kept) report(each, what, name);
    }
    if (is_kept) {
        dyaddc(each->output, '@');
        return name;
    }
    if ((sf_uflag & tovan::trace_names) != 0) trace(each, &found);
    write_result(each->output, &found);
    return found.after;
}

}  // namespace

bool tovan::substitute(sf_span text, const char *at_sign, dy *output,
                       const char *where, int line) {
    expansion each{output, text.end, where, line, true};
    const char *next = text.start;
    while (at_sign != nullptr) {
        if (starts_name(at_sign[1])) {
            dyspan(output, next, at_sign);
            next = replace_reference(&each, at_sign + 1);
        } else {
            dyspan(output, next, at_sign + 1);
            next = at_sign + (at_sign[1] == '@' ? 2 : 1);
        }
        at_sign = find_at_sign({next, text.end});
    }
    dyspan(output, next, text.end);
    return each.is_sound;
}

char *sf_proc(const char *text, dy *output, int reset, int *had_error,
              const char *where, int line) {
    if (reset != 0) dyreuse(output, 0);
    sf_span whole = span_of(text);
    bool is_sound = tovan::substitute(whole, tovan::find_at_sign(whole), output,
                                      where, line);
    if (had_error != nullptr) *had_error = is_sound ? 0 : 1;
    return output->buffer;
}

TOVAN_IDENT(sfproc, "8.4", "26/11/21")
