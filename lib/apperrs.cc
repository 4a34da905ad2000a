// apperrs.cc: the application's error texts, replaceable by definition.
#include "errexit.h"

#include "ident.h"

namespace {

constinit const char *const shipped[] = {"usually suppressed"};

}  // namespace

constinit const char *const *app_errlist = shipped;
constinit int app_nerr = 1;

TOVAN_IDENT(apperrs, "8.4", "26/11/21")
