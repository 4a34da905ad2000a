// usage.h: how a tool explains itself.
// Builds on: errexit.h.
//
// A tool registers one line that names its arguments and a list of lines that
// explain them. From these come the complaint about wrong arguments and the
// text of the -x flag.
// Always: both registered texts belong to the tool; nothing is copied.
// Order: progname, usestrs, then anything.
// Errors: usage() ends the process; nothing else fails.
#ifndef TOVAN_USAGE_H
#define TOVAN_USAGE_H

#include "attrs.h"

TOVAN_BEGIN_C

// What a tool does, in a line; "No program description provided" until the
// tool assigns or defines its own. The test driver shows it first.
extern const char *progdesc;

// Registers the synopsis (what follows the program's name) and the
// explanation lines.
//   explanation   null-terminated; either argument may be null
//   owner         caller; both are read until the next call
void usestrs(const char *synopsis, const char *const *explanation);

// Complains about the arguments and leaves: the message and a newline when
// there is a format, "Usage: progname synopsis", the hint of use_dash_x(), all
// on standard error; then lclexit(-1), status 255.
//   format    null for no message
TOVAN_NORETURN void usage(const char *format, ...) TOVAN_PRINTF(1, 2);

// Writes "Use -x flag for explanations" to standard error, when there are any.
void use_dash_x(void);

// Writes "progname synopsis", an empty line and the explanation to standard
// output; without a synopsis the explanation alone.
void explflags(void);

TOVAN_END_C

#endif
