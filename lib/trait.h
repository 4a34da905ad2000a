// trait.h: per-host settings.
// Builds on: errexit.h, chkalloc.h, dystr.h, findfile.h, gethome.h, lvheap.h,
// execstr.h.
//
// Limits and properties of this host, such as the longest file-name component
// (MAXLEAFLEN) or the shell's name (_T_sh). They lie in one file a host, in
// the format of the variable heap (docs/formats/traits.md), made by
// "mktraits -u". An environment variable of a trait's name overrides it.
// Always: the file's name, the table and MAXLEAFLEN are found once and hold
// for the process; a load that failed is not tried again.
// Order: none; the first look-up that the environment does not answer loads.
// Loading may run a command, and running a command asks for traits: this
// family and execstr.h call each other.
// Errors: a missing file that cannot be made, or an unreadable one, is a
// warning and look-ups give their defaults; a damaged one ends the process.
#ifndef TOVAN_TRAIT_H
#define TOVAN_TRAIT_H

#include "attrs.h"
#include "lvheap.h"

TOVAN_BEGIN_C

// The name of the traits file: TRAITS_FILE, or the host's name up to its
// first "." and ".tab" in the folder data/traits of the installation root.
//   unused    not examined
//   owner     process
//   fails     ends the process: "<morva-root>/data/traits directory does not
//             exist"
const char *traits_file(int unused);

// Loads the traits, at the first call.
//   result    1 when they are loaded, 0 when they cannot be
//   fails     ends the process: "FILE ($TRAITS_FILE): cannot open, ...";
//             "FILE: could not read header", "FILE: header magic not valid",
//             "FILE: could not read kivs heap", "FILE: kivs heap is damaged"
//   edge      a missing file is made by running "mktraits -u" with the
//             standard descriptors. That it failed, or that the file is not
//             readable, is one warning on standard error
int readtab(void);

// A trait's value in the file, whatever the environment says.
//   owner     process
//   fails     null: no such trait, or no traits; else as readtab()
const char *trvar(const char *name);

// A trait's value: the environment's, else the file's, else the fallback.
//   fallback  may be null
//   must      whether a trait without a value ends the process
//   owner     the environment, process, or caller (the fallback)
//   fails     ends the process: "NAME: trait not in table"; as readtab()
//   edge      set but empty in the environment is a value. One that the
//             environment gives loads nothing
const char *trait_str(const char *name, const char *fallback, int must);

// The same as a number, read like strtol(3) with base 10.
//   edge      a number beyond an int is the nearest int
int trait(const char *name, int fallback, int must);

// The longest file-name component of this host: the trait MAXLEAFLEN, or 14.
int maxleaf(void);

// Calls back for every trait of the file: buckets in order, each chain from
// its head.
//   mask      0, or flags of which an entry must have one
//   callback  gets bucket, flags, name, and the value in force: the
//             environment's, else the file's
//   result    the last callback's; 0 when there was none
//   fails     as readtab(); traits that cannot be loaded are none
int traitwalk(int mask, lvwalk_rtn callback);

TOVAN_END_C

#endif
