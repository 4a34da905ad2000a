// private_fmbraces.h (private): the state of a match with braces.
// Builds on: private_fmchoice.h, private_fmmemory.h, private_fmreport.h.
#ifndef TOVAN_PRIVATE_FMBRACES_H
#define TOVAN_PRIVATE_FMBRACES_H

#include "private_fmchoice.h"
#include "private_fmmemory.h"
#include "private_fmreport.h"

#include <stddef.h>
#include <string.h>

namespace [[gnu::visibility("hidden")]] tovan {

// In braces all other bytes stand for themselves.
constexpr byte_set special_in_braces("*?[\\{,}");

// Matches literals; nowhere when one differs.
inline place match_literals(text_pointer p, text_pointer f, size_t *steps) {
    for (; !special_in_braces.holds[*p]; ++p, ++f, ++*steps) {
        if (*p != *f) return nowhere;
    }
    return {p, f};
}

// A report that shows a longer pattern counts as several; in a match that is
// long itself, so do these many steps.
constexpr size_t usual_pattern = 1024;
constexpr size_t long_match = 1 << 24;
constexpr size_t steps_for_report = 1 << 17;

enum passed { go_on, stop, success };

struct brace_matcher {
    brace_matcher(text_pointer all, text_pointer p, text_pointer f,
                  text_pointer first, bool is_traced)
        : whole(all), origin(first), traced(is_traced), pattern(p), subject(f) {
        open.depth = 0;
    }

    text_pointer whole;   // for messages
    text_pointer origin;  // no place in the subject comes before it
    bool traced;

    // The step under way.
    text_pointer pattern;
    text_pointer subject;
    brace_stack open;
    int level = 0;
    step_mark mark = first_step;

    choice_stack choices;

    size_t reports = 0;  // a longer pattern's count as several
    size_t steps = 0;
    bool remembering = false;
    bool gives_up = false;
    failure_memory memory = {};
    size_t most_remembered;  // set with the first

    bool run();
    bool walk();
    passed pass_special();
    place alternative_from(text_pointer p, text_pointer f);
    place alternative_behind(text_pointer p, text_pointer f);
    passed enter_brace();
    passed leave_brace();
    passed meet_star();
    passed finish_plainly();
    bool next_try();
    bool try_alternative(choice *newest);
    bool try_place(choice *newest);
    void remember(const choice &spent);
    text_pointer close_below(int levels);
    size_t places();
    void trace(const char *sign);

    bool may_report() {
        size_t waiting = steps < long_match ? 0 : steps / steps_for_report;
        return reports + waiting <= most_brace_reports;
    }
    // Counts a report; false, and the end, when it is one too many.
    bool shows_report() {
        reports += 1 + strlen(as_string(whole)) / usual_pattern;
        if (may_report()) return true;
        gives_up = true;
        choices.count = 0;
        return false;
    }
    // Ends the step.
    passed leave_choice(step_mark why, text_pointer p, text_pointer f,
                        text_pointer limit) {
        choice *left = choices.added();
        left->mark = why;
        left->level = level;
        left->pattern = p;
        left->subject = f;
        left->start = subject;
        left->limit = limit;
        left->reports = reports;
        left->open.copy(open);
        return stop;
    }
    size_t offset(text_pointer position) {
        return static_cast<size_t>(position - origin);
    }
};

}  // namespace tovan

#endif
