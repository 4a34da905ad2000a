// private_error.h (private): messages on standard error.
// Builds on: nothing.
//
// The exported word `error` may belong to the program that links the library
// (or to the C library). Inside the library warnings are written through
// these names, which nobody else can own.
#ifndef TOVAN_PRIVATE_ERROR_H
#define TOVAN_PRIVATE_ERROR_H

#include <stdarg.h>

namespace [[gnu::visibility("hidden")]] tovan {

// As error() of errexit.h: the message, a newline, a flush.
[[gnu::format(printf, 1, 2)]] int error(const char *format, ...);

// The same with an argument list; `end` follows the message.
[[gnu::format(printf, 1, 0)]] int verror(const char *format, va_list arguments,
                                         const char *end);

}  // namespace tovan

#endif
