// opentmp.h: temporary files, directories and links.
// Builds on: errexit.h, chkalloc.h, trait.h, execstr.h.
//
// Names that nobody else has and files under them, directories with given
// permissions, symbolic links, and the times of a file.
// Always: a file that mkstemp() or opentmp() opens was made by that call: the
// name was free, and no symbolic link led elsewhere.
// Errors: mk_temp() and opentmp() end the process; look-ups give 0, the
// others -1 with errno; makedir() ends the process only where forkcmmd()
// (execstr.h) does. Not for set-user-id programs: TMPDIR is believed.
#ifndef TOVAN_OPENTMP_H
#define TOVAN_OPENTMP_H

#include "attrs.h"

#include <sys/stat.h>
#include <time.h>

TOVAN_BEGIN_C

// A name that is free. It may be taken before a file is made under it: make
// the file with O_EXCL, or let opentmp() do both.
//   pattern   ends in "XXXXXX"; modified: a letter from "a" on, and five
//             digits of the process's id in its low 16 bits ("a04464")
//   result    the pattern, or null when all 26 names are taken, or cannot be
//             told to be free
//   fails     another end: ends the process with "Logic error:
//             mktemp('PATTERN') does not end with 'XXXXXX'"
//   edge      a symbolic link that leads nowhere counts as free
char *mk_temp(char *pattern);

// mkstemp(char *pattern), which <stdlib.h> declares, takes the place of the C
// library's in a program that links this one: it makes a new file, with
// letters and digits in place of the "XXXXXX" at the end of the pattern.
//   result    a descriptor for reading and writing; the file's mode is 0600
//             without the umask's bits
//   owner     caller (close); inherited by commands, as with open(2)
//   fails     after 26 tries, or when the pattern ends in something else: -1
//             with EEXIST whatever the reason was; the pattern is as it was

// The path of a template in the directory for temporary files: TMPDIR, or
// "/tmp", as it was at the first call.
//   owner     caller (free)
char *mktmplate(const char *file);

// Makes a new file with a name after a model.
//   directory null: TMPDIR, or "/tmp" when that is not set
//   model     "x.c" gives "DIRECTORY/x12345a.c": six characters stand before
//             the first "."; at its end when there is none. The first 26
//             names of a process whose id has up to five digits are that id
//             and a letter, all others come from rand(3), seeded with the id
//   mode      of the file, without the umask's bits
//   descriptor  null, or where a descriptor for reading and writing goes;
//             inherited by commands, as with open(2)
//   result    the path
//   owner     caller (free; close)
//   fails     ends the process with "opentmp: PATH: reason"
//   edge      names that are taken, by whatever, are passed over
char *opentmp(const char *directory, const char *model, int mode,
              int *descriptor);

// Makes sure that a directory is there, with these permissions. A missing one
// is made by the program that the trait _T_mkdir names ("mkdir"), run with
// the path as its only argument; what it says goes to standard error.
//   mode      the permissions; bits beyond 0777 do not count
//   keep_umask  0: bits of the process's umask are taken out of the
//             permissions; else the umask is 0 during the call
//   status    where the status of the path goes, as it was before a chmod
//   result    0 when the path is a directory now
//   fails     -1 with errno: that of stat(2) when it does not exist and could
//             not be made, ENOTDIR when it is something else
//   edge      an existing directory gets the permissions too; that this was
//             refused is not reported. The umask is always put back
int makedir(const char *path, int mode, int keep_umask, struct stat *status);

// Sets the times of a file's last access and change, in seconds.
//   result    that of utime(2): 0, or -1 with errno
int futime(const char *path, time_t accessed, time_t modified);

// Whether the path itself is a symbolic link.
//   result    1, or 0 also when nothing is there
int issymlink(const char *path);

// Whether the system has symbolic links: 1.
int gotsymlinks(void);

TOVAN_END_C

#endif
