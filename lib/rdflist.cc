// rdflist.cc: the words of a whole input.
//
// Data is read into a large buffer behind the pending bytes: those after the
// last white space so far, which may be the start of a word. Whatever ends in
// white space is handed out at once and split where it lies; only pending
// bytes are ever moved, when a buffer is used up.
//
//     | words handed out | pending | room ... |
//                        start     end
#include "getdylin.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"
#include "private_io.h"
#include "private_istype.h"

#include <stddef.h>
#include <string.h>

namespace {

constexpr size_t data_size = 16384;
constexpr size_t least_room = 128;  // so a word may have up to 16256 bytes

struct word_buffer {
    size_t start;  // of the pending bytes
    size_t end;    // of the data
    word_buffer *older;
    char data[data_size];
};

// What the words that were handed out point into: the buffer in use and, by
// its `older`, those before it. Filled by rdflist(), never released.
constinit word_buffer first_buffer{};
constinit word_buffer *current = &first_buffer;

void make_room(const char *name) {
    if (data_size - current->end >= least_room) return;
    if (current->start == 0)
        errexit("%s: contains excessively long file name", name);
    void *block = chkalloc(sizeof(word_buffer));
    word_buffer *next = static_cast<word_buffer *>(block);
    next->older = current;
    next->start = 0;
    next->end = current->end - current->start;
    memcpy(next->data, current->data + current->start, next->end);
    current = next;
}

// Reads once.
//   result    the number of bytes, 0 at the end
size_t read_more(int descriptor, const char *name) {
    make_room(name);
    ssize_t got = tovan::read_some(descriptor, current->data + current->end,
                                   data_size - current->end);
    if (got == -1) errexit("%s: %s", name, syserr());
    current->end += static_cast<size_t>(got);
    return static_cast<size_t>(got);
}

bool is_space(char character) {
    return tovan::in_class(character, tovan::class_space);
}

// Appends the words of the pending bytes before `end`, where a terminator may
// be put.
void hand_out(dyp *array, size_t end) {
    char *data = current->data;
    size_t at = current->start;
    for (;;) {
        while (at < end && is_space(data[at]))
            at++;
        if (at >= end) break;
        const char *word = data + at;
        while (at < end && !is_space(data[at]))
            at++;
        data[at++] = '\0';
        dypadd(array, word);
    }
    current->start = end + 1;
}

// Appends the words that the last `got` bytes complete; what lies behind
// their last white space stays pending.
void hand_out_complete(dyp *array, size_t got) {
    size_t at = current->end;
    for (; got > 0; got--) {
        if (is_space(current->data[--at])) return hand_out(array, at);
    }
}

}  // namespace

void **rdflist(int descriptor, dyp *array, const char *name) {
    current->start = current->end;
    while (size_t got = read_more(descriptor, name))
        hand_out_complete(array, got);
    // Room for one more byte is left: where less than that was, a word ended
    // in the message of make_room().
    hand_out(array, current->end);
    current->end = current->start;
    return array->array;
}

TOVAN_IDENT(rdflist, "8.4", "26/11/21")
