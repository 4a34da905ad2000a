// private_fmbraces.h (private): the state of a match with braces.
// Builds on: private_fmchoice.h, private_fmmemory.h.
#ifndef TOVAN_PRIVATE_FMBRACES_H
#define TOVAN_PRIVATE_FMBRACES_H

#include "private_fmchoice.h"
#include "private_fmmemory.h"

#include <stddef.h>

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

    size_t reports = 0;
    size_t weight = 0;  // of the reports
    size_t steps = 0;
    bool remembering = false;
    failure_memory memory = {};
    size_t most_remembered = 0;  // 0: not known yet
    bool gives_up = false;

    bool run();
    bool walk();
    passed pass_special();
    place alternative_from(text_pointer p, text_pointer f);
    place alternative_behind(text_pointer p, text_pointer f);
    passed enter_brace();
    passed leave_brace();
    passed meet_star();
    passed finish_plainly();
    passed leave_choice(step_mark why, text_pointer p, text_pointer f,
                        text_pointer limit);
    bool next_try();
    bool try_alternative(choice *newest);
    bool try_place(choice *newest);
    void remember(const choice &spent);
    text_pointer close_below(int levels);
    size_t places();
    bool may_report();
    bool shows_report();
    void trace(const char *sign);

    size_t offset(text_pointer position) {
        return static_cast<size_t>(position - origin);
    }
};

}  // namespace tovan

#endif
