// chkalloc.cc: heap requests that never come back null.
#include "chkalloc.h"

#include "errexit.h"
#include "ident.h"

#include <stdlib.h>

namespace {

void *or_nocore(void *block) {
    if (block == nullptr) nocore();
    return block;
}

// Chosen: nothing is served as one byte. For 0 bytes the system may answer
// null (and realloc release the block), which is no sign of exhaustion.
size_t at_least_one(size_t size) {
    return size != 0 ? size : 1;
}

}  // namespace

void *chkalloc(size_t size) {
    return or_nocore(malloc(at_least_one(size)));
}

void *chkrealloc(void *block, size_t size) {
    return or_nocore(realloc(block, at_least_one(size)));
}

TOVAN_IDENT(chkalloc, "8.4", "26/11/21")
