// lvchksys.cc: conditions over the build tree's variables.
#include "lvexpand.h"

#include "dystr.h"
#include "errexit.h"
#include "evalarit.h"
#include "ident.h"

namespace {

// The expanded condition. Filled by each lvchksys(); the block is kept for
// the next; never released.
constinit dy expanded{};
constexpr int usual_size = 64;  // most conditions fit without growth

}  // namespace

int lvchksys(const char *condition, const char *file, int line) {
    dyreuse(&expanded, usual_size);
    const char *text = lvexpand(condition, &expanded, file, line);
    int value = 0;
    if (evalarith(text, &value, nullptr) != nullptr) {
        errexit("%s:%d:Syntax error in %s", file != nullptr ? file : "", line,
                condition);
    }
    return value;
}

TOVAN_IDENT(lvchksys, "8.4", "26/11/21")
