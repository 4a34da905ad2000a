// rxpcomp.cc: from the text of a regular expression to its program.
//
// States are generated in reading order and never move. Each leads to the one
// behind it until something is linked: a construct that is entered elsewhere
// than at its first state changes the `next` of the state before it.
//
//     x*      1: x -> 2             2: branch -> 3 or 1
//             the state before x now leads to 2 ("+": still to 1)
//     <A|B>   A  jump  branch -> A or B  B  jump
//             the state before A now leads to the branch, both jumps lead
//             behind B
//
// "The state before" is taken by number. Behind a group it is the jump that
// closes the group, and only its `next` changes: in `<a>b*` that jump becomes
// a branch to the loop or straight to b, which matches the same.
//
// Groups nest by a stack of records, one for each "<" that is open and one
// for the pattern itself, so that no pattern is too deep.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpgen.h"
#include "private_rxpscan.h"

#include <string.h>

using namespace tovan;

namespace {

// ---- sub-matches --------------------------------------------------------

int open_submatch(compiler *c) {
    const group &g = current_group(c);
    if (g.expected >= 0 && c->next_submatch - g.base >= g.expected)
        return unbalanced;
    if (c->next_submatch > tovan::rxp_max_submatch) return too_many_submatches;
    auto number = static_cast<unsigned char>(c->next_submatch++);
    c->open[c->n_open++] = number;
    take_state(c, tovan::rxp_open, number);
    return 0;
}

int close_submatch(compiler *c) {
    if (c->n_open == current_group(c).open_outside) return unbalanced;
    unsigned char number = c->open[--c->n_open];
    c->closed |= 1u << number;
    take_state(c, tovan::rxp_close, number);
    return 0;
}

int take_item(compiler *c) {
    const rxp_scanner &s = c->scanner;
    if (s.opcode == tovan::rxp_open) return open_submatch(c);
    if (s.opcode == tovan::rxp_close) return close_submatch(c);
    if (s.opcode == tovan::rxp_same_text && (c->closed >> s.number & 1) == 0)
        return bad_reference;
    take_state(c, s.opcode, s.number);
    return 0;
}

// ---- brackets -----------------------------------------------------------

// One member: a character, or two with a "-" between them.
int take_member(compiler *c) {
    rxp_scanner *s = &c->scanner;
    char low = s->character;
    char high = low;
    rxp_advance(s);
    if (s->kind == rxp_token::range) {
        rxp_advance(s);
        if (s->kind != rxp_token::literal || s->character < low)
            return bad_bracket;
        high = s->character;
        rxp_advance(s);
    }
    c->pairs[2 * c->n_pairs] = static_cast<unsigned char>(low);
    c->pairs[2 * c->n_pairs + 1] = static_cast<unsigned char>(high);
    c->n_pairs++;
    return 0;
}

int take_members(compiler *c) {
    int first = c->n_pairs;
    while (c->scanner.kind == rxp_token::literal) {
        int fault = take_member(c);
        if (fault != 0) return fault;
    }
    if (c->n_pairs == first || c->scanner.kind == rxp_token::range)
        return bad_bracket;
    return c->scanner.kind == rxp_token::bracket_close ? 0 : unbalanced;
}

int take_bracket(compiler *c) {
    rxp_scanner *s = &c->scanner;
    s->in_bracket = true;
    rxp_advance(s);
    tovan::rxp_opcode opcode = tovan::rxp_in_ranges;
    if (s->kind == rxp_token::negation) {
        opcode = tovan::rxp_not_in_ranges;
        rxp_advance(s);
    }
    int first = c->n_pairs;
    int fault = take_members(c);
    if (fault != 0) return fault;

    s->in_bracket = false;
    auto n_pairs = static_cast<unsigned char>(c->n_pairs - first);
    int state = take_state(c, opcode, n_pairs);
    c->states[state].alternative = static_cast<unsigned char>(first + 1);
    return 0;
}

// ---- groups and alternatives --------------------------------------------

void start_group(compiler *c) {
    current_group(c) = {
        .first = static_cast<short>(c->count),
        .entry = no_entry,
        .base = static_cast<unsigned char>(c->next_submatch),
        .expected = -1,
        .open_outside = static_cast<unsigned char>(c->n_open),
        .closed_before = static_cast<unsigned short>(c->closed),
        .alternatives_before = static_cast<short>(c->n_alternatives),
    };
    rxp_advance(&c->scanner);
}

// Ends an alternative: as many sub-matches as in the others, none left open.
int finish_alternative(compiler *c) {
    group &g = current_group(c);
    int submatches = c->next_submatch - g.base;
    if (c->n_open != g.open_outside) return unbalanced;
    if (g.expected >= 0 && g.expected != submatches) return unbalanced;
    g.expected = static_cast<signed char>(submatches);
    return 0;
}

void fill_empty_term(compiler *c) {
    group &g = current_group(c);
    if (g.entry == no_entry) g.entry = link_to(append(c, tovan::rxp_nothing));
}

int take_alternation(compiler *c) {
    fill_empty_term(c);
    int fault = finish_alternative(c);
    if (fault != 0) return fault;

    group &g = current_group(c);
    int jump = append(c, tovan::rxp_branch);
    append(c, tovan::rxp_branch);
    c->alternatives[c->n_alternatives++] = {g.entry, link_to(jump)};
    g.entry = no_entry;
    c->next_submatch = g.base;
    c->closed = g.closed_before;
    rxp_advance(&c->scanner);
    return 0;
}

// Links the alternatives of the current group, the last one first.
//   result    the entry of the whole
unsigned char link_alternatives(compiler *c) {
    const group &g = current_group(c);
    unsigned char entry = g.entry;
    unsigned char behind = link_to(c->count);
    while (c->n_alternatives > g.alternatives_before) {
        const alternative &before = c->alternatives[--c->n_alternatives];
        int branch = before.jump + 1;
        c->states[before.jump].next = behind;
        c->states[before.jump].alternative = behind;
        c->states[branch].next = before.entry;
        c->states[branch].alternative = entry;
        entry = link_to(branch);
    }
    return entry;
}

int close_group(compiler *c) {
    fill_empty_term(c);
    int fault = finish_alternative(c);
    if (fault != 0) return fault;

    int first = current_group(c).first;
    unsigned char entry = link_alternatives(c);
    c->states[first - 1].next = entry;
    int jump = append(c, tovan::rxp_branch);
    c->states[jump].alternative = link_to(c->count);
    c->scanner.open_groups--;
    rxp_advance(&c->scanner);
    finish_factor(c, first, entry);
    return 0;
}

// ---- the whole ----------------------------------------------------------

int take_token(compiler *c) {
    const rxp_scanner &s = c->scanner;
    switch (s.kind) {
        case rxp_token::literal:
            take_state(c, c->literal_opcode,
                       static_cast<unsigned char>(s.character));
            return 0;
        case rxp_token::item:
        case rxp_token::line_end:
            return take_item(c);
        case rxp_token::bracket_open:
            return take_bracket(c);
        case rxp_token::group_open:
            c->scanner.open_groups++;
            start_group(c);
            return 0;
        case rxp_token::alternation:
            return take_alternation(c);
        case rxp_token::group_close:
            return close_group(c);
        case rxp_token::cut_escape:
            return item_missing;
        default:
            return bad_item;
    }
}

int take_pattern(compiler *c) {
    start_group(c);
    while (c->scanner.kind != rxp_token::end) {
        int fault = take_token(c);
        if (fault != 0) return fault;
        if (c->count > tovan::rxp_max_states) return too_long;
    }
    if (c->scanner.open_groups > 0)
        return current_group(c).entry == no_entry ? item_missing : unbalanced;
    return finish_alternative(c);
}

// END, the summary bytes, the ranges and the header.
//   result    the length without the final null
int finish_program(compiler *c, bool is_inverted) {
    int end = append(c, tovan::rxp_end);
    if (c->count > tovan::rxp_max_states) return too_long;
    c->states[end].next = tovan::rxp_unused;
    tovan::rxp_optimise(c->states, c->count);

    unsigned char *ranges = rxpbuf + 4 * c->count + 2;
    memcpy(ranges, c->pairs, 2 * static_cast<size_t>(c->n_pairs));
    ranges[2 * c->n_pairs] = 0;
    c->states[0].argument = c->states[0].next;
    c->states[0].next = link_to(end);
    c->states[0].alternative =
        is_inverted ? tovan::rxp_inverted : tovan::rxp_unused;
    return 4 * c->count + 2 + 2 * c->n_pairs;
}

int compile(compiler *c, bool is_inverted) {
    c->states = reinterpret_cast<rxp_state *>(rxpbuf);
    append(c, tovan::rxp_branch);
    int fault = take_pattern(c);
    return fault != 0 ? fault : finish_program(c, is_inverted);
}

}  // namespace

// The last program. Written by rxpcomp(); a null first byte: none.
constinit unsigned char rxpbuf[1537] = {};
constinit const char *rxpeof = nullptr;

int rxpcomp(const char *pattern, int delimiter, int fold) {
    char ending = static_cast<char>(delimiter);
    if (tovan::re_is(ending, tovan::re_special)) return bad_delimiter;
    bool is_inverted = *pattern == '!';
    if (is_inverted) pattern++;
    if (strnlen(pattern, max_pattern + 1) > max_pattern) return too_long;

    compiler c;  // stacks are left unset
    c.scanner = {
        .text = pattern,
        .at = pattern,
        .delimiter = ending,
        .in_bracket = false,
        .open_groups = 0,
        .kind = rxp_token::none,
        .character = '\0',
        .opcode = tovan::rxp_none,
        .number = tovan::rxp_unused,
    };
    c.count = 0;
    c.literal_opcode = fold != 0 ? tovan::rxp_folded : tovan::rxp_literal;
    c.n_alternatives = 0;
    c.next_submatch = 1;
    c.n_open = 0;
    c.closed = 0;
    c.n_pairs = 0;
    int length = compile(&c, is_inverted);
    if (length < 0) {
        rxpbuf[0] = 0;
    } else {
        rxpeof = c.scanner.at;
    }
    return length;
}

TOVAN_IDENT(rxpcomp, "8.4", "26/11/21")
