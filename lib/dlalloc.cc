// dlalloc.cc: doubly linked lists of strings.
#include "dypadd.h"

#include "dystr.h"
#include "errexit.h"
#include "ident.h"

#include <stdlib.h>

namespace {

constexpr int refill_count = 16;
constexpr int text_size = 56;

// Nodes to spare, with the buffers of their texts. Filled 16 at a time and by
// releases; kept by the process.
constinit dl *spare = nullptr;

bool refill() {
    dl *nodes = static_cast<dl *>(calloc(refill_count, sizeof(dl)));
    if (nodes == nullptr) return false;
    for (int i = refill_count; i-- > 0;) {
        nodes[i].next = spare;
        spare = &nodes[i];
    }
    return true;
}

}  // namespace

dl *dlalloc(void) {
    dl *node = dlflist(nullptr);
    if (node == nullptr) nocore();
    dyreuse(&node->text, text_size);
    return node;
}

dl *dlfree(dl *node) {
    return dlflist(node);
}

dl *dlflist(dl *node) {
    if (node != nullptr) {
        node->next = spare;
        spare = node;
        return nullptr;
    }
    if (spare == nullptr && !refill()) return nullptr;
    node = spare;
    spare = node->next;
    node->next = nullptr;
    return node;
}

dl **dlinsert(dl **head, dl *node) {
    node->next = *head;
    node->back = head;
    if (node->next != nullptr) node->next->back = &node->next;
    *head = node;
    return head;
}

dl *dldelete(dl *node) {
    dl *next = node->next;
    *node->back = next;
    if (next != nullptr) next->back = node->back;
    return next;
}

TOVAN_IDENT(dlalloc, "8.4", "26/11/21")
