// sfdict.h: the dictionary and its substitutions.
// Builds on: errexit.h, chkalloc.h, dystr.h, istype.h, strutil.h, getdylin.h.
//
// The dictionary is a set of names with texts as values. In texts, references
// like "@NAME@" or "@NAME:else@" stand for values. Dictionary files define
// names; docs/formats/dictionary.md has their form and all references.
// Always: a value is a text in which all references are replaced; it is never
// "@NotSet". The dictionary lives until the process ends.
// Order: none; sfdict() and sf_dictext() add to what is there.
// Errors: a wrong line or reference is reported on standard error, counted in
// a result, and passed over; a file that cannot be read, and a second use of
// standard input, end the process.
#ifndef TOVAN_SFDICT_H
#define TOVAN_SFDICT_H

#include "attrs.h"
#include "dystr.h"

#include <stdio.h>

TOVAN_BEGIN_C

// What the references that split a value into lines write at the end of each;
// a NUL: nothing. At first a backslash. Flag lines of fixed files set it.
extern char sf_splitchar;

// Bit 0: every reference is traced on standard output, "where:000012:NAME".
// Bit 1: sfixfile() writes nothing. If any bit is set, errors in the structure
// of a fixed file do not end the process.
extern unsigned char sf_uflag;

// Reads a dictionary file and applies its definitions.
//   path      "-" is standard input
//   result    0, or 1 when a line was wrong: reported as "progname: path:line
//             text" and skipped. Wrong references do not count: sf_proc()
//             reports them, and the value is defined without their results
//   fails     as sf_openfile(); "path: system text" when reading fails. Both
//             end the process
//   edge      a copy of the path stays for ever, for terms to point at
int sfdict(const char *path);

// Applies an operation to a name.
//   name      any text: what a name may be, only sfdict() checks
//   value     a text whose references are replaced first; null: none
//   where     not null; not copied: must stay as long as the dictionary
//   line      with `where`, the place of the definition, used in messages
//   operation 0 set, 1 set if not defined, 2 remove, 3 set if empty, 4 append
//             behind a blank, 5 remove if empty; anything else is 0
//   edge      a name that is not defined is created by all operations but 2,
//             5 included, unless there is no value. Setting without a value
//             removes, and so does setting "@NotSet". Setting the same value
//             keeps the earlier place
void sf_dictext(const char *name, const char *value, const char *where,
                int line, int operation);

// The value of a name.
//   length    of the name; -1: it ends with a NUL
//   where, line  each null, or where the place of the definition goes; null
//             and 0 for a name that is not defined
//   result    for a name that is not defined, the text of sf_setnotset()
//   owner     library until the name is next changed
const char *sf_valvar(const char *name, int length, const char **where,
                      int *line);

// Replaces the references of a text.
//   text      not inside `output`
//   output    where the result is appended; may be a zeroed record
//   reset     not 0: the output is emptied first
//   had_error null, or where 1 goes when a reference was wrong, else 0
//   where, line  the place of the text, for messages ("where:line: what is
//             wrong in 'the text from the name on'") and traces
//   result    the output's buffer
//   edge      of a wrong reference the characters come out as they are, and
//             the text goes on right behind its first "@"
char *sf_proc(const char *text, dy *output, int reset, int *had_error,
              const char *where, int line);

// Opens a file for reading; "-" is standard input, once in a process.
//   owner     caller (fclose; standard input better stays open)
//   fails     "path: cannot open", "cannot use stdin twice" end the process
FILE *sf_openfile(const char *path);

// Writes all terms to standard output in byte order of their names, long
// lines folded at blanks. sfdict() reads the list back, unless `uflag` was
// set, or values start or end with white space, hold newlines or several
// blanks in a row.
//   uflag     not 0: each term starts with its place, "where:000012:"
void sf_putdict(int uflag);

// What undefined names are worth; at first the empty string.
//   value     not copied: must stay. Null: sf_valvar() gives null then, and
//             references take it as empty
void sf_setnotset(const char *value);

TOVAN_END_C

#endif
