// ddbmhash.cc: the hash that chooses the page of a key.
#include "ddbm.h"

#include "ident.h"

namespace {

constexpr uint32_t factor = 65599;  // on disk: do not change

}  // namespace

uint32_t dbm_hash(const char *bytes, int length) {
    uint32_t hash = 0;
    for (int i = 0; i < length; ++i) {
        auto addend = static_cast<signed char>(bytes[i]);
        hash = static_cast<uint32_t>(addend) + factor * hash;
    }
    return hash;
}

TOVAN_IDENT(ddbmhash, "8.4", "26/11/22")
