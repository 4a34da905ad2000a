// wait4pid.h: process waiting and signals.
// Builds on: chkalloc.h.
//
// Waiting for one particular child while others may end, keeping interrupt
// and termination away from a tool whose command runs, and signal names.
// Always: a child is reaped once; the status of one that was reaped while
// another was waited for is kept until somebody asks for it.
// Order: simulate_waitpid (if at all) before the first wait; savesigs with
// operation 0 before the others.
// Errors: waits give -1 with errno, look-ups -1.
#ifndef TOVAN_WAIT4PID_H
#define TOVAN_WAIT4PID_H

#include "attrs.h"

#include <sys/types.h>

TOVAN_BEGIN_C

// Waits until a child ends; signals do not cut the wait short.
//   pid       a child's process id, or -1 for any child
//   status    where the wait status goes; may be null
//   result    the process id reaped
//   fails     -1 with errno (ECHILD: there is no such child), *status as it
//             was
pid_t waitforpid(pid_t pid, int *status);

// waitpid(2) without options, built on wait(2) alone. Children that end while
// another one is waited for are kept, the newest first.
//   pid       a child's process id, or -1 for any: the newest one kept, or
//             when none is kept, the next that ends
//   status    where the wait status goes; may be null
//   result    the process id; at once, without a system call, for a kept one
//   fails     -1 with errno, EINTR included
//   edge      0 and numbers below -1 name no process group: every child is
//             reaped and kept, then -1
pid_t wait4pid(pid_t pid, int *status);

// Makes waitforpid() wait through wait4pid() for the rest of the process.
void simulate_waitpid(void);

// Keeps the dispositions of SIGINT and SIGTERM. forkcmmd() ignores both
// signals with slot 0 while its command runs, and restores slot 1 in the
// child; a tool that wants this records both slots when it starts.
//   slot      0 or 1
//   operation 0 records what is in force, changing nothing; -1 ignores both
//             signals; anything else puts back what was recorded
//   edge      a slot never recorded: operations other than 0 do
//             nothing. A handler that is put back has the semantics of
//             System V: it is reset when it runs, and its signal not blocked
void savesigs(int slot, int operation);

// The number of a signal.
//   text      a name in upper case without "SIG", or a decimal number
//   result    the number; a number in digits is not looked up
//   fails     -1: unknown name, 0, digits followed by anything, a number
//             beyond an int
int whichsig(const char *text);

// The name of a signal, without "SIG".
//   result    the first of its names ("ABRT" for 6, "IO" for 29), or "#N"
//   owner     process; "#N" the library's until the next call
const char *signame(int number);

// The largest number that has a name: 30.
int highest_sig(void);

// The signal by which a terminal stops a process: 20.
int stopsignum(void);

TOVAN_END_C

#endif
