// lvexpand.h: the expansion language.
// Builds on: errexit.h, chkalloc.h, istype.h, strutil.h, dystr.h, dypadd.h,
//   evalarit.h, fmatch.h, trait.h, execstr.h, simplify.h, map_root.h, lvget.h,
//   dospath.h.
//
// Texts of the build tree (values, file names, command lines) refer to its
// variables and to built-in functions behind an "@":
//
//     cc -c @Flags[@Kind] @(findfile main.c)
//
// docs/expansion.md is the language's reference, with examples.
//
// Always: results are appended to a string of the caller's; what is in it
// stays. White space is blank, tab and newline, nothing else. Depth of nesting
// costs heap, not stack, and time is linear in text and results.
// Order: lvget() comes before anything that looks a variable up.
// Errors: a wrong text ends the process through lverror(); what is not found
// is not an error.
#ifndef TOVAN_LVEXPAND_H
#define TOVAN_LVEXPAND_H

#include "attrs.h"
#include "dypadd.h"
#include "dystr.h"

TOVAN_BEGIN_C

// One function of the language: what "@(name argument)" runs.
//   name      null in the record that ends the table
//   handler   called with the argument, already expanded and without white
//             space around it, which it may cut up; appends its result
typedef struct funct {
    const char *name;
    void (*handler)(char *argument, dy *output);
} funct;

// The 26 functions in ascending byte order of their names, and an end record.
extern const funct functs[];

// Where the text that is being expanded comes from, for messages: a file, and
// a line or 0. Set by lvexpand(), and free to be set by the tool.
//   owner     curfile: caller; must last while texts are expanded
//   edge      null as shipped; a null file prints as nothing
extern const char *curfile;
extern int curln;

// Expands a text.
//   text      only read; may lie in the output's own buffer
//   output    gets the expansion, without white space at its two ends
//   file      kept in curfile; may be null
//   line      kept in curln; 0: no line
//   result    the output's buffer
//   fails     ends the process through lverror(): "no closing ]",
//             "unbalanced ')'", "unsupported kivs function `%s'", and what the
//             functions report; a variable looked up before lvget() is fatal
char *lvexpand(const char *text, dy *output, const char *file, int line);

// Expands a text as lvexpand() does, leaving curfile and curln alone.
//   text      as it was when the call returns; not in the output's buffer
//   result    the output's buffer
//   fails     as lvexpand()
char *varexpand(char *text, dy *output);

// Runs the call whose text begins here: expands it, and appends the function's
// result.
//   text      just behind "@("; as it was when the call returns
//   result    behind the matching ")"
//   fails     as lvexpand()
//   edge      a general word: a program may have a `function` of its own, the
//             library does not call this one
char *function(char *text, dy *output);

// Runs the function of an expanded call.
//   text      its name, white space, its argument; cut behind the name
//   result    0, or 1 when no function has that name
//   fails     as the function
//   edge      a text that begins with white space names no function
int runfunc(char *text, dy *output);

// Adds the words of a text, each ended by a null in the text.
//   array     live (dypnew or dypreuse)
//   result    the array's vector, null-terminated
//   owner     text: the words lie in it
char **splitlist(dyp *array, char *text);

// Writes "tool:file:line: message" and a newline to standard error (without
// the line when curln is 0) and ends the process with "aborted due to above
// error in kivs expansion", status 255.
TOVAN_NORETURN void lverror(const char *format, ...) TOVAN_PRINTF(1, 2);

// Writes "tool:file:line: message" and a newline to standard error.
//   edge      without a line: "tool:file: Warning: message"; the word is left
//             out when there is a line
void lvwarning(const char *format, ...) TOVAN_PRINTF(1, 2);

// The value of a condition: an arithmetic expression once it is expanded.
//   fails     "%s:%d:Syntax error in %s", with the condition as it was given,
//             ends the process, and what lvexpand() reports
int lvchksys(const char *condition, const char *file, int line);

// The handlers of functs. Each takes the argument of its function, which it
// may cut up, and appends its result to the output; "truth" is "1" or "0",
// words are separated by white space, and lists of results by one blank.
// Messages are those of lverror().

// Path words in drive-letter form; a first word "-N", N a digit, is the mode
// of dospath(), otherwise 0.
void lvfn_dosfile(char *argument, dy *output);

// Truth: the argument is empty.
void lvfn_empty(char *argument, dy *output);

// An environment variable's value, nothing when it is not set.
void lvfn_env(char *argument, dy *output);

// Truth: the path exists.
void lvfn_exists(char *argument, dy *output);

// The value of an arithmetic expression, in decimal.
//   fails     "Syntax or interpretation error in `%s'"
void lvfn_expr(char *argument, dy *output);

// The first readable file of that name in the directories that follow it, or
// else in those of SrcPath. The name itself when there is none, or when it
// begins with "/"; nothing without a name.
void lvfn_findfile(char *argument, dy *output);

// Always fails: "@(home ...) not supported in this program".
void lvfn_home(char *argument, dy *output);

// Each word of a list with something before and behind it. The argument is a
// delimiter character, a template in which the first "%" stands for the word,
// the delimiter again, and the words.
//   fails     "missing argument for @(insert ...)", "missing terminator for
//             @(insert %c...)", "@(insert ...) argument does not contain `%'"
void lvfn_insert(char *argument, dy *output);

// Truth: the path is a directory.
void lvfn_isdir(char *argument, dy *output);

// Path words in the tree's own form (ixpath).
void lvfn_ixfile(char *argument, dy *output);

// Truth: the variable is set.
void lvfn_kivset(char *argument, dy *output);

// As lvfn_kivset, after lvwarning("@(lvset ...) obsolete; change to
// @(kivset ...)").
void lvfn_lvset(char *argument, dy *output);

// Path words with their roots mapped (map_root).
void lvfn_maproot(char *argument, dy *output);

// Truth: patmatch() of the words.
void lvfn_match(char *argument, dy *output);

// Truth: the argument is not empty.
void lvfn_notempty(char *argument, dy *output);

// Truth: the option is on (lvoption).
void lvfn_option(char *argument, dy *output);

// The paths that a file would have in the directories that follow it, or else
// in those of SrcPath, whether it exists or not; a file that begins with "/"
// as it is.
//   fails     "@(paths ...) invoked without arguments"
void lvfn_paths(char *argument, dy *output);

// Truth: the name is that of an executable program. A name with "/" is tried
// as it is, others in each element of PATH; an empty element tries the bare
// name.
//   edge      PATH ("/bin" when it is not set) is read at the first need and
//             remembered for the process
void lvfn_prog(char *argument, dy *output);

// The path seen from CurDir, without ".", ".." and doubled slashes.
//   fails     "@(resolve ...) invoked without an argument", "@(resolve ...)
//             invoked with multiple arguments"
//   edge      CurDir is read at the first need and remembered for the process;
//             not set, it is the current directory. Symbolic links are not
//             looked at
void lvfn_resolve(char *argument, dy *output);

// The first root of RootPath whose TreeType[root] is the argument; nothing
// when there is none.
//   fails     "@(rootoftype ...) invoked without an argument"
//   edge      RootPath ("/" when it is not set) is read at the first need and
//             remembered for the process
void lvfn_rootoftype(char *argument, dy *output);

// The elements of a path list: separated by ":", or by ";" after an option
// "-s" ("-c" is for ":").
//   edge      white space inside an element stays; a separator at the end
//             leaves its blank
void lvfn_splitpath(char *argument, dy *output);

// Truth: System[Name] matches one of the words as a file-name pattern.
//   edge      System[Name] is read at the first need and remembered for the
//             process; not set, it matches nothing
void lvfn_sys(char *argument, dy *output);

// The first word.
void lvfn_take1st(char *argument, dy *output);

// A trait's value, nothing when there is none (trait_str).
void lvfn_trait(char *argument, dy *output);

// A variable's value, or else what follows its name.
void lvfn_value(char *argument, dy *output);

// The value that lvvarmatch() finds for the last two words, name and key; a
// word before them is the mode, "0" or "1" (also "-d").
//   fails     "@(varmatch ...) invoked without arguments", "@(varmatch ...)
//             invoked with wrong number of arguments"
void lvfn_varmatch(char *argument, dy *output);

TOVAN_END_C

#endif
