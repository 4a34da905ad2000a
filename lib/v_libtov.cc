// v_libtov.cc: the library banner.
#include "ident.h"

extern "C" {
[[gnu::used, gnu::retain]] constinit const char V_Libtovan[] =
    "V@(#)Libtovan 8.4.1(?) Morva(8.4) 2000/06/09 10:29:27 Linux-2.2.14-i686";
}

TOVAN_IDENT(v_libtov, "8.4", "26/11/21")
