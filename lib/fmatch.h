// fmatch.h: file-name patterns.
// Builds on: rxpcomp.h.
//
// In a pattern
//
//     *          any number of characters, none too
//     ?          any one character
//     [a-c_]     one of these bytes; [^a-c_] one of all others; "]" first and
//                "-" first or last are members; the end of the pattern ends
//                the class
//     {x,y}      one of the alternatives, each a pattern; up to five levels
//     \c         the character c, whatever it is; "\" at the end is itself
//     !x         in front: turns the result around
//
// and all other characters stand for themselves, "/" and a leading "." too.
// Always: the whole subject has to match.
// Errors: braces that nest too deep, or whose ends are found in different
// places, are reported on standard error, and what comes to them fails. A
// report is repeated for each way that leads there, but a match shows at most
// 10000 of them, and fewer when the pattern is longer than a kilobyte. Out of
// memory, which only long matches of patterns with braces need, ends the
// process (nocore).
// Time: at most pattern x subject x (1 + braces), and the reports. Where the
// ends of braces are found in different places, at most pattern x subject^2 x
// braces x 5. While the trace is on, all ways are walked.
#ifndef TOVAN_FMATCH_H
#define TOVAN_FMATCH_H

#include "attrs.h"

TOVAN_BEGIN_C

// Matches a subject against a pattern.
//   result    1 when it matches, else 0
//   fails     "{} nesting too deep in PATTERN", or "p=REST; pc=CLOSE,
//             stk=OUTER CLOSE" and "Whoops: logic error in fmatch for pattern
//             'PATTERN'", and the way that led there does not match
//   edge      "*" matches, and "!*" does not, without a look at the subject; a
//             brace without an end ends with the pattern; a class in braces
//             hides their end up to the next "[" or the end of the pattern
int fmatch(const char *subject, const char *pattern);

// Matches one word against a list of others.
//   words     options, the first operand, the others, null. Options: -rxp, the
//             patterns are regular expressions; -exact, they are plain texts
//             (the last of these counts); -reverse, the first operand is the
//             pattern and the others are subjects, instead of the other way.
//             The first word that is none of these is the first operand
//   result    1 when any pair matches, else 0, also without any operand
//   fails     an expression that does not compile matches nothing
//   edge      -rxp leaves rxpbuf and `matches` behind (rxpcomp.h)
int patmatch(const char *const *words);

// Shows the steps of fmatch() on standard error: for each step, and with a "-"
// in front for each element of the pattern in it, two blanks a level, then
// its octal code (the level, and a bit for why it was made), the number of
// open braces, the rests of pattern and subject, the rest behind the innermost
// brace or NULL.
//   flag      not 0: from now on; 0: no longer
void fmatch_trace(int flag);

TOVAN_END_C

#endif
