// private_opentmp.h (private): names that nobody else has.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_OPENTMP_H
#define TOVAN_PRIVATE_OPENTMP_H

#include <stddef.h>

namespace [[gnu::visibility("hidden")]] tovan {

// The base is the part of a temporary name that makes it unique; in a
// template these X's stand for it.
constexpr char unknown_base[] = "XXXXXX";
constexpr size_t base_length = sizeof unknown_base - 1;

// The base at the end of a template, or null when it ends in something else.
char *base_of(char *pattern);

// Writes the low digits of a number over five characters.
void put_five_digits(char *place, unsigned number);

// Writes letters and digits that are hard to foresee over a base.
void put_random_base(char *base);

// Makes a file for a template, as mkstemp().
//   fails     -1 with the errno of the last try, or EINVAL for a text that is
//             no template; the text is as it was
int make_unique(char *pattern);

// The path that opentmp() gives to a model, with nothing in its base yet.
//   directory null: TMPDIR or /tmp
//   base      where the base's address goes
//   owner     caller (free)
char *model_path(const char *directory, const char *model, char **base);

}  // namespace tovan

#endif
