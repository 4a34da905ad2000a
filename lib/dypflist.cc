// dypflist.cc: spare pointer-array records.
#include "dypadd.h"

#include "chkalloc.h"
#include "ident.h"

#include <stdlib.h>

namespace {

constexpr int refill_count = 15;
constexpr int most_slots_kept = 30;

// Records to spare, some with the small array that they kept. Filled 15 at a
// time and by releases; kept by the process.
constinit dyp *spare = nullptr;

void refill() {
    dyp *records = static_cast<dyp *>(chkalloc(refill_count * sizeof(dyp)));
    for (int i = 0; i < refill_count; i++) {
        records[i] = {0, 0, spare, 0, nullptr};
        spare = &records[i];
    }
}

void put_back(dyp *array) {
    if (array->capacity > most_slots_kept) {
        free(array->array);
        array->capacity = 0;
        array->array = nullptr;
    }
    array->next = spare;
    spare = array;
}

}  // namespace

dyp *dypflist(dyp *array) {
    if (array != nullptr) {
        put_back(array);
        return nullptr;
    }
    if (spare == nullptr) refill();
    array = spare;
    spare = array->next;
    array->next = nullptr;
    dypreuse(array);
    return array;
}

TOVAN_IDENT(dypflist, "8.4", "26/11/21")
