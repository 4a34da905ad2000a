// dypadd.cc: growing pointer arrays.
#include "dypadd.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_room.h"

#include <stdint.h>
#include <string.h>

namespace {

constexpr int slot_step = 8;
constexpr int first_slots = 7;  // of a record that is reused without an array

// The library's pointers are const where they come in; what goes out serves
// as an argument vector.
void *stored(const void *pointer) {
    return const_cast<void *>(pointer);
}

void **start_empty(dyp *array, int capacity) {
    size_t size = static_cast<size_t>(capacity) * sizeof(void *);
    array->capacity = capacity;
    array->array = static_cast<void **>(chkalloc(size));
    return array->array;
}

// needed: slots that will be filled, the terminator's included.
[[gnu::noinline]] void grow(dyp *array, int64_t capacity, int64_t needed) {
    void *old = array->capacity != 0 ? array->array : nullptr;
    array->capacity = tovan::limited_capacity(capacity, needed);
    size_t size = static_cast<size_t>(array->capacity) * sizeof(void *);
    array->array = static_cast<void **>(tovan::make_room(old, size));
}

[[gnu::always_inline]] inline void make_slot(dyp *array) {
    int64_t count = array->count;
    int64_t capacity = array->capacity;
    if (count + 1 >= capacity) [[unlikely]]
        grow(array, capacity + slot_step, count + 2);
}

}  // namespace

void **dypnew(dyp *array, int capacity) {
    array->count = 0;
    array->marker = 0;
    array->next = nullptr;
    *start_empty(array, capacity) = nullptr;
    return array->array;
}

void **dypreuse(dyp *array) {
    array->count = 0;
    array->marker = 0;
    if (array->capacity == 0) start_empty(array, first_slots);
    array->array[0] = nullptr;
    return array->array;
}

void **dypadd(dyp *array, const void *pointer) {
    make_slot(array);
    void **slots = array->array;
    int count = array->count;
    slots[count] = stored(pointer);
    slots[count + 1] = nullptr;
    array->count = count + 1;
    return slots;
}

void **dypinsert(dyp *array, const void *pointer, int index) {
    make_slot(array);
    int count = array->count;
    if (index > count) index = count;
    if (index < 0) index = 0;
    void **slots = array->array;
    memmove(slots + index + 1, slots + index,
            static_cast<size_t>(count - index + 1) * sizeof *slots);
    slots[index] = stored(pointer);
    slots[count + 1] = nullptr;
    array->count = count + 1;
    return slots;
}

void **dypdelete(dyp *array, int index) {
    int count = array->count;
    if (index < 0) index += count;
    if (index < 0 || index >= count) return array->array;
    void **slots = array->array;
    memmove(slots + index, slots + index + 1,
            static_cast<size_t>(count - index) * sizeof *slots);
    array->count = count - 1;
    return slots;
}

// Deliberate: a negative index is not looked at (test
// dypseti_stores_at_a_negative_index_as_it_is).
void **dypseti(dyp *array, const void *pointer, int index) {
    int count = array->count;
    if (index < count) {
        array->array[index] = stored(pointer);
        return array->array;
    }
    int64_t needed = int64_t{index} + 2;
    if (needed > array->capacity)
        grow(array, (int64_t{index} + 16) / slot_step * slot_step, needed);
    void **slots = array->array;
    for (int i = count; i < index; i++)
        slots[i] = nullptr;
    slots[index] = stored(pointer);
    slots[index + 1] = nullptr;
    array->count = index + 1;
    return slots;
}

TOVAN_IDENT(dypadd, "8.4", "26/11/21")
