// options.h: flags of a command line.
//
//     tools::options flags = tools::options_of(argv + 1);
//     while (int flag = tools::next_flag(&flags, "f:v", nullptr)) ...
//     // flags.next: the arguments behind the flags, null-terminated
//
// -x and --help write the registered explanation and end the tool well,
// --version its version; -V FLAGS switches traces on (trace.h), -V x explains
// them; a flag that is not in the list ends the tool in usage().
#ifndef TOVAN_TOOLS_OPTIONS_H
#define TOVAN_TOOLS_OPTIONS_H

namespace tools {

// A long name that stands for a letter; a list of them ends with a null name.
struct long_flag {
    const char *name;  // with its "--"
    char letter;
    bool takes_value = false;  // behind a "=", or in the argument after
};

struct options {
    char **next;        // the argument to look at next
    const char *rest;   // letters left in the argument before, or null
    const char *value;  // of the flag that was found last
};

options options_of(char **arguments);

// The letter of the next flag, or 0 behind the last. A letter with a colon
// behind it in `letters` takes a value, joined to it or in the argument after;
// with two colons only what is joined to it, which may be nothing.
int next_flag(options *flags, const char *letters, const long_flag *names);

}  // namespace tools

#endif
