// vop.h: the subcommands of vop, a source each.
#ifndef TOVAN_TOOLS_VOP_H
#define TOVAN_TOOLS_VOP_H

namespace vop {

// A subcommand. Its synopsis begins with its name; the explanation is
// null-terminated and ends with an example.
struct command {
    const char *name;
    const char *synopsis;
    const char *const *explanation;
    int (*run)(char **arguments);  // null-terminated; the result is the status
};

extern const command expand;
extern const command vars;
extern const command srcs;
extern const command expr;
extern const command match;
extern const command rx;
extern const command glob;
extern const command path;
extern const command map;
extern const command dos;
extern const command ix;
extern const command names;
extern const command traits;
extern const command run;
extern const command fix;
extern const command dict;
extern const command tmp;
extern const command db;
extern const command ar;
extern const command tar;
extern const command cpio;

// Arguments of a subcommand that has no flags of its own.
//   least     fewer than so many are misuse
char **plain_arguments(char **arguments, int least);

// The same for arguments that may begin with "-" themselves: only a first
// one that is exactly -x or --help asks for the explanation.
char **raw_arguments(char **arguments, int least);

}  // namespace vop

#endif
