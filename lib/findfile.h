// findfile.h: search paths and the variables in them.
// Builds on: errexit.h, istype.h, strutil.h, dystr.h.
//
// A search path is a list of directories separated by ":" or ";"; empty
// elements do not count. An element may begin with a variable, which ends at
// the first "/": "%NAME/rest" (a variable with a default) or "$NAME/rest"
// (the environment only). A variable holds a search path itself, without
// further variables; each of its elements is taken with the rest behind it.
// Always: a variable that is set in the environment wins, even when empty.
// Errors: a search path without any element ends the process (buildpath); a
// file that is not found shows in the result alone.
#ifndef TOVAN_FINDFILE_H
#define TOVAN_FINDFILE_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

// The installation root that holds without the environment variable MORVA: the
// text behind the eight characters "<<HERE>>", at most 91 characters. An
// installer finds the field in a linked program by that marker and overwrites
// the text in place, its end with NULs; so it is read anew at each use.
extern char default_morva_path[100];

// The value of a path variable: the environment's; the installation root for
// "MORVA"; a built-in one ("PATH" is /bin:/usr/bin:/usr/X11R6/bin); else
// "/usr/" and the name in lower case.
//   use_defaults  0: the environment only
//   buffer    100 bytes, where "/usr/NAME" is built
//   result    null only with use_defaults 0; in the environment, in `buffer`
//             or in a table: valid until that changes
//   owner     library
//   edge      a name longer than 94 characters is cut in "/usr/NAME"
const char *deflvar(const char *name, int use_defaults, char *buffer);

// The installation root.
//   force_default  non-zero: the default, whatever the environment says
//   result    never null; in the environment or in default_morva_path
//   owner     library
const char *deflmorva(int force_default);

// Expands the variables of a search path.
//   output    emptied first; then the elements, separated by ":"
//   path      must not lie in the output's buffer
//   result    the output's buffer, never empty
//   owner     record
//   fails     null, empty, or nothing left: writes "logic error - buildpath()
//             called with NULL path" and a NUL to descriptor 2 and ends the
//             process through lclexit(-1)
char *buildpath(dy *output, const char *path);

// Appends what one element with a variable stands for; buildpath's step.
//   start     the variable's name, just behind the "%" or "$"
//   end       the element's end
//   use_defaults  as for deflvar: 1 for "%", 0 for "$"
//   output    each element is preceded by ":" unless the output is empty
//   edge      a variable without value, or an empty one, adds nothing
// The word is a general one: the library calls the same code by another
// name, so a program may define its own.
void spread(const char *start, const char *end, int use_defaults, dy *output);

// Looks a file up along a search path.
//   file      null or empty: the directories themselves are looked for
//   path      as for buildpath
//   mode      what to give when nothing exists: 0 null; 1 the file in the
//             first directory; -1 that at once, without looking; anything
//             else the last name tried
//   result    the first of directory, "/" and file that exists
//   owner     caller (free)
//   fails     as buildpath
//   edge      a "/" that ends a directory is not doubled, except in the name
//             that modes 1 and -1 fall back on
char *findfile(const char *file, const char *path, int mode);

TOVAN_END_C

#endif
