// fmbraces.cc: file-name patterns with braces.
#include "fmatch.h"

#include "ident.h"
#include "private_fmatch.h"
#include "private_fmbraces.h"
#include "private_fmfind.h"
#include "private_fmgraph.h"
#include "private_fmreport.h"

#include <string.h>

// A step matches a stretch of the pattern. Where it comes to a star or "{" it
// ends, and leaves a choice behind: what to try next, one after the other,
// each with the open braces of that moment. The choices form a stack of their
// own; a step that fails goes on with the newest one. The first step that
// comes to both ends succeeds, and with it everything.
//
// In "x{a,b*}y" the "{" leaves the choice of "a" and "b*"; either goes on at
// "y", because "," and "}" lead behind the brace. "xay" comes through at once;
// in "xb-y" "a" fails, and the star of "b*" leaves a choice of the places where
// "}" and so "y" may go on.
//
// What is not traced skips tries whose first literals differ: nothing could
// be seen of them.
//
// Tried in that order only, "{a,a}{a,a}{a,a}z" would take time exponential in
// the number of braces. So once a match turns out long, steps that failed are
// remembered: a star as a whole, and each step behind the end of a brace,
// where the ways through its alternatives meet again. All stretches between
// those are walked once for each position. A step that reported an error is
// not remembered, since it has to report it again.
//
// Two kinds of patterns would still take too long, and are left to another
// way of matching (fmgraph.cc), which is silent: those that report on more
// ways than there is time for, "*a*a*a*{{{{{{"; and those whose braces are
// left open behind their ends, so that steps can be taken with any of many
// braces open.

using namespace tovan;

constinit size_t tovan::brace_steps = 0;

// Chosen: errors are reported once for each way that leads to them, up to
// this number. There may be more ways than there is time for, and nothing is
// to be learnt from so many reports.
constinit size_t tovan::most_brace_reports = 10000;

namespace {

constexpr size_t patience = 500;  // steps before failures are remembered

}  // namespace

// The close of the innermost brace, or of one further out; null: none is open.
text_pointer brace_matcher::close_below(int levels) {
    int slot = open.depth - 1 - levels;
    if (slot < 0) return nullptr;
    if (open.close[slot] == nullptr)
        open.close[slot] = find_in_brace<for_close>(open.inside[slot], &steps);
    return open.close[slot];
}

void brace_matcher::trace(const char *sign) {
    show_step(sign, mark, level, open.depth, pattern, subject, close_below(0));
}

// The alternative at `p`, or the first one behind it, that does not fail over
// its first literals; the result stands behind them, or nowhere.
place brace_matcher::alternative_from(text_pointer p, text_pointer f) {
    if (traced) return {p, f};
    place at = match_literals(p, f, &steps);
    return at.pattern != nullptr ? at : alternative_behind(p, f);
}

place brace_matcher::alternative_behind(text_pointer p, text_pointer f) {
    for (;;) {
        p = find_in_brace<for_comma>(p, &steps);
        if (p == nullptr) return nowhere;
        if (traced) return {p, f};
        place at = match_literals(p, f, &steps);
        if (at.pattern != nullptr) return at;
    }
}

passed brace_matcher::enter_brace() {
    if (open.depth == deepest) {
        if (shows_report()) report_depth(whole);
        return stop;
    }
    text_pointer inside = pattern + 1;
    place first = alternative_from(inside, subject);
    if (first.pattern == nullptr) return stop;
    open.inside[open.depth] = inside;
    open.close[open.depth++] = nullptr;
    if (traced) return leave_choice(by_alternative, inside, subject, no_limit);
    place other = alternative_behind(first.pattern, subject);
    if (other.pattern != nullptr) {
        // Once for all alternatives; a single one may never get there.
        close_below(0);
        leave_choice(by_alternative, other.pattern, other.subject, no_limit);
    }
    pattern = first.pattern;
    subject = first.subject;
    return go_on;
}

// At "," or "}": behind the brace all its alternatives go on alike.
passed brace_matcher::leave_brace() {
    text_pointer close = close_below(0);
    if (*pattern == '}' && pattern + 1 != close) {
        if (shows_report()) report_close(whole, pattern, close, close_below(1));
        return stop;
    }
    pattern = close;
    --open.depth;
    if (!remembering) return go_on;
    if (memory.step_fails(pattern, open, offset(subject))) return stop;
    leave_choice(end_of_brace, pattern, subject, subject);
    return go_on;
}

// A star at depth 0 behind which no brace comes any more.
passed brace_matcher::finish_plainly() {
    if (match_stars(whole, pattern, subject)) return success;
    steps += strlen(as_string(subject));
    if (remembering) memory.add_star(pattern, open, offset(subject));
    return stop;
}

passed brace_matcher::meet_star() {
    while (*pattern == '*')
        ++pattern;
    if (*pattern == '\0') return success;
    text_pointer limit = no_limit;
    if (remembering) {
        size_t at = memory.star_fails_from(pattern, open);
        if (offset(subject) >= at) return stop;
        if (at != SIZE_MAX) limit = origin + at;
    }
    bool inside = open.depth > 0;
    if (!inside && !traced && strchr(as_string(pattern), '{') == nullptr)
        return finish_plainly();
    return leave_choice(mark_of_star(*pattern, inside), pattern, subject,
                        limit);
}

passed brace_matcher::pass_special() {
    unsigned char c = *pattern;
    if (c == '*') return meet_star();
    if (c == '{') return enter_brace();
    if (open.depth > 0 && (c == ',' || c == '}')) return leave_brace();
    if (*subject == '\0') return stop;
    ++pattern;
    if (c == '[') {
        pattern = past_holding_class(pattern, *subject);
        if (pattern == nullptr) return stop;
    } else if (c != '?') {
        if (c == '\\' && *pattern != '\0') c = *pattern++;
        if (*subject != c) return stop;
    }
    ++subject;
    return go_on;
}

// One step, until it succeeds, fails, or leaves a choice.
bool brace_matcher::walk() {
    if (traced) trace("");
    for (unsigned char c; (c = *pattern) != '\0'; ++steps) {
        if (traced) trace("-");
        if (!special_in_braces.holds[c]) {
            if (*subject != c) return false;
            ++pattern;
            ++subject;
            continue;
        }
        passed result = pass_special();
        if (result != go_on) return result == success;
    }
    return *subject == '\0';
}

bool brace_matcher::try_alternative(choice *newest) {
    if (newest->pattern == nullptr) return false;
    pattern = newest->pattern;
    subject = newest->subject;
    place other = alternative_behind(pattern, newest->start);
    newest->pattern = other.pattern;
    newest->subject = other.subject;
    return true;
}

bool brace_matcher::try_place(choice *newest) {
    bool literal = newest->mark == by_literal_star;
    for (text_pointer next = newest->subject;; ++next, ++steps) {
        if (literal) next = find_byte(next, *newest->pattern);
        if (next == nullptr || next >= newest->limit) return false;
        if (*next == '\0') {
            if (newest->mark != by_brace_star) return false;
            newest->limit = next;  // this is the last try
        }
        place at = {newest->pattern + literal, next + literal};
        if (!traced) at = match_literals(at.pattern, at.subject, &steps);
        if (at.pattern == nullptr) continue;
        newest->subject = next + 1;
        pattern = at.pattern;
        subject = at.subject;
        return true;
    }
}

// All tries of a choice have failed.
void brace_matcher::remember(const choice &spent) {
    if (memory.capacity == 0) most_remembered = places();
    if (spent.reports == reports && spent.mark != by_alternative) {
        size_t at = offset(spent.start);
        if (spent.mark == end_of_brace) {
            memory.add_step(spent.pattern, spent.open, at);
        } else {
            memory.add_star(spent.pattern, spent.open, at);
        }
    }
    gives_up |= memory.used > most_remembered;
}

// What there is to remember when each place of the pattern is reached with
// the same braces open.
size_t brace_matcher::places() {
    constexpr size_t at_least = 1000;
    size_t words = strlen(as_string(origin)) / bits_of_memory + 2;
    return at_least + strlen(as_string(whole)) * words;
}

// Starts the next step; false when nothing is left to try, or too much.
bool brace_matcher::next_try() {
    for (; choices.count > 0; --choices.count) {
        choice *newest = &choices.each[choices.count - 1];
        bool found = newest->mark == by_alternative ? try_alternative(newest)
                                                    : try_place(newest);
        if (found) {
            open.copy(newest->open);
            level = newest->level + 1;
            mark = newest->mark;
            remembering = ++steps > patience && !traced;
            return true;
        }
        if (!remembering) continue;
        remember(*newest);
        if (gives_up) break;
    }
    return false;
}

// Flat, since most of the calls cost more than what they do.
[[gnu::flatten]] bool brace_matcher::run() {
    bool matches = walk();
    while (!matches && next_try())
        matches = walk();
    choices.release();
    memory.release();
    brace_steps = steps;
    return matches;
}

bool tovan::match_braces(text_pointer whole, text_pointer p, text_pointer f,
                         text_pointer again_p, text_pointer again_f) {
    if (again_p == nullptr) {
        brace_matcher matcher(whole, p, f, f, false);
        bool matches = matcher.run();
        if (!matcher.gives_up) return matches;
    } else {
        brace_matcher matcher(whole, p, f, again_f, false);
        matcher.leave_choice(mark_of_star(*again_p, false), again_p, again_f,
                             no_limit);
        bool matches = matcher.run();
        if (!matcher.gives_up) return matches;
    }
    return match_in_graph(whole, p, f, again_p, again_f);
}

bool tovan::match_traced(text_pointer whole, text_pointer f) {
    return brace_matcher(whole, whole, f, f, true).run();
}

TOVAN_IDENT(fmbraces, "8.4", "26/11/21")
