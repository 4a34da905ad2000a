// lvsrcdir.cc: the build tree's source directories.
#include "lvget.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "ident.h"
#include "private_lvget.h"

#include <stdlib.h>

namespace {

enum cache_status { not_built, built, outdated };

// Element 0 is a copy of "SrcPath", the others are its words. Filled by
// lvsrcdirs(); holds until the next load of a heap; the copy is released when
// the next one is made.
struct source_directories {
    dyp words;
    cache_status status;
};
constinit source_directories directories{};

void build_directories() {
    const char *value = lvvar("SrcPath");
    if (directories.status == outdated) free(directories.words.array[0]);
    char *copy = savestr(value != nullptr ? value : ".");
    dypreuse(&directories.words);
    dypadd(&directories.words, copy);
    dypsplit(&directories.words, copy, 0);
    directories.status = built;
}

}  // namespace

void tovan::outdate_source_directories() {
    if (directories.status != not_built) directories.status = outdated;
}

char **lvsrcdirs(int skip_first) {
    if (directories.status != built) build_directories();
    int first = skip_first != 0 ? 2 : 1;
    if (first > directories.words.count) first = directories.words.count;
    return reinterpret_cast<char **>(directories.words.array + first);
}

TOVAN_IDENT(lvsrcdir, "8.4", "26/11/21")
