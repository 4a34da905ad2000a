// split.cc: a command line to words.
//
// Most lines are nothing but words, and starting a shell for them costs more
// than the command. This scanner splits those itself, and gives up at the
// first sign that only a shell can do what the line asks: an expansion, a
// pattern, a redirection, a second command, an assignment in front.
//
// It is a machine of three states that writes the words over the line it
// reads. For each character a packed action tells, for each state, what comes
// next, whether the character is stored, and whether the word ends. Example:
//
//     pa "b c"\$  ->  p: starts a word, stored; a: stored; blank: ends it;
//                     quote: starts a word; b, blank, c: stored; quote: back
//                     into the word; backslash: stores the "$"; the end ends it
//
// Not handled, but passed on as ordinary characters: "~", "{", "}", "!", "#".
#include "private_split.h"

#include "ident.h"

#include <stdint.h>
#include <string.h>

namespace {

enum next_step : unsigned {
    between_words,  // the three states
    in_word,
    in_quotes,
    single_quote,  // what takes more than the table
    newline,
    done,  // the two ends of a scan
    needs_shell,
    backslash,  // takes more than the table too
};

constexpr unsigned next_mask = 7;
constexpr unsigned store = 8;
constexpr unsigned end_word = 16;
constexpr unsigned action_bits = 5;
constexpr unsigned action_mask = (1 << action_bits) - 1;
static_assert((next_mask | store | end_word) == action_mask);

consteval uint16_t pack(unsigned between, unsigned inside, unsigned quoted) {
    return static_cast<uint16_t>(between | inside << action_bits |
                                 quoted << 2 * action_bits);
}

consteval bool is_among(char c, const char *set) {
    for (; *set != '\0'; set++) {
        if (*set == c) return true;
    }
    return false;
}

consteval uint16_t actions_of(char c) {
    constexpr unsigned quoted = store | in_quotes;
    // clang-format off
    if (is_among(c, " \t"))  return pack(between_words, end_word | between_words, quoted);
    if (is_among(c, "$`"))   return pack(needs_shell, needs_shell, needs_shell);
    if (is_among(c, "&()*;<>?[]^|"))
                             return pack(needs_shell, needs_shell, quoted);
    switch (c) {
    case '\0':               return pack(done, end_word | done, end_word | done);
    case '\n':               return pack(newline, end_word | newline, quoted);
    case '"':                return pack(in_quotes, in_quotes, in_word);
    case '\'':               return pack(single_quote, single_quote, quoted);
    case '\\':               return pack(backslash, backslash, backslash);
    default:                 return pack(store | in_word, store | in_word, quoted);
    }
    // clang-format on
}
static_assert(actions_of('a') == (9 | 9 << 5 | 10 << 10));
static_assert(actions_of(' ') == (0 | 16 << 5 | 10 << 10));
static_assert(actions_of('$') == (6 | 6 << 5 | 6 << 10));

struct action_table {
    uint16_t of[128];
};

consteval action_table all_actions() {
    action_table table{};
    for (int c = 0; c < 128; c++) {
        table.of[c] = actions_of(static_cast<char>(c));
    }
    return table;
}

constexpr action_table actions = all_actions();

unsigned action_for(unsigned char c, unsigned state) {
    unsigned packed = actions.of[c < 128 ? c : 'a'];
    return packed >> state * action_bits & action_mask;
}

// Where one scan stands: `to` never overtakes `from`.
struct scan {
    const char *from;
    char *to;
    dyp *words;
    int started;
    unsigned state;
};

void start_word(scan &line) {
    dypadd(line.words, line.to);
    line.started++;
}

void finish_word(scan &line) {
    *line.to++ = '\0';
}

// Behind an opening quote.
//   result    done at the end of the line, else in_word
unsigned copy_single_quoted(scan &line) {
    while (*line.from != '\'') {
        if (*line.from == '\0') {
            finish_word(line);
            return done;
        }
        *line.to++ = *line.from++;
    }
    line.from++;
    return in_word;
}

// Behind a newline outside of quotes: only the last may stand there.
unsigned after_newline(const scan &line) {
    const char *rest = line.from + strspn(line.from, " \t\n");
    return *rest == '\0' ? done : needs_shell;
}

// Behind a backslash in double quotes, before a character that is no null.
void escape_in_quotes(scan &line) {
    char c = *line.from;
    if (strchr("\"$`\\\n", c) == nullptr) {
        *line.to++ = '\\';
        return;  // the character still goes through the table
    }
    if (c != '\n') *line.to++ = c;
    line.from++;
}

// Behind a backslash.
//   result    the state, or done
unsigned escape(scan &line) {
    char c = *line.from;
    if (c == '\0') {
        if (line.state != between_words) finish_word(line);
        return done;
    }
    if (line.state == in_quotes) {
        escape_in_quotes(line);
        return in_quotes;
    }
    line.from++;
    if (c == '\n') return line.state;
    if (line.state == between_words) start_word(line);
    *line.to++ = c;
    return in_word;
}

// An assignment in front of the command, or what may be one.
bool is_assignment(const scan &line, char c) {
    return c == '=' && line.started <= 1;
}

// Takes one character through the table.
//   result    the new state, done or needs_shell
unsigned step(scan &line) {
    char c = *line.from++;
    if (is_assignment(line, c)) return needs_shell;
    unsigned action = action_for(static_cast<unsigned char>(c), line.state);
    unsigned next = action & next_mask;
    bool opens = next == in_word || next == in_quotes || next == single_quote;
    if (opens && line.state == between_words) start_word(line);
    if ((action & store) != 0) *line.to++ = c;
    if ((action & end_word) != 0) finish_word(line);
    switch (next) {
        case single_quote:
            return copy_single_quoted(line);
        case newline:
            return after_newline(line);
        case backslash:
            return escape(line);
        default:
            return next;
    }
}

}  // namespace

bool tovan::split_line(char *text, dyp *words) {
    scan line{text, text, words, 0, between_words};
    while (line.state != done && line.state != needs_shell) {
        line.state = step(line);
    }
    return line.state == done;
}

TOVAN_IDENT(split, "8.4", "26/11/21")
