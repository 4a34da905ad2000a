// private_strutil.h (private): string functions under names of the library's
// own.
// Builds on: nothing.
//
// The exported word `trim` may belong to the program that links the library.
#ifndef TOVAN_PRIVATE_STRUTIL_H
#define TOVAN_PRIVATE_STRUTIL_H

namespace [[gnu::visibility("hidden")]] tovan {

// As trim() of strutil.h.
char *trim(char *text);

}  // namespace tovan

#endif
