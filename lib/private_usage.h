// private_usage.h (private): complaints about arguments.
// Builds on: nothing.
//
// The exported word `usage` may belong to the program that links the library;
// inside, the same is reached by this name.
#ifndef TOVAN_PRIVATE_USAGE_H
#define TOVAN_PRIVATE_USAGE_H

#include <stdarg.h>

namespace [[gnu::visibility("hidden")]] tovan {

// As usage() of usage.h.
[[noreturn, gnu::format(printf, 1, 2)]] void usage(const char *format, ...);

// The same with an argument list.
[[noreturn, gnu::format(printf, 1, 0)]] void vusage(const char *format,
                                                    va_list arguments);

}  // namespace tovan

#endif
