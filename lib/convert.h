// convert.h: numbers to text and back, byte order, identifiers, calendar.
// Builds on: nothing.
//
// Always: results in static buffers hold until the next call of the same
// function.
// Errors: itoa() aborts on a wrong radix; nothing else fails.
#ifndef TOVAN_CONVERT_H
#define TOVAN_CONVERT_H

#include "attrs.h"

#include <stdint.h>
#include <time.h>

TOVAN_BEGIN_C

// English names, "January" and "Sunday" first.
extern const char *const monthnms[12];
extern const char *const daynms[7];

// The day of the year, from 0, on which each month starts, then the length
// of the year: of ordinary years in row 0, of leap years in row 1.
extern const short monlimits[2][13];

// The decimal number at the start of a text: blanks and tabs, a sign, digits.
//   n         characters that are looked at, at most; 0 or less: none
//   result    0 when there is no number; too large ones wrap
//   edge      digits are no end of blanks and sign: "12 34" is 1234, "12-3"
//             is -123; behind a sign only digits go on
int atoin(const char *text, int n);
long atoln(const char *text, int n);

// Writes a number in decimal, with a NUL.
//   buffer    12 bytes
//   radix     10
//   result    the buffer
//   fails     another radix: the message of assertion "radix == 10" on
//             standard error and abort, in every build
char *itoa(int value, char *buffer, int radix);

// The value with its bytes in the other order.
uint32_t convlong(uint32_t value);
uint16_t convshrt(uint16_t value);

// The same for `count` values in place; a count of 0 or less does nothing.
//   result    the values
uint32_t *convmlong(uint32_t *values, int count);
uint16_t *convmshrt(uint16_t *values, int count);

// Reads a number of base 64, digits 0-9 a-z A-Z @ /, up to the first other
// character. White space is not skipped.
//   end       null, or where the address of that character goes
//   result    0 when there is no digit; the low 32 bits of larger numbers
uint32_t r64tol(const char *text, const char **end);

// Writes a number in the same digits, the highest first, without leading
// zeros ("0" for 0).
//   owner     library until the next call
char *ltor64(uint32_t value);

// Builds what r64tol() needs. The first r64tol() or ltor64() does it too.
void r64_init(void);

// An identifier of 14 characters: time, process, host and a count, 64 to a
// second and process.
//   owner     library until the next call
//   edge      process and host are asked once: a forked child goes on with
//             its parent's
char *uniqid(void);

// Writes the low bits of a value as `width` digits of six bits, 0-9 A-Z a-z
// @ %, the lowest last. No terminator is written.
void stuffnum(char *buffer, uint32_t value, int width);

// Local calendar time to seconds since the epoch, without mktime(3). Every
// fourth year is a leap year; the zone's offset is that of 1 January 1970, to
// the minute, found at the first call and kept for the process.
//   local     second, minute, hour, day, month (0 to 11) and year (since
//             1900) count; all but the month may be out of range and carry.
//             Read only, even if it is localtime()'s own record
//   edge      where the result has daylight saving, an hour is taken off, so
//             that of an hour that comes twice the second is meant.
//             localtime()'s record holds the caller's fields afterwards, with
//             day of week and day of year as found
time_t emitlacol(const struct tm *local);

TOVAN_END_C

#endif
