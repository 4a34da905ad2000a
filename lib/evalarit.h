// evalarit.h: integer arithmetic in text.
// Builds on: nothing.
//
// Expressions are those of C over 32-bit signed integers: conditional, "||",
// "&&", "|", "^", "&", comparisons, shifts, sums, products, the prefixes
// "-", "+", "!", "~", parentheses; decimal, octal (0...) and hexadecimal
// (0x...) numbers; one-letter variables. Blanks, tabs and newlines separate.
// Always: both sides of "&&", "||" and "?:" are evaluated, so that a division
// by zero counts where C would not come to it. Numbers wrap around.
// Errors: a message that is null on success. Nothing is printed, nothing is
// kept between calls.
#ifndef TOVAN_EVALARIT_H
#define TOVAN_EVALARIT_H

#include "attrs.h"

TOVAN_BEGIN_C

// Evaluates an expression.
//   result     where the value goes
//   variables  26 values, for "a" to "z"; null: letters are syntax errors
//   returns    null, or one of "syntax error", "operator stack overflow" (20
//              operators, parentheses and values waiting, the start of the
//              text counted), "value stack overflow" (21 values waiting),
//              "division by zero", "logic error - bitch to ko" (a second ")"
//              without "(")
//   owner      messages: process
//   fails      *result is untouched
//   edge       shift counts use their low five bits; the most negative number
//              divided by -1 is itself, with remainder 0; in octal numbers 8
//              and 9 are digits of their face value
const char *evalarith(const char *text, int *result, const int *variables);

TOVAN_END_C

#endif
