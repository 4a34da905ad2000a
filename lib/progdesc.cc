// progdesc.cc: the description of a program, replaceable by definition.
#include "usage.h"

#include "ident.h"

constinit const char *progdesc = "No program description provided";

TOVAN_IDENT(progdesc, "8.4", "26/11/21")
