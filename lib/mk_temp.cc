// mk_temp.cc: names for temporary files.
#include "opentmp.h"

#include "errexit.h"
#include "ident.h"
#include "private_opentmp.h"

#include <errno.h>
#include <unistd.h>

namespace {

constexpr char alphabet[] = "abcdefghijklmnopqrstuvwxyz";
constexpr unsigned process_bits = 0xffff;  // always fits the five digits

bool is_free(const char *path) {
    return access(path, F_OK) == -1 && errno == ENOENT;
}

}  // namespace

char *mk_temp(char *pattern) {
    char *base = tovan::base_of(pattern);
    if (base == nullptr) {
        errexit("Logic error: mktemp('%s') does not end with 'XXXXXX'",
                pattern);
    }
    unsigned process = static_cast<unsigned>(getpid()) & process_bits;
    tovan::put_five_digits(base + 1, process);
    for (const char *letter = alphabet; *letter != '\0'; letter++) {
        *base = *letter;
        if (is_free(pattern)) return pattern;
    }
    return nullptr;
}

TOVAN_IDENT(mk_temp, "8.4", "26/11/22")
