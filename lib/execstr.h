// execstr.h: command execution.
// Builds on: errexit.h, chkalloc.h, dystr.h, dypadd.h, wait4pid.h, trait.h.
//
// Runs commands for the library and for its tools: a line as people write it
// (execstr), an argument vector in a child (forkcmmd) or in place of this
// process (execcmmd). The command's standard input, output and error are
// given as descriptors.
// Always: argument vectors end with a null pointer, hold at least one word,
// and have one writable slot before their first element: the shell goes there
// when the file turns out to be a script without an interpreter line.
// Order: closeonfork() and the slots of savesigs() (wait4pid.h), then
// commands. Traits name the shells (_T_sh, _T_binsh), and are themselves made
// by a command: this family and trait.h call each other.
// Errors: everything that keeps a command from running ends the process that
// was to become it, through errexit(), after the exit hook: in forkcmmd() and
// in execstr() with fork flag that is the child, whose status the caller
// sees. A command line has no syntax errors: an unclosed quote ends with it.
#ifndef TOVAN_EXECSTR_H
#define TOVAN_EXECSTR_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

// Runs a command line: splits it into words itself, and hands it to the
// shell only when it has more than words (see split.cc for the rules).
//   in, out, err  descriptors that become the command's 0, 1, 2
//   forks     0: the command replaces this process, and the call does not
//             return; else it runs in a child
//   dash_e    for a line that needs the shell: whether it stops at the first
//             command that fails
//   command   the line; leading white space is skipped
//   result    the wait status of the command
//   fails     as forkcmmd() and execcmmd()
//   edge      a first word "exec" is dropped. A line without words starts
//             nothing: 0, or without fork lclexit(0)
int execstr(int in, int out, int err, int forks, int dash_e,
            const char *command);

// Runs a command in a child and waits for it. Standard output and error are
// flushed first. While the command runs SIGINT and SIGTERM are ignored if
// slot 0 of savesigs() is recorded; the child restores slot 1, closes the
// descriptors registered with closeonfork(), and of in, out and err those
// above 2.
//   argv      the words; argv[-1] is writable
//   result    the wait status; 255 as its exit status when the command could
//             not be run (the child has said why); -1 when the child cannot
//             be waited for
//   fails     ends the process: "forkcmmd() fork(2): ..."
//   edge      PATH is read by the child, unless getpath() was called here
int forkcmmd(int in, int out, int err, char **argv);

// Replaces this process with a command. Standard output and error are
// flushed, the descriptors put in place with setstdfids().
//   argv      the words; argv[-1] is writable. A name with a "/" is tried as
//             it is, others in each directory of getpath()
//   fails     ends the process: "NAME: not found", or "NAME: file not
//             executable" when a candidate was refused, or "NAME: arg list
//             too long" when one was too long; at once "NAME: too large",
//             "NAME: text busy" after 210 seconds of retries, or "SHELL: No
//             shell! See errNoshell(x-vopmisc)"
//   edge      a file in no executable format is run by the shell of the
//             trait _T_binsh, looked up once
TOVAN_NORETURN void execcmmd(int in, int out, int err, char **argv);

// Registers descriptors that no command shall inherit.
//   operation 0 registers, 1 unregisters, 2 closes all that are registered
//             (in the child of forkcmmd(); they stay registered)
//   descriptor  which one; not looked at by operation 2
//   fails     a 130th one ends the process: "LOGIC ERROR - closeonfork()
//             table full"
//   edge      registering twice counts once
void closeonfork(int operation, int descriptor);

// The search path: PATH as it was at the first call, or
// "/bin:/usr/bin:/usr/X11R6/bin" when it was unset.
//   owner     process
const char *getpath(void);

// Forms the next candidate for a command: the path's first element, a "/"
// unless the element is empty, and the name.
//   path      a position in a path; elements are separated by ":"
//   candidate where it goes; a record in use, emptied first, or a zeroed one
//   result    the position of the following element, or null when this was
//             the last
//   owner     caller, of the candidate's buffer
const char *tryfile(const char *path, const char *name, dy *candidate);

// Makes three descriptors 0, 1 and 2, whatever their order, and closes those
// that are above 2.
//   fails     ends the process: "forkcmmd() dup(2): ..." or "forkcmmd()
//             dup2(2): ..."
//   edge      one that is in its place already is not touched, open or not
void setstdfids(int in, int out, int err);

// Keeps a descriptor off a number.
//   result    the descriptor, or a copy of it when it is the forbidden one
//   owner     caller, of the copy and of the original
//   fails     ends the process: "forkcmmd() dup(2): ..."
int protect(int descriptor, int forbidden);

// The library also provides dup2, as <unistd.h> declares it, made of
// fcntl(2).
//   result    the new number
//   fails     -1 with errno when the old descriptor is not open (the new one
//             is untouched), or the new number is none
//   edge      an open descriptor onto itself: nothing is closed

TOVAN_END_C

#endif
