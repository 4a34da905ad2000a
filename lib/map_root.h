// map_root.h: paths that differ from host to host.
// Builds on: errexit.h, chkalloc.h, strutil.h, dystr.h, dypadd.h, getdylin.h,
// fmatch.h, findfile.h, gethome.h, sysnames.h.
//
// Mapping records say what the beginning of a path becomes. They come from
// two files, "data/roots.map" below the installation root and the user's own
// "roots.map" (or "maproots"); docs/formats/root-maps.md describes them.
// Always: records keep the order in which their from-paths were first met;
// the first one that fits a path counts, not the longest. An all-zero record
// ends the array.
// Order: none; the files are read when the maps are first needed. Records
// that were added before stand before theirs.
// Errors: what is wrong in a file is reported on standard error and left out.
// Only what the conditions in it ask for can end the process (get_host,
// sysnames), or a home directory that is not to be had (home_morva).
#ifndef TOVAN_MAP_ROOT_H
#define TOVAN_MAP_ROOT_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

typedef struct maprec {
    int type;     // 1 "D", 2 "P", 3 "M", 4 "U": the letter in the file
    char *from;   // the beginning to replace
    int fromlen;  // its length
    char *to;     // what replaces it
} maprec;

// Appends a path as it is called on this host: the first record of type 3
// whose from-path is the path, or its beginning before a "/", gives its
// to-path for it; without one the path stays.
//   output    appended to
//   path      must not lie in the output's buffer
void map_root(const char *path, dy *output);

// The records, ended by an all-zero one; reads the files on the first call.
//   owner     library until the next record is added
maprec *load_rootmaps(void);

// Reads the mappings of one file.
//   must_exist  non-zero: a file that cannot be opened is reported, "FILE:
//             cannot open (...)"
//   fails     reported, and the line is left out: "Warning: FILE:LINE:
//             mapping type not one of [MPD]>", "Warning: FILE:LINE: 2nd path
//             not specified"; at a line that cannot be read "Warning:
//             FILE:LINE: ..." with the system's text, and nothing more is read
//   edge      a folder reads as nothing
void load_mappings(const char *file, int must_exist);

// Tells whether the lines behind a condition count.
//   condition  behind its "=" or "!"; its white space is overwritten. File
//             name patterns for the host's name, or, behind an "s", for the
//             Config name of sysnames()
//   invert    0 for "=", 1 for "!"
//   result    a pattern matches: invert; none does: 1 for invert 0, else 0.
//             0 says that the lines count
//   fails     as get_host and sysnames
// Deliberate: the pattern of a host whose name begins with "s" reads as a
// system condition (test chk_host_takes_a_leading_s_for_the_system).
int chk_host(char *condition, int invert);

// Adds a record, or gives the one with the same type and from-path, which
// keeps its place, another to-path.
//   from, to  blocks of the heap; the library's from now on
//   fromlen   the length of from
void add_map(int type, char *from, int fromlen, char *to);

TOVAN_END_C

#endif
