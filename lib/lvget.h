// lvget.h: the build tree's variables.
// Builds on: errexit.h, chkalloc.h, strutil.h, dystr.h, dypadd.h, fmatch.h,
// wait4pid.h, lvheap.h, execstr.h.
//
// One heap of variables a process. lvget() obtains it, checks it as a whole
// and sets the environment variables that it asks for; then the variables are
// looked up by name, by name and subscript, or walked. A heap is trusted as
// code is: what it exports may be PATH. Nothing of it but the variables that
// are flagged for it reaches the environment.
// Always: names and values lie in the heap and hold until it is reloaded.
// Order: lvget, then anything; lvget again with `reload` for a fresh heap.
// Errors: everything that goes wrong ends the process through errexit(); a
// variable that does not exist is no error.
#ifndef TOVAN_LVGET_H
#define TOVAN_LVGET_H

#include "attrs.h"
#include "lvheap.h"

#include <stdint.h>
#include <sys/types.h>

TOVAN_BEGIN_C

// Loads the heap and exports the variables flagged with 0x02. It comes from
// `file`; without one from the file that the environment variable KIVS_FILE
// names, if r, d and c are not given; else from a running kivs (lvpipe).
//   r, d, c   handed to kivs: see lvpipe
//   reload    not 0: release a loaded heap and load again; 0: a loaded heap
//             stays, and nothing happens
//   file      may be null; "-" is standard input, which stays open
//   owner     library, until the next reload: values found before are stale
//             then, and lvsrcdirs() reads its variable anew
//   fails     ends the process; with NAME the file, "-", or the command of
//             kivs behind a "<":
//             "NAME: could not read header"
//             "NAME: header magic not valid"
//             "NAME: could not read kivs heap" (shorter than it states)
//             "NAME: kivs heap is damaged" (positions or texts that lead
//             outside, chains that meet themselves)
//             "NAME: " and the system's text when a file cannot be opened
//             "kivs -p aborted" when kivs ended with another status than 0
//             "export of kivs %s failed" with the variable
//   edge      an empty KIVS_FILE is one; "" for d or c is given; each export
//             costs what setenv() costs, a pass over the environment
void lvget(int r, const char *d, int reload, const char *file, const char *c);

// The function that looks variables up: lvvar, from the first lvget() on; null
// before.
extern const char *(*lvvarrtn)(const char *name);

// The value of a variable by its whole name, subscript included.
//   result    null when it does not exist
//   owner     library, until the next reload
//   fails     before the first load: ends the process with
//             "LOGIC ERROR: lvvar() called before lvget()"
//   edge      of equal names in one chain the first one counts; an entry that
//             a writer put into another chain than its name's is not found
const char *lvvar(const char *name);

// The same, with the flags byte.
//   flags     set to the byte, sign-extended, when the variable exists;
//             untouched otherwise
const char *lvvar_f(const char *name, int *flags);

// Whether an option is on.
//   result    1 when the variable exists and is neither "0" nor "false"
//             (exactly: empty, "00" and "False" are on), else 0
//   fails     as lvvar
int lvoption(const char *name);

// The value of name[PATTERN] whose pattern is best for a key: one that equals
// the key, whatever else there is; else the longest one that matches it as a
// file-name pattern (fmatch), the first one met when several are as long.
//   use_plain  not 0: the variable without a subscript serves when no
//              pattern matches
//   key        without brackets
//   result     null when nothing serves
//   owner      library, until the next reload
//   fails      before the first load: ends the process with
//              "LOGIC ERROR: lvvarmatch() called before lvget()"
//   edge       the key and the pattern are compared with their closing "]"
const char *lvvarmatch(int use_plain, const char *name, const char *key);

// Calls back for each variable: chains 0 to 255, each from its head.
//   mask      0: all; else those whose sign-extended flags share a bit
//   fails     before the first load: ends the process with
//             "LOGIC ERROR: lvwalk() called before lvget()"
//   edge      the callback must not reload the heap
void lvwalk(int mask, lvwalk_rtn callback);

// Two words of the heap's header that only its writer understands: those of
// kivs are the bytes and the lines of the definitions that it read.
//   result    0 before the first load
uint32_t lvgenseek(void);
uint32_t lvgen_lc(void);

// The words of the variable "SrcPath", "." when it is not set, split at
// blanks, tabs and newlines.
//   skip_first  not 0: without the first one, normally the current directory
//   result      null-terminated; may be empty
//   owner       library, until the next load of a heap
//   fails       as lvvar
char **lvsrcdirs(int skip_first);

// Reads until `count` bytes are there.
//   result    the bytes read, fewer than count only at the end of the input;
//             -1 with errno on an error; 0 for a count below 1
int readblk(int descriptor, void *buffer, int count);

// Starts "kivs -p" with its output on a pipe and /dev/null as its input.
//   r         not 0: adds " -r"
//   d, c      not null: adds " -d" and d, " -c" and c; c comes first
//   pid       set to the process, for waitforpid()
//   result    the pipe's read end, above 2 and closed on exec
//   owner     caller, closed with close()
//   fails     ends the process with "pipes(2): " or "fork(2) (for kivs): "
//             and the system's text
//   edge      blanks and shell characters in d and c mean what they mean in
//             a command line
int lvpipe(int r, const char *d, pid_t *pid, const char *c);

// The path of a source file: an absolute or readable name itself, else what
// was recorded for it, else the first readable DIRECTORY/name of the source
// directories but the first one. What was found that way is recorded for the
// rest of the process, other heaps included, and not tested again.
//   fallback  the result when nothing is readable; may be null
//   owner     library: until the next call, or until lvsvsrc() replaces it
//   fails     as lvvar, when the source directories are needed
//   edge      a file of the current directory comes before a recorded one
const char *lvfndsrc(const char *name, const char *fallback);

// Records a path for the name behind its last "/", in place of an earlier
// one.
//   path      copied; need not exist
void lvsvsrc(const char *path);

TOVAN_END_C

#endif
