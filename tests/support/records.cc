// records.cc: dynamic strings and arrays in tests.
#include "support/records.h"

#include <malloc.h>
#include <stdlib.h>

namespace support {

owned_string::owned_string(const std::string &text, int size) : dy{} {
    int n = static_cast<int>(text.size());
    dynew(this, size != 0 ? size : n + 1);
    dynstr(this, text.data(), n);
}

owned_string::~owned_string() {
    free(buffer);
}

std::string flaw_of(const dy &string) {
    if (string.length < 0) return "negative length";
    if (string.length >= string.capacity) return "no room for the terminator";
    if (string.buffer == nullptr) return "no buffer";
    if (malloc_usable_size(string.buffer) <
        static_cast<size_t>(string.capacity))
        return "the block is smaller than the capacity";
    if (string.buffer[string.length] != '\0') return "no terminator";
    if (string.marker != 1) return "not marked as a string";
    return "";
}

std::string flaw_of(const dyp &array) {
    if (array.count < 0) return "negative count";
    if (array.count >= array.capacity) return "no room for the terminator";
    if (array.array == nullptr) return "no slots";
    if (malloc_usable_size(array.array) <
        static_cast<size_t>(array.capacity) * sizeof(void *))
        return "the block is smaller than the capacity";
    if (array.array[array.count] != nullptr) return "no terminator";
    if (array.marker != 0) return "not marked as an array";
    return "";
}

std::string flaw_of(const dyd &array) {
    if (array.count < 0) return "negative count";
    if (array.count >= array.capacity) return "no room for the terminator";
    if (array.data == nullptr) return "no elements";
    size_t size = static_cast<size_t>(array.element_size);
    if (malloc_usable_size(array.data) <
        static_cast<size_t>(array.capacity) * size)
        return "the block is smaller than the capacity";
    const char *bytes = static_cast<const char *>(array.data);
    std::string last(bytes + static_cast<size_t>(array.count) * size, size);
    if (last != std::string(size, '\0')) return "no terminator";
    if (array.marker != 0) return "not marked as an array";
    return "";
}

std::string text_of(const dy &string) {
    return std::string(string.buffer, static_cast<size_t>(string.length));
}

}  // namespace support
