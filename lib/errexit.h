// errexit.h: reporting failures and leaving.
// Builds on: nothing.
//
// A tool sets `progname` once, first thing. Fatal messages carry it as a
// prefix, warnings carry what their caller gives. Every fatal path ends in
// lclexit(), which first runs the tool's exit hook; only nocore() aborts.
// Order: progname, set_exit_rtn, then anything.
// Errors: these functions are the error rule of the library.
#ifndef TOVAN_ERREXIT_H
#define TOVAN_ERREXIT_H

#include "attrs.h"

#include <sys/types.h>

TOVAN_BEGIN_C

// The running tool's name; null until the tool sets it. The library reads it
// and never writes it (the test driver excepted).
extern const char *progname;

// Texts of the application's own error numbers: -1 is entry 0, -2 entry 1.
// A program may define both itself, or assign both. As shipped: one entry,
// "usually suppressed".
extern const char *const *app_errlist;
extern int app_nerr;

// Writes "progname: ", the message and a newline to standard error and ends
// the process with status 255. Without a progname the prefix is left out.
TOVAN_NORETURN void errexit(const char *format, ...) TOVAN_PRINTF(1, 2);

// The same, ending with `status`.
TOVAN_NORETURN void errorexit(int status, const char *format, ...)
    TOVAN_PRINTF(2, 3);

// Writes the message and a newline to standard error and flushes it. No
// program name is added.
//   result    that of the flush: 0, or EOF with errno
//   edge      the name is also one of the C library's, with other arguments:
//             after <error.h>, or with TOVAN_NO_ERROR defined, this
//             declaration steps back; tovan_error is the same function. A
//             program that means the other one links it first (-Wl,-lc -ltovan)
#if !defined(TOVAN_NO_ERROR) && !defined(_ERROR_H)
int error(const char *format, ...) TOVAN_PRINTF(1, 2);
#endif
int tovan_error(const char *format, ...) TOVAN_PRINTF(1, 2);

// As error(), without the newline.
int eprintf(const char *format, ...) TOVAN_PRINTF(1, 2);

// The text of an error number: negative ones from app_errlist, others from
// the system.
//   result    never null; a text of the table or of the C library
//   edge      above 32766, or below -app_nerr: "Unknown error"
const char *errmsg(int number);

// errmsg() of the current errno.
const char *syserr(void);

// Passes a system call's result through.
//   fails     result -1: ends the process with "description: system text"
int errcheck(int result, const char *description);

// Passes a pointer through.
//   fails     null: ends the process with "description: system text"
void *ferrcheck(void *pointer, const char *description);

// Runs the exit hook with the status, then exit(status).
TOVAN_NORETURN void lclexit(int status);

// Replaces the one exit hook; null removes it.
//   result    0
int set_exit_rtn(void (*hook)(int status));

// Sets errno (negative numbers name app_errlist entries).
//   result    -1, so that a function can fail as a system call does
int fakesyserr(int number);

// Writes progname and ": Ran out of memory" with write(2) and aborts. No
// memory is touched and no hook runs; progname must be set.
TOVAN_NORETURN void nocore(void);

// Sets an environment variable; a null value removes it.
//   result    that of setenv(3); 0 for a removal
int newexport(const char *name, const char *value);

// Reaps one finished child without waiting.
//   result    its process id, 0 when none has ended, -1 with errno
pid_t zombie(int *status);

// Does nothing: a reference for tools that must link something.
void fakeuse(void);

// Does nothing; called before the library starts a child to load variables.
//   result    0
int sanemode(void);

TOVAN_END_C

#endif
