// tovan.h: the whole library.
#ifndef TOVAN_TOVAN_H
#define TOVAN_TOVAN_H

#include "attrs.h"

#include "chkalloc.h"
#include "convert.h"
#include "cpioput.h"
#include "ddbm.h"
#include "ddt.h"
#include "dospath.h"
#include "dypadd.h"
#include "dystr.h"
#include "errexit.h"
#include "evalarit.h"
#include "execstr.h"
#include "fastout.h"
#include "findfile.h"
#include "fmatch.h"
#include "getdylin.h"
#include "gethome.h"
#include "globber.h"
#include "istype.h"
#include "kdbminit.h"
#include "ldbminit.h"
#include "lvexpand.h"
#include "lvget.h"
#include "lvheap.h"
#include "map_root.h"
#include "opentmp.h"
#include "rxpcomp.h"
#include "sfdict.h"
#include "sfixfile.h"
#include "simplify.h"
#include "strutil.h"
#include "sysnames.h"
#include "tarout.h"
#include "testdrvr.h"
#include "trait.h"
#include "u_arlist.h"
#include "usage.h"
#include "wait4pid.h"

TOVAN_BEGIN_C

// The library banner.
extern const char V_Libtovan[];

// The identification strings of all sources in byte order of their names,
// without a terminator. Linking it links the whole library.
extern const char *const libtovan_list[];

TOVAN_END_C

#endif
