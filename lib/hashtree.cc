// hashtree.cc: tables of hashed texts, and the tree beside each.
//
// The hash is a fixed one, so that every run does the same; whoever knows it
// can make up any number of texts with one tag. A table would look at all of
// them for each. So after some places it turns to a tree of the C library,
// which is balanced: comparing the texts themselves, it cannot be fooled.
#include "private_hash.h"

#include "chkalloc.h"
#include "errexit.h"
#include "ident.h"

#include <search.h>
#include <stdlib.h>
#include <string.h>

using tovan::hash_slot;
using tovan::hash_table;
using tovan::hashed_text;

constinit size_t tovan::other_comparisons = 0;

namespace {

// A node's content; the bytes of its text come behind it.
struct other_text {
    hashed_text text;
    hash_slot slot;
};

int compare_texts(const void *a, const void *b) {
    auto *left = static_cast<const hashed_text *>(a);
    auto *right = static_cast<const hashed_text *>(b);
    ++tovan::other_comparisons;
    if (left->tag != right->tag) return left->tag < right->tag ? -1 : 1;
    if (left->length != right->length)
        return left->length < right->length ? -1 : 1;
    return memcmp(left->bytes, right->bytes, left->length);
}

other_text *new_other(const hashed_text &text) {
    void *block = chkalloc(sizeof(other_text) + text.length);
    auto *other = static_cast<other_text *>(block);
    char *copy = static_cast<char *>(block) + sizeof(other_text);
    memcpy(copy, text.bytes, text.length);
    *other = {{copy, text.length, text.tag}, {text.tag, 0}};
    return other;
}

// What a node of the C library leads to; null: there is no node.
other_text *content_of(void *node) {
    return node != nullptr ? *static_cast<other_text **>(node) : nullptr;
}

other_text *find(const hash_table *table, const hashed_text &text) {
    return content_of(tfind(&text, &table->others, compare_texts));
}

}  // namespace

hash_table tovan::new_hash_table(size_t count) {
    int bits = 1;
    while (size_t{1} << bits < 2 * count)
        ++bits;
    // One more than any search reaches is always free.
    size_t places = (size_t{1} << bits) + longest_search;
    auto *slots = static_cast<hash_slot *>(calloc(places, sizeof(hash_slot)));
    if (slots == nullptr) nocore();
    return {slots, 32 - bits, nullptr};
}

void tovan::free_hash_table(hash_table *table) {
    free(table->slots);
    tdestroy(table->others, free);
    *table = {};
}

hash_slot *tovan::find_other(const hash_table *table, const hashed_text &text) {
    other_text *other = find(table, text);
    return other != nullptr ? &other->slot : nullptr;
}

hash_slot *tovan::other_slot(hash_table *table, const hashed_text &text) {
    hash_slot *slot = find_other(table, text);
    if (slot != nullptr) return slot;
    other_text *other = new_other(text);
    void *node = tsearch(other, &table->others, compare_texts);
    if (node == nullptr) nocore();
    return &other->slot;
}

bool tovan::is_other(const hash_table *table, const hash_slot *slot) {
    const hash_slot *end = table->slots + count_places(table);
    return slot < table->slots || slot >= end;
}

void tovan::remove_other(hash_table *table, const hashed_text &text) {
    other_text *other = find(table, text);
    tdelete(&text, &table->others, compare_texts);
    free(other);
}

TOVAN_IDENT(hashtree, "8.4", "26/11/22")
