// manners.h: what people try on every tool.
#ifndef TOVAN_TOOLS_MANNERS_H
#define TOVAN_TOOLS_MANNERS_H

namespace tools {

// Sets progname from the first argument, and takes the trace flags of the
// environment (trace.h).
void start(const char *first_argument);

// The version line of every tool, on standard output.
void print_version();

// Ends the tool: a failed write to standard output (a full disk, a closed
// pipe end) is reported and ends with status 255.
[[noreturn]] void finish(int status);

}  // namespace tools

#endif
