// heap_writer.cc: writes variable heaps.
#include "shared/heap_writer.h"

#include "shared/trace.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/chkalloc.h>
#include <tovan/errexit.h>
#include <tovan/lvheap.h>
#include <tovan/strutil.h>
#include <unistd.h>

using tools::heap_contents;
using tools::heap_variable;

namespace {

TOOL_TRACE(heap, "the heap that is written, and where each entry goes (2)")

// on disk: do not change
constexpr size_t generation_seek_at = 12;
constexpr size_t generation_lines_at = 16;
constexpr size_t size_at = 20;
constexpr size_t heads_at = 28;
constexpr size_t header_size = heads_at + 4 * 256;
constexpr size_t distance_at = 4;
constexpr size_t flags_at = 6;
constexpr size_t name_at = 7;
constexpr size_t unit = 8;  // entries start at its multiples, not at 0
constexpr size_t longest_name = 0xffff - 1;  // the distance has 16 bits

void put32(unsigned char *bytes, size_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        *bytes++ = static_cast<unsigned char>(value >> shift);
    }
}

size_t entry_size(const heap_variable *variable) {
    size_t size =
        name_at + strlen(variable->name) + 1 + strlen(variable->value) + 1;
    return (size + unit - 1) / unit * unit;
}

size_t heap_size(const heap_contents *contents) {
    size_t size = unit;
    for (size_t i = 0; i < contents->count; ++i) {
        size += entry_size(&contents->variables[i]);
    }
    return size;
}

// All of an entry but the link to the next one.
void put_entry(unsigned char *entry, const heap_variable *variable) {
    size_t distance = strlen(variable->name) + 1;
    entry[distance_at] = static_cast<unsigned char>(distance >> 8);
    entry[distance_at + 1] = static_cast<unsigned char>(distance);
    entry[flags_at] = variable->flags;
    memcpy(entry + name_at, variable->name, distance);
    memcpy(entry + name_at + distance, variable->value,
           strlen(variable->value) + 1);
}

// `links[h]` is where the next entry of chain h is to be entered: at first
// the chain's head, then the last entry's first word.
void put_entries(unsigned char *image, const heap_contents *contents) {
    unsigned char *links[256];
    for (size_t h = 0; h < 256; ++h)
        links[h] = image + heads_at + 4 * h;
    unsigned char *heap = image + header_size;
    size_t position = 1;
    for (size_t i = 0; i < contents->count; ++i) {
        const heap_variable *variable = &contents->variables[i];
        unsigned char *entry = heap + position * unit;
        int h = strhash(variable->name, nullptr, lvhshtab);
        put_entry(entry, variable);
        put32(links[h], position);
        links[h] = entry;
        if (ddt_trace(&trace_heap, 2, 1))
            eprintf("%s: entry %zu, chain %d\n", variable->name, position, h);
        position += entry_size(variable) / unit;
    }
}

int write_all(int descriptor, const unsigned char *bytes, size_t count) {
    while (count > 0) {
        ssize_t put = write(descriptor, bytes, count);
        if (put == -1 && errno == EINTR) continue;
        if (put == -1) return -1;
        bytes += put;
        count -= static_cast<size_t>(put);
    }
    return 0;
}

}  // namespace

const char *tools::heap_refusal(const heap_variable *variable) {
    if (strlen(variable->name) > longest_name) {
        return "name is longer than 65534 characters";
    }
    return nullptr;
}

int tools::write_heap(int descriptor, const heap_contents *contents) {
    size_t size = heap_size(contents);
    if (size > 0xffffffff) {
        errno = EFBIG;
        return -1;
    }
    auto *image = static_cast<unsigned char *>(chkalloc(header_size + size));
    memset(image, 0, header_size + size);
    memcpy(image, "LclVars3\n", 10);
    put32(image + generation_seek_at, contents->generation_seek);
    put32(image + generation_lines_at, contents->generation_lines);
    put32(image + size_at, size);
    put_entries(image, contents);
    if (ddt_trace(&trace_heap, 1, 1))
        eprintf("%zu variables, %zu bytes\n", contents->count, size);
    int result = write_all(descriptor, image, header_size + size);
    int kept = errno;
    free(image);
    errno = kept;
    return result;
}
