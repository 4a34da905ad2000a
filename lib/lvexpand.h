// lvexpand.h: the expansion language.
// Builds on: many families of the configuration layer.
#ifndef TOVAN_LVEXPAND_H
#define TOVAN_LVEXPAND_H

#include "attrs.h"
#include "dypadd.h"
#include "dystr.h"

TOVAN_BEGIN_C

typedef struct funct {
    const char *name;
    void (*handler)(char *argument, dy *output);
} funct;

extern const funct functs[]; /* ascending names, ended by a null name */
extern const char *curfile;
extern int curln;

char *lvexpand(const char *text, dy *output, const char *file, int line);
char *varexpand(char *text, dy *output);
char *function(char *text, dy *output);
int runfunc(char *text, dy *output);
char **splitlist(dyp *array, char *text);
TOVAN_NORETURN void lverror(const char *format, ...) TOVAN_PRINTF(1, 2);
void lvwarning(const char *format, ...) TOVAN_PRINTF(1, 2);
int lvchksys(const char *condition, const char *file, int line);
/* the handlers of functs, one a name */
void lvfn_dosfile(char *argument, dy *output);
void lvfn_empty(char *argument, dy *output);
void lvfn_env(char *argument, dy *output);
void lvfn_exists(char *argument, dy *output);
void lvfn_expr(char *argument, dy *output);
void lvfn_findfile(char *argument, dy *output);
void lvfn_home(char *argument, dy *output);
void lvfn_insert(char *argument, dy *output);
void lvfn_isdir(char *argument, dy *output);
void lvfn_ixfile(char *argument, dy *output);
void lvfn_kivset(char *argument, dy *output);
void lvfn_lvset(char *argument, dy *output);
void lvfn_maproot(char *argument, dy *output);
void lvfn_match(char *argument, dy *output);
void lvfn_notempty(char *argument, dy *output);
void lvfn_option(char *argument, dy *output);
void lvfn_paths(char *argument, dy *output);
void lvfn_prog(char *argument, dy *output);
void lvfn_resolve(char *argument, dy *output);
void lvfn_rootoftype(char *argument, dy *output);
void lvfn_splitpath(char *argument, dy *output);
void lvfn_sys(char *argument, dy *output);
void lvfn_take1st(char *argument, dy *output);
void lvfn_trait(char *argument, dy *output);
void lvfn_value(char *argument, dy *output);
void lvfn_varmatch(char *argument, dy *output);

TOVAN_END_C

#endif
