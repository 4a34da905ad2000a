// manners.h: what people try on every tool.
#ifndef TOVAN_TOOLS_MANNERS_H
#define TOVAN_TOOLS_MANNERS_H

namespace tools {

// Sets progname from the first argument, and takes the trace flags of the
// environment (trace.h). From then on every way out, the library's included,
// reports a failed write to standard output (a full disk, a closed pipe end)
// and ends with status 255 then, and removes an unfinished file (new_file.h).
void start(const char *first_argument);

// The version line of every tool, on standard output.
void print_version();

// Ends the tool.
[[noreturn]] void finish(int status);

}  // namespace tools

#endif
