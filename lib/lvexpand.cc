// lvexpand.cc: the expander.
//
// Texts nest: the text of a call and the subscript of a variable are texts
// themselves, each expanded into a string of its own before the call runs or
// the variable is looked up. A text that is being read is a `stretch`; the
// stretches around it wait on a stack in the heap, so that no depth of nesting
// needs stack of the process.
//
//     @(findfile @Name.@Suffix[@Kind])      waiting: the whole text
//       '-------- stretch 1 --------'       waiting: the whole text, 1
//                             '-2-'         "Suffix[" is already in its string
//
// Where a stretch ends is known before anything in it runs (lvbracks.cc): a
// missing ")" or "]" is reported first.
//
// The text is read, never written.
#include "lvexpand.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "dystr.h"
#include "ident.h"
#include "istype.h"
#include "private_istype.h"
#include "private_lvexpand.h"
#include "private_lvget.h"
#include "strutil.h"

#include <stdlib.h>
#include <string.h>

using tovan::class_digit;
using tovan::class_letter;
using tovan::class_line_space;
using tovan::class_underscore;
using tovan::in_class;

namespace {

constexpr int class_name_start = class_letter | class_underscore;
constexpr int class_name = class_name_start | class_digit;

enum class text_kind { whole, call, subscript };

// A text that is being read, and where its expansion goes.
struct stretch {
    const char *next;
    const char *end;
    dy *output;
    int start;  // length of the output when the stretch began
    text_kind kind;
};

struct expansion {
    stretch now;
    dyd waiting;  // the stretches around `now`, outermost first
    tovan::bracket_map brackets;
};

stretch *stretches(expansion *e) {
    return static_cast<stretch *>(e->waiting.data);
}

// The closing bracket of the construct whose inside begins here; null when
// the stretch ends first.
const char *closing(expansion *e, const char *inside, char close) {
    if (e->waiting.count == 0) {
        return tovan::map_brackets(&e->brackets, inside, close);
    }
    const char *found = tovan::mapped_close(&e->brackets, inside);
    return found != nullptr && found < e->now.end ? found : nullptr;
}

// Goes on with the text inside brackets, and behind them later.
void enter(expansion *e, const char *inside, const char *close, dy *output,
           text_kind kind) {
    e->now.next = close + 1;
    if (e->waiting.capacity == 0) dydreuse(&e->waiting, sizeof(stretch));
    dydadd(&e->waiting, &e->now);
    e->now = {inside, close, output, output->length, kind};
}

void enter_call(expansion *e, const char *inside) {
    const char *close = closing(e, inside, ')');
    if (close == nullptr) lverror("unbalanced ')'");
    enter(e, inside, close, dyalloc(), text_kind::call);
}

// The name that is looked up begins with what lies before the subscript.
void enter_subscript(expansion *e, const char *name, const char *inside) {
    const char *close = closing(e, inside, ']');
    if (close == nullptr) lverror("no closing ]");
    dy *full_name = dyalloc();
    dyspan(full_name, name, inside);
    enter(e, inside, close, full_name, text_kind::subscript);
}

void run_call(char *text, dy *output) {
    char *call = overwhite(text);
    if (runfunc(call, output) == 0) return;
    *nextwhite(call) = '\0';
    lverror("unsupported kivs function `%s'", call);
}

void add_value(const char *name, size_t length, dy *output) {
    const char *value = tovan::variable_value(name, length);
    if (value != nullptr) dystr(output, value);
}

void trim_end(const stretch *done) {
    dy *output = done->output;
    int length = output->length;
    while (length > done->start &&
           in_class(output->buffer[length - 1], class_line_space)) {
        length--;
    }
    if (length < output->length) dytruncate(output, length);
}

// Ends the stretch that was read to its end.
//   result    false when nothing waits for it
bool leave(expansion *e) {
    stretch done = e->now;
    trim_end(&done);
    if (done.kind == text_kind::whole) return false;
    e->now = stretches(e)[--e->waiting.count];
    if (done.kind == text_kind::call) {
        run_call(done.output->buffer, e->now.output);
    } else {
        const dy *name = done.output;
        dyaddc(done.output, ']');
        add_value(name->buffer, static_cast<size_t>(name->length),
                  e->now.output);
    }
    dyfree(done.output);
    return true;
}

// The marker of an unset value survives every expansion.
bool is_marker(const char *name, size_t length) {
    constexpr char marker[] = "NotSet";
    return length == sizeof marker - 1 && memcmp(name, marker, length) == 0;
}

void add_variable(const char *name, const char *end, dy *output) {
    auto length = static_cast<size_t>(end - name);
    if (is_marker(name, length))
        dystr(output, "@NotSet");
    else
        add_value(name, length, output);
}

const char *end_of_name(const stretch *now, const char *name) {
    const char *end = name + 1;
    while (end < now->end && in_class(*end, class_name))
        end++;
    return end;
}

// Reads the reference at an "@", unless it opens a bracket.
//   result    false: it does, and nothing was read
bool read_simple_reference(stretch *now) {
    const char *behind = now->next + 1;
    if (behind == now->end) {
        now->next = behind;
        dyaddc(now->output, '@');
        return true;
    }
    if (*behind == '(') return false;
    if (!in_class(*behind, class_name_start)) {
        now->next = behind + 1;
        if (*behind != '0') dyaddc(now->output, *behind);
        return true;
    }
    const char *end = end_of_name(now, behind);
    if (end < now->end && *end == '[') return false;
    now->next = end;
    add_variable(behind, end, now->output);
    return true;
}

// Reads the bracket that the reference at an "@" opens.
void read_bracket(expansion *e) {
    const char *behind = e->now.next + 1;
    if (*behind == '(')
        enter_call(e, behind + 1);
    else
        enter_subscript(e, behind, end_of_name(&e->now, behind) + 1);
}

void add_plain(const stretch *now, const char *end) {
    const char *from = now->next;
    if (now->output->length == now->start) {
        while (from < end && in_class(*from, class_line_space))
            from++;
    }
    dyspan(now->output, from, end);
}

// Reads a stretch up to the next bracket that opens.
//   result    false: there is none
bool read_to_bracket(stretch *now) {
    while (now->next < now->end) {
        auto length = static_cast<size_t>(now->end - now->next);
        auto *at = static_cast<const char *>(memchr(now->next, '@', length));
        const char *plain_end = at != nullptr ? at : now->end;
        if (now->next < plain_end) add_plain(now, plain_end);
        now->next = plain_end;
        if (at != nullptr && !read_simple_reference(now)) return true;
    }
    return false;
}

// Does one step.
//   result    false when the outermost stretch has ended
bool advance(expansion *e) {
    if (!read_to_bracket(&e->now)) return leave(e);
    read_bracket(e);
    return true;
}

void release(const expansion *e) {
    free(e->waiting.data);
    free(e->brackets.list.data);
}

// Expands a text from its first bracket on.
[[gnu::noinline]] void expand_brackets(const stretch *whole) {
    expansion e{};
    e.now = *whole;
    read_bracket(&e);
    while (advance(&e)) {
    }
    release(&e);
}

// Appends the expansion of a text. Most texts open no bracket.
char *expand(const char *text, dy *output) {
    stretch whole = {text, text + strlen(text), output, output->length,
                     text_kind::whole};
    if (read_to_bracket(&whole))
        expand_brackets(&whole);
    else
        trim_end(&whole);
    return output->buffer;
}

[[gnu::noinline]] char *expand_copy(const char *text, dy *output) {
    char *copy = savestr(text);
    expand(copy, output);
    free(copy);
    return output->buffer;
}

}  // namespace

char *lvexpand(const char *text, dy *output, const char *file, int line) {
    curfile = file;
    curln = line;
    // Chosen: a copy is made only of a text that the appending would move;
    // nothing else that runs can change the caller's text.
    bool is_own =
        text >= output->buffer && text < output->buffer + output->capacity;
    return is_own ? expand_copy(text, output) : expand(text, output);
}

char *varexpand(char *text, dy *output) {
    return expand(text, output);
}

char *tovan::function(char *text, dy *output) {
    expansion e{};
    e.now.output = output;
    enter_call(&e, text);
    while (e.waiting.count > 0)
        advance(&e);
    release(&e);
    return const_cast<char *>(e.now.next);
}

TOVAN_IDENT(lvexpand, "8.4", "26/11/21")
