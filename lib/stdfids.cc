// stdfids.cc: three descriptors in their places.
#include "execstr.h"

#include "errexit.h"
#include "ident.h"
#include "private_execstr.h"

#include <unistd.h>

namespace {

constexpr char dup_failed[] = "forkcmmd() dup(2)";
constexpr char dup2_failed[] = "forkcmmd() dup2(2)";

// Replaces a descriptor by a copy when it stands on the forbidden number.
bool move_off(int &descriptor, int forbidden) {
    if (descriptor != forbidden) return true;
    int copy = dup(descriptor);
    if (copy == -1) return false;
    descriptor = copy;
    return true;
}

void close_above_standard(int descriptor) {
    if (descriptor > 2) close(descriptor);
}

}  // namespace

const char *tovan::place_descriptors(int in, int out, int err) {
    if (in != 0) {
        if (!move_off(out, 0) || !move_off(err, 0)) return dup_failed;
        if (dup_onto(in, 0) == -1) return dup2_failed;
    }
    if (out != 1) {
        if (!move_off(err, 1)) return dup_failed;
        if (dup_onto(out, 1) == -1) return dup2_failed;
    }
    if (err != 2 && dup_onto(err, 2) == -1) return dup2_failed;
    close_above_standard(in);
    close_above_standard(out);
    close_above_standard(err);
    return nullptr;
}

void setstdfids(int in, int out, int err) {
    const char *failure = tovan::place_descriptors(in, out, err);
    if (failure != nullptr) errcheck(-1, failure);
}

int tovan::protect(int descriptor, int forbidden) {
    if (!move_off(descriptor, forbidden)) errcheck(-1, dup_failed);
    return descriptor;
}

TOVAN_IDENT(stdfids, "8.4", "26/11/21")
