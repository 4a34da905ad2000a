// svstr.cc: saved strings under keys.
#include "strutil.h"

#include "chkalloc.h"
#include "ident.h"

#include <stdlib.h>
#include <string.h>

namespace {

constexpr int refill_count = 20;

// Nodes to spare. Filled 20 at a time and by removals; kept by the process.
constinit svnode *spare = nullptr;

svnode *take_node() {
    if (spare == nullptr) {
        void *block = chkalloc(refill_count * sizeof(svnode));
        svnode *nodes = static_cast<svnode *>(block);
        for (int i = 0; i < refill_count; i++) {
            nodes[i].next = spare;
            spare = &nodes[i];
        }
    }
    svnode *node = spare;
    spare = node->next;
    return node;
}

bool are_equal(const char *a, const char *b) {
    return *a == *b && strcmp(a, b) == 0;
}

// The node in front of the key's, or null.
svnode *node_before(svnode *head, const char *key) {
    for (svnode *at = head; at->next != nullptr; at = at->next) {
        if (are_equal(at->next->key, key)) return at;
    }
    return nullptr;
}

const char *insert(svnode *head, const char *key, const char *value) {
    svnode *node = take_node();
    *node = {head->next, savestr(key), savestr(value)};
    head->next = node;
    return node->value;
}

// The new value may lie inside the old one: copied first, freed last.
const char *replace(svnode *node, const char *value) {
    if (are_equal(node->value, value)) return node->value;
    char *old = node->value;
    node->value = savestr(value);
    free(old);
    return node->value;
}

void remove_next(svnode *before) {
    svnode *node = before->next;
    before->next = node->next;
    free(node->key);
    free(node->value);
    node->next = spare;
    spare = node;
}

}  // namespace

const char *svstr(svnode *head, const char *key, const char *value) {
    svnode *before = node_before(head, key);
    if (value != nullptr) {
        if (before != nullptr) return replace(before->next, value);
        return insert(head, key, value);
    }
    if (before != nullptr) remove_next(before);
    return nullptr;
}

const char *fndsvstr(const svnode *head, const char *key) {
    if (head == nullptr || *key == '\0') return nullptr;
    const svnode *node = head->next;
    while (node != nullptr && !are_equal(node->key, key))
        node = node->next;
    return node != nullptr ? node->value : nullptr;
}

TOVAN_IDENT(svstr, "8.4", "26/11/21")
