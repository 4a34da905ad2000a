// room.cc: how strings and arrays grow.
#include "private_room.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"

#include <limits.h>
#include <malloc.h>
#include <stdlib.h>

int tovan::limited_capacity(int64_t wanted, int64_t needed) {
    if (needed > INT_MAX) nocore();
    return wanted > INT_MAX ? INT_MAX : static_cast<int>(wanted);
}

void *tovan::make_room(void *block, size_t size) {
    if (malloc_usable_size(block) >= size) return block;
    void *larger = realloc(block, size + size / 2);
    return larger != nullptr ? larger : chkrealloc(block, size);
}

void tovan::grow_string(dy *string, int64_t step, int64_t needed) {
    char *old = string->capacity != 0 ? string->buffer : nullptr;
    string->capacity = limited_capacity(string->capacity + step, needed);
    size_t size = static_cast<size_t>(string->capacity);
    string->buffer = static_cast<char *>(make_room(old, size));
}

const char *tovan::grow_string_for(dy *string, const char *bytes, size_t k) {
    size_t offset = offset_in(string->buffer, bytes);
    bool is_own = offset < static_cast<size_t>(string->capacity);
    auto added = static_cast<int64_t>(k);
    grow_string(string, step_for(added), string->length + added + 1);
    return is_own ? string->buffer + offset : bytes;
}

TOVAN_IDENT(room, "8.4", "26/11/21")
