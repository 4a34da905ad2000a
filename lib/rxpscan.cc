// rxpscan.cc: the tokens of a regular expression.
//
// Few characters have one meaning. In `<*a|*[]^-z]*>*$` the first two stars,
// the "]" behind "[" and the "^" are literals, the "-" behind a "^" is one as
// well, and the other stars and the "$" are operators. "Right after" always
// means the token before, never the character: the star of `\<*` is a
// closure over the literal.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_rxpscan.h"

using tovan::rxp_scanner;
using tovan::rxp_token;

namespace {

// Deliberate: bytes are signed here, so that one of 0x80 or above ends the
// pattern as its null does (test pattern_ends_at_an_8_bit_byte).
bool is_end_byte(char byte) {
    return static_cast<signed char>(byte) <= 0;
}

bool is_end(const rxp_scanner &scanner, char byte) {
    return is_end_byte(byte) || byte == scanner.delimiter;
}

void set_literal(rxp_scanner *scanner, char character) {
    scanner->kind = rxp_token::literal;
    scanner->character = character;
}

void set_item(rxp_scanner *scanner, tovan::rxp_opcode opcode,
              int number = tovan::rxp_unused) {
    scanner->kind = rxp_token::item;
    scanner->opcode = opcode;
    scanner->number = static_cast<unsigned char>(number);
}

// The byte behind a backslash, whatever the delimiter is.
void scan_escape(rxp_scanner *scanner) {
    char escaped = *scanner->at;
    if (is_end_byte(escaped)) {
        scanner->kind = rxp_token::cut_escape;
        return;
    }
    scanner->at++;
    // clang-format off
    switch (escaped) {
    case '!': return set_item(scanner, tovan::rxp_unclassed);
    case '#': return set_item(scanner, tovan::rxp_digit);
    case '_': return set_item(scanner, tovan::rxp_white_run);
    case '-': return set_item(scanner, tovan::rxp_white_run_or_none);
    case '}': return set_item(scanner, tovan::rxp_identifier_end);
    case '{': return set_item(scanner, tovan::rxp_identifier_start);
    case '=': return set_item(scanner, tovan::rxp_identifier);
    case '~': return set_item(scanner, tovan::rxp_not_white);
    case '(': return set_item(scanner, tovan::rxp_open);
    case ')': return set_item(scanner, tovan::rxp_close);
    }
    // clang-format on
    if ('1' <= escaped && escaped <= '9')
        return set_item(scanner, tovan::rxp_same_text, escaped - '0');
    set_literal(scanner, escaped);
}

// A "*" or "+" with nothing before it to repeat is a literal.
void scan_closure(rxp_scanner *scanner, rxp_token before, char character) {
    bool is_literal =
        before == rxp_token::none || before == rxp_token::closure ||
        before == rxp_token::group_open || before == rxp_token::alternation;
    scanner->kind = is_literal ? rxp_token::literal : rxp_token::closure;
    scanner->character = character;
}

void scan_outside(rxp_scanner *scanner, rxp_token before, char character) {
    switch (character) {
        case '^':
            if (before == rxp_token::none)
                return set_item(scanner, tovan::rxp_subject_start);
            break;
        case '.':
            return set_item(scanner, tovan::rxp_any);
        case '*':
        case '+':
            return scan_closure(scanner, before, character);
        case '<':
            scanner->kind = rxp_token::group_open;
            return;
        case '>':
            if (scanner->open_groups == 0) break;
            scanner->kind = rxp_token::group_close;
            return;
        case '|':
            if (scanner->open_groups == 0) break;
            scanner->kind = rxp_token::alternation;
            return;
        case '[':
            scanner->kind = rxp_token::bracket_open;
            return;
        case '\\':
            return scan_escape(scanner);
    }
    set_literal(scanner, character);
}

// Deliberate: a literal backslash before the "[" takes the negating meaning
// from a "^" behind it (test bracket_behind_a_backslash_is_never_negated).
// A "[" at position 1 has no such backslash: that one would escape it.
bool negates(const rxp_scanner &scanner, rxp_token before) {
    const char *bracket = scanner.at - 2;
    return before == rxp_token::bracket_open &&
           (bracket == scanner.text || bracket[-1] != '\\');
}

// Whether a "-" stands where it can only be meant itself.
bool is_plain_minus(const rxp_scanner &scanner, rxp_token before) {
    if (before == rxp_token::bracket_open || before == rxp_token::negation)
        return true;
    return before == rxp_token::literal &&
           (scanner.character == '^' || scanner.character == ']');
}

void scan_in_bracket(rxp_scanner *scanner, rxp_token before, char character) {
    bool is_first =
        before == rxp_token::bracket_open || before == rxp_token::negation;
    if (character == '^' && negates(*scanner, before)) {
        scanner->kind = rxp_token::negation;
    } else if (character == ']' && !is_first) {
        scanner->kind = rxp_token::bracket_close;
    } else if (character == '-' && !is_plain_minus(*scanner, before)) {
        scanner->kind = rxp_token::range;
    } else {
        set_literal(scanner, character);
    }
}

}  // namespace

void tovan::rxp_advance(rxp_scanner *scanner) {
    rxp_token before = scanner->kind;
    char character = *scanner->at;
    if (is_end(*scanner, character)) {
        scanner->kind = rxp_token::end;
        return;
    }
    scanner->at++;
    if (character == '$' && is_end(*scanner, *scanner->at)) {
        set_item(scanner, rxp_subject_end);
        scanner->kind = rxp_token::line_end;
    } else if (scanner->in_bracket) {
        scan_in_bracket(scanner, before, character);
    } else {
        scan_outside(scanner, before, character);
    }
}

TOVAN_IDENT(rxpscan, "8.4", "26/11/21")
