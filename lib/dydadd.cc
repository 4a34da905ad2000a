// dydadd.cc: growing arrays of elements of any fixed size.
#include "dypadd.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_room.h"

#include <limits.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr int element_step = 8;
constexpr int first_elements = 7;
constexpr int refill_count = 15;
constexpr size_t most_bytes_kept = 120;

// Records to spare, some with the small buffer that they kept. Filled 15 at a
// time and by releases; kept by the process.
constinit dyd *spare = nullptr;

size_t bytes_of(const dyd *array, int elements) {
    return static_cast<size_t>(elements) *
           static_cast<size_t>(array->element_size);
}

char *element_at(const dyd *array, int index) {
    return static_cast<char *>(array->data) + bytes_of(array, index);
}

void zero_element(const dyd *array, int index) {
    memset(element_at(array, index), 0, bytes_of(array, 1));
}

void start_empty(dyd *array, int capacity) {
    array->capacity = capacity;
    array->data = chkalloc(bytes_of(array, capacity));
}

// Room for one more element, which may be one of the array's own: growth
// moves it.
//   result    where the element is now
const void *grow_for(dyd *array, const void *element) {
    size_t held = bytes_of(array, array->capacity);
    size_t offset = tovan::offset_in(array->data, element);
    array->capacity = tovan::limited_capacity(
        int64_t{array->capacity} + element_step, int64_t{array->count} + 2);
    array->data = tovan::make_room(array->capacity != 0 ? array->data : nullptr,
                                   bytes_of(array, array->capacity));
    return offset < held ? static_cast<char *>(array->data) + offset : element;
}

void refill() {
    dyd *records = static_cast<dyd *>(chkalloc(refill_count * sizeof(dyd)));
    for (int i = 0; i < refill_count; i++) {
        records[i] = {0, 0, 0, spare, 0, nullptr};
        spare = &records[i];
    }
}

void put_back(dyd *array) {
    if (bytes_of(array, array->capacity) > most_bytes_kept) {
        free(array->data);
        array->capacity = 0;
        array->data = nullptr;
    }
    array->next = spare;
    spare = array;
}

}  // namespace

void *dydnew(dyd *array, int capacity, int element_size) {
    *array = {0, 0, element_size, nullptr, 0, nullptr};
    start_empty(array, capacity);
    zero_element(array, 0);
    return array->data;
}

void *dydadd(dyd *array, const void *element) {
    if (array->count + 1 >= array->capacity) element = grow_for(array, element);
    memcpy(element_at(array, array->count), element, bytes_of(array, 1));
    array->count++;
    zero_element(array, array->count);
    return array->data;
}

void *dydreuse(dyd *array, int element_size) {
    size_t held = bytes_of(array, array->capacity);
    bool is_new_size = element_size > 0 && element_size != array->element_size;
    if (is_new_size) array->element_size = element_size;
    array->count = 0;
    array->marker = 0;
    if (array->capacity == 0) {
        start_empty(array, first_elements);
    } else if (held < bytes_of(array, first_elements)) {
        free(array->data);
        start_empty(array, first_elements);
    } else if (is_new_size) {
        auto elements = static_cast<int64_t>(held / bytes_of(array, 1));
        array->capacity = tovan::limited_capacity(elements, first_elements);
    }
    zero_element(array, 0);
    return array->data;
}

dyd *dydflist(dyd *array, int element_size) {
    if (array != nullptr) {
        put_back(array);
        return nullptr;
    }
    if (spare == nullptr) refill();
    array = spare;
    spare = array->next;
    array->next = nullptr;
    dydreuse(array, element_size);
    return array;
}

TOVAN_IDENT(dydadd, "8.4", "26/11/21")
