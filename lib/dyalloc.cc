// dyalloc.cc: spare string records.
#include "dystr.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_room.h"

#include <stdlib.h>

namespace {

constexpr int refill_count = 127;

// Records to spare, with the small buffers that some kept. Filled 127 at a
// time and by dyfree(); kept by the process.
struct string_pool {
    dy *spare;
    int initial;  // size of a new buffer
    int retain;   // buffers of this capacity or more are released
};
constinit string_pool pool = {nullptr, 56, 120};

void refill() {
    dy *records = static_cast<dy *>(chkalloc(refill_count * sizeof(dy)));
    for (int i = 0; i < refill_count; i++) {
        records[i] = {0, 1, pool.spare, 0, nullptr};
        pool.spare = &records[i];
    }
}

// The block has room for one step of growth already: a string that needs it
// loses its buffer in dyfree(), and would be reallocated each time.
void give_buffer(dy *string) {
    auto size = static_cast<size_t>(pool.initial) + tovan::string_step;
    string->buffer = static_cast<char *>(chkalloc(size));
    string->capacity = pool.initial;
}

}  // namespace

dy *dyalloc(void) {
    if (pool.spare == nullptr) refill();
    dy *string = pool.spare;
    pool.spare = string->next;
    string->next = nullptr;
    string->length = 0;
    string->marker = 1;
    if (string->capacity == 0) give_buffer(string);
    string->buffer[0] = '\0';
    return string;
}

void dyfree(dy *string) {
    if (string->capacity >= pool.retain) {
        free(string->buffer);
        string->capacity = 0;
        string->buffer = nullptr;
    }
    string->next = pool.spare;
    pool.spare = string;
}

void dyalloc_sizes(int initial, int retain) {
    if (initial > 0) pool.initial = initial;
    if (retain > 0) pool.retain = retain;
}

TOVAN_IDENT(dyalloc, "8.4", "26/11/21")
