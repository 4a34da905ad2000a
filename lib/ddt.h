// ddt.h: named trace points, switched on at run time.
// Builds on: errexit.h, fastout.h.
//
// A tool has a static record, a package, for each thing that it can trace.
// The user switches packages on by name, in the environment variable
// <progname>_debug or with -V:
//
//     make_debug=search=2,heap make -V all-
//
// A package is looked up in the flags when it is first tested, and again after
// the flags have changed; a test of one that is off is one comparison.
// Always: a package's `next` is null exactly until it is looked up or set.
// Order: progname, ddt_setup, then -V options and tests in any order.
// Errors: flags that do not fit are left out with a warning.
#ifndef TOVAN_DDT_H
#define TOVAN_DDT_H

#include "attrs.h"

TOVAN_BEGIN_C

// A package. The tool fills in level 65535, its name with the name's length
// (up to 12), accepts_all and the initialiser, and zeroes.
typedef struct ddt {
    unsigned level;   // what is on up to; 65535: not looked up
    int looked_up;    // level and value agree with the flags
    char name[12];    // terminated when it is shorter
    int name_length;  // characters that are compared
    int accepts_all;  // the item "all" speaks of this package too
    int (*initialiser)(struct ddt *package, const char *suffix);
    void *reserved;
    struct ddt *next;  // in the list of known packages
    int value;         // of a package with ddt_value_init()
} ddt;

// Forgets all flags and takes those of the environment: <progname>_debug, of
// whose name the program's part is cut to 32 characters, or KRT_debug where
// that is unset or empty.
void ddt_setup(void);

// Adds a comma-separated list of items "name", "name=number" or "name-"; the
// last one for a name counts.
//   flags     null adds nothing
//   fails     more than 510 characters altogether, commas included: a warning
//             on standard error, nothing changed
void ddt_addflags(const char *flags);

// The argument of a -V option: ddt_addflags(), or, for exactly "x", help on
// standard output and lclexit(0).
void ddt_Vflags(const char *flags);

// Has every known package looked up again.
void ddt_clear(void);

// Whether a package traces at a level.
//   print     non-zero: when it does, "progname: name(level) " goes to
//             standard error, and the caller's message is to follow
//   result    1 or 0
int ddt_trace(ddt *package, unsigned level, int print);

// Looks a package up now.
//   result    that of its initialiser
int ddt_level(ddt *package);

// An initialiser: the package has a level.
//   suffix    what follows the name in the flags; null when it is not there
//   result    the level: 1 for the bare name, 0 for none and for "-"
//   edge      the record keeps the low 16 bits
int ddt_level_init(ddt *package, const char *suffix);

// An initialiser: the package has a value, and is on (level 1) or off.
//   result    1 when it is on
int ddt_value_init(ddt *package, const char *suffix);

// What follows the last item "all" in the flags; null when there is none.
//   owner     library; until the flags change
const char *ddt_allptr(void);

// Forces a package, whatever the flags say.
//   save      gets level, looked_up and value as they were
//   result    save
int *ddt_set(int save[3], ddt *package, unsigned level, int value);

// Puts the three words back.
void ddt_reset(ddt *package, unsigned level, int looked_up, int value);

// A number: decimal, octal after a leading 0, hexadecimal after 0x.
//   edge      stops at the first character that is no digit; 8 and 9 are
//             digits in octal too; wraps modulo 2^32
unsigned ddt_atoi(const char *text);

TOVAN_END_C

#endif
