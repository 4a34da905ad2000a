// sysnames.h: the names by which the build system knows this machine.
// Builds on: errexit.h, chkalloc.h, strutil.h, dystr.h, dypadd.h, getdylin.h,
// fmatch.h, findfile.h.
//
// Eight names: Name, SysVrs, Base, OS, Release, CPU, Config and Platform. The
// first line of "data/sysnames.tab" (below the installation root) whose
// pattern matches what uname(2) says gives them; docs/formats/system-names.md
// describes the table and the defaults of what a line leaves open.
// Always: one match a process; the record then stays as it is.
// Order: setsysnamestab (when another table is wanted), then sysnames.
// Errors: every failure ends the process, with the table's name and line
// where there is one. The line is the last one of a continued line.
#ifndef TOVAN_SYSNAMES_H
#define TOVAN_SYSNAMES_H

#include "attrs.h"

TOVAN_BEGIN_C

// Matches the host against the table.
//   flags     1: write the table's lines to standard output, words separated
//             by tabs, instead of matching; 2: only tell the table's name;
//             4: trace the search on standard error
//   file      null, or where a copy of the table's name is stored (the
//             caller frees it)
//   result    16 texts, the eight values and then the eight field names; null
//             with flags 1 or 2
//   owner     process; the values may be replaced, not freed
//   fails     "uname() failed, ...", "FILE: ..." (it cannot be opened, or
//             read), "FILE:LINE: last line ends with a backslash",
//             "FILE:LINE: too few fields" (under three values), "FILE:LINE:
//             too many fields" (over seven), "TEXT not matched in FILE"
//   edge      after a match every call gives the record at once, whatever the
//             flags, and leaves file alone
char **sysnames(int flags, char **file);

// Makes sysnames() read this file; null goes back to the installation's.
//   file      kept, not copied: it must outlive the calls of sysnames()
void setsysnamestab(const char *file);

// Replaces a value of the record that is exactly "^".
//   index     0 to 7; any other does nothing
//   value     kept, not copied
//   edge      before a match there is no such value
void set_sys_defl(int index, const char *value);

// Turns blanks into "_".
//   result    the text itself when it has no blank, else a copy
//   owner     caller (free, when it is a copy)
char *unms_fix(char *text);

TOVAN_END_C

#endif
