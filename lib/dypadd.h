// dypadd.h: growable pointer arrays (dyp), data arrays (dyd) and lists of
// strings (dl).
// Builds on: errexit.h, chkalloc.h, strutil.h, dystr.h.
//
// Companions of the dynamic string, kept by value and passed by address in
// the same way. A pointer array serves as an argument vector as it is: cast
// `array` to char **. What the pointers point at stays the caller's.
// Always: count + 1 <= capacity; the slot, or element, at `count` is null, or
// all zero bytes. Any growing call may move the array; use the address it
// returns.
// Growth: eight slots, or elements, at a time. The block may be larger than
// the capacity says.
// Order: dypnew (or dypreuse on a zeroed record, or dypflist), any operations,
// then free(array), or dypflist for a record of the pool; dyd likewise.
// Errors: out of memory ends the process (nocore); arguments are not checked
// unless a function says so.
#ifndef TOVAN_DYPADD_H
#define TOVAN_DYPADD_H

#include "attrs.h"
#include "dystr.h"

TOVAN_BEGIN_C

typedef struct dyp {
    int count;         // pointers, without the terminator
    int marker;        // 0: an array (strings have 1 here)
    struct dyp *next;  // in the pool only
    int capacity;      // slots; 0: there is no array
    void **array;      // a heap block of the record's own
} dyp;

typedef struct dyd {
    int count;         // elements, without the terminator
    int marker;        // 0: an array
    int element_size;  // bytes
    struct dyd *next;  // in the pool only
    int capacity;      // elements; 0: there is no data
    void *data;        // a heap block of the record's own
} dyd;

// A node knows what points to it, so that it can be unlinked by itself.
typedef struct dl {
    struct dl *next;
    struct dl **back;  // the list head, or the next field of the node before
    dy text;
} dl;

// The functions from here to dypsplit return the array.

// Makes an empty array. What the record held before is not looked at.
//   capacity  slots, at least 1
//   owner     caller: free(array->array)
void **dypnew(dyp *array, int capacity);

// Empties an array; a record without one (a zeroed one) gets seven slots.
void **dypreuse(dyp *array);

// Appends a pointer, which may be null.
void **dypadd(dyp *array, const void *pointer);

// Inserts a pointer before the one at `index`.
//   edge      a negative index is the start, one behind the end the end
void **dypinsert(dyp *array, const void *pointer, int index);

// Removes the pointer at `index`; a negative index counts from the end.
//   edge      an index outside the array changes nothing
void **dypdelete(dyp *array, int index);

// Stores a pointer at `index`.
//   index     not negative: that is not checked
//   edge      behind the end the array is made longer, null pointers between;
//             where slots are missing, the capacity becomes index + 16,
//             rounded down to a multiple of 8
void **dypseti(dyp *array, const void *pointer, int index);

// Appends a pointer to each word of a text. Words end at blanks, tabs and
// newlines only; other white space belongs to them.
//   text      its words are terminated in place, by a NUL in the place of the
//             separator right behind each; may be null: nothing is appended
//   flags     1: the words of a copy, and the text stays as it is
//   owner     the words point into the text. A copy is the caller's: free the
//             first word; there is none when there are no words
void **dypsplit(dyp *array, char *text, int flags);

// Gives an array to the pool of spare records, or takes one from it.
//   array     a live record of the pool, or null to take one
//   result    null, or an empty array
//   owner     pool. Up to 30 slots stay with the record, more are released
dyp *dypflist(dyp *array);

// Makes an empty data array. What the record held before is not looked at.
//   capacity  elements, at least 1
//   result    the data
//   owner     caller: free(array->data)
void *dydnew(dyd *array, int capacity, int element_size);

// Appends a copy of an element, which may be one of the array itself.
//   result    the data
void *dydadd(dyd *array, const void *element);

// Empties a data array, for elements of another size if asked. A buffer that
// holds at least seven elements is kept, and the capacity is what it holds; a
// smaller one is replaced by one of seven.
//   array     also a zeroed record
//   element_size  0 or less keeps the size
//   result    the data
void *dydreuse(dyd *array, int element_size);

// Gives a data array to the pool of spare records, or takes one from it.
//   array     a live record of the pool, or null to take one
//   element_size  when one is taken, of its elements
//   result    null, or an empty array
//   owner     pool. Up to 120 bytes stay with the record, more are released
dyd *dydflist(dyd *array, int element_size);

// Takes a node with an empty text from the pool of spare nodes.
//   result    a node in no list
//   owner     pool: dlfree
dl *dlalloc(void);

// Gives a node back to the pool; it must be in no list any more.
//   result    null
dl *dlfree(dl *node);

// The pool itself: gives a node to it, or takes one from it.
//   node      null to take one
//   result    null, or a node whose text is as it was given, or zeroed (then
//             dyreuse makes it a string)
//   fails     null: no memory for more nodes
dl *dlflist(dl *node);

// Puts a node at the front of a list.
//   head      the address of the list's first pointer, or a node's back, to
//             put the new one in front of that node
//   result    head
dl **dlinsert(dl **head, dl *node);

// Takes a node out of its list, and does not release it.
//   result    the node behind it, or null
dl *dldelete(dl *node);

TOVAN_END_C

#endif
