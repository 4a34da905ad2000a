// fmgraph.cc: file-name patterns whose braces can be open in many ways.
//
// Since the end of a brace and its alternatives are found by different rules,
// a pattern may be made so that a brace is left open behind its end. Then the
// same place can be reached with any five of all braces open, and remembering
// each of these ways alone is of little use.
//
// Here ways meet again in a graph. A node is a brace that was entered at a
// place of the subject, with so many others around it; it knows the nodes in
// which that happened, and where its alternatives ended. Whoever comes to the
// brace at the same place shares the node, and goes on behind it from all of
// those ends:
//
//     {a[}],{b[}],...     "{b" at 1, one brace around it: a node, entered
//                         from the node "{a" at 0
//
// So each place of pattern and subject is looked at once in each node, and
// there are at most braces x subject x 5 of them. Which way comes first does
// not matter here, since nothing is reported.
#include "private_fmgraph.h"

#include "chkalloc.h"
#include "dypadd.h"
#include "ident.h"
#include "private_fmfind.h"
#include "private_fmmemory.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

using namespace tovan;

namespace {

// A chain through an array; 0 ends it.
struct chain_link {
    size_t value;
    size_t next;
};

// What the pattern says of a brace.
struct brace {
    text_pointer close;
    size_t alternatives;  // chain: places of the pattern
};

struct brace_node {
    text_pointer close;
    int depth;       // braces around it
    size_t parents;  // chain: nodes
    size_t ends;     // chain: places of the subject
};

constexpr size_t root = 0;  // no brace is open

// A way to be walked.
struct way {
    text_pointer pattern;
    text_pointer subject;
    size_t node;
};

// What was met before is known by three numbers.
struct fact {
    size_t about;  // a place of the pattern and a bit, or what follows
    size_t node;
    size_t which;
    size_t value;  // 0: the fact is free
};
constexpr size_t about_ends = SIZE_MAX;
constexpr size_t about_parents = SIZE_MAX - 1;
constexpr size_t about_entries = SIZE_MAX - 2;  // of a brace at a depth
constexpr size_t about_braces = SIZE_MAX - 3;
constexpr size_t bits = 64;
constexpr size_t first_capacity = 1024;
constexpr int first_elements = 64;

struct brace_graph {
    text_pointer pattern;
    text_pointer subject;
    dyd nodes;   // of brace_node; the first one stands for the root
    dyd braces;  // of brace; the first one is not used
    dyd links;   // of chain_link; the first one is not used
    dyd ways;
    fact *facts;
    size_t capacity;  // a power of two, or 0
    size_t used;
    size_t steps;

    brace_node *node_at(size_t i) {
        return static_cast<brace_node *>(nodes.data) + i;
    }
    brace brace_at(size_t i) {
        return static_cast<brace *>(braces.data)[i];
    }
    chain_link *link_at(size_t i) {
        return static_cast<chain_link *>(links.data) + i;
    }
    size_t offset(text_pointer f) {
        return static_cast<size_t>(f - subject);
    }
    size_t about_end_at(text_pointer p) {
        return 2 * static_cast<size_t>(p - pattern);
    }
    size_t about_star_at(text_pointer p) {
        return 2 * static_cast<size_t>(p - pattern) + 1;
    }

    bool run();
    bool walk(way at);
    void enter(way at);
    brace brace_of(text_pointer inside);
    void leave(size_t node, text_pointer f);
    void go_on_behind(size_t node, text_pointer f, size_t parent);
    void add_parent(size_t node, size_t parent);
    void try_from_here_on(way star);
    void add_way(way at);
    void put_before(size_t *chain, size_t value);
    bool is_first(size_t about, size_t node, text_pointer f);
    size_t *value_of(size_t about, size_t node, size_t which);
    fact *slot_of(size_t about, size_t node, size_t which);
    void grow();
};

// ---- what was met before ------------------------------------------------

fact *brace_graph::slot_of(size_t about, size_t node, size_t which) {
    constexpr uint64_t spread = 0x9e3779b97f4a7c15;
    uint64_t sum = (about ^ (node * spread)) * spread;
    sum = ((sum ^ sum >> 32) + which) * spread;
    for (size_t i = sum ^ sum >> 32;; ++i) {
        fact *each = &facts[i & (capacity - 1)];
        if (each->value == 0) return each;
        if (each->about == about && each->node == node && each->which == which)
            return each;
    }
}

void brace_graph::grow() {
    fact *old = facts;
    size_t count = capacity;
    capacity = count == 0 ? first_capacity : 2 * count;
    facts = static_cast<fact *>(chkalloc(capacity * sizeof *facts));
    memset(facts, 0, capacity * sizeof *facts);
    for (size_t i = 0; i < count; ++i) {
        const fact &each = old[i];
        if (each.value != 0) *slot_of(each.about, each.node, each.which) = each;
    }
    free(old);
}

// The value of a fact, to be set when it is 0.
size_t *brace_graph::value_of(size_t about, size_t node, size_t which) {
    if (2 * used >= capacity) grow();
    fact *each = slot_of(about, node, which);
    if (each->value == 0) {
        *each = {about, node, which, 0};
        ++used;
    }
    return &each->value;
}

// Whether this was not asked of the node and the place before.
bool brace_graph::is_first(size_t about, size_t node, text_pointer f) {
    size_t *word = value_of(about, node, offset(f) / bits);
    size_t bit = size_t{1} << offset(f) % bits;
    if ((*word & bit) != 0) return false;
    *word |= bit;
    return true;
}

// ---- nodes --------------------------------------------------------------

void brace_graph::put_before(size_t *chain, size_t value) {
    chain_link link = {value, *chain};
    *chain = static_cast<size_t>(links.count);
    dydadd(&links, &link);
}

void brace_graph::add_way(way at) {
    dydadd(&ways, &at);
}

void brace_graph::go_on_behind(size_t node, text_pointer f, size_t parent) {
    text_pointer close = node_at(node)->close;
    if (is_first(about_end_at(close), parent, f)) add_way({close, f, parent});
}

void brace_graph::add_parent(size_t node, size_t parent) {
    size_t *known = value_of(about_parents, node, parent);
    if (*known != 0) return;
    *known = 1;
    put_before(&node_at(node)->parents, parent);
    for (size_t i = node_at(node)->ends; i != 0; i = link_at(i)->next)
        go_on_behind(node, subject + link_at(i)->value, parent);
}

// An alternative of the node ends here.
void brace_graph::leave(size_t node, text_pointer f) {
    if (!is_first(about_ends, node, f)) return;
    put_before(&node_at(node)->ends, offset(f));
    for (size_t i = node_at(node)->parents; i != 0; i = link_at(i)->next)
        go_on_behind(node, f, link_at(i)->value);
}

// The brace whose "{" is before `inside`, looked through once.
brace brace_graph::brace_of(text_pointer inside) {
    size_t *known =
        value_of(about_braces, static_cast<size_t>(inside - pattern), 0);
    if (*known == 0) {
        *known = static_cast<size_t>(braces.count);
        brace found = {find_in_brace<for_close>(inside, &steps), 0};
        for (text_pointer p = inside; p != nullptr;
             p = find_in_brace<for_comma>(p, &steps))
            put_before(&found.alternatives, static_cast<size_t>(p - pattern));
        dydadd(&braces, &found);
    }
    return brace_at(*known);
}

// At "{": all alternatives, unless another way entered the brace here.
void brace_graph::enter(way at) {
    int depth = at.node == root ? 0 : node_at(at.node)->depth + 1;
    if (depth == deepest) return;
    text_pointer inside = at.pattern + 1;
    brace entered = brace_of(inside);
    size_t brace_and_depth = static_cast<size_t>(inside - pattern) * deepest +
                             static_cast<size_t>(depth);
    size_t *known =
        value_of(about_entries, brace_and_depth, offset(at.subject));
    size_t node = *known;
    if (node == 0) {
        node = *known = static_cast<size_t>(nodes.count);
        brace_node added = {entered.close, depth, 0, 0};
        dydadd(&nodes, &added);
        for (size_t i = entered.alternatives; i != 0; i = link_at(i)->next)
            add_way({pattern + link_at(i)->value, at.subject, node});
    }
    add_parent(node, at.node);
}

// ---- ways ---------------------------------------------------------------

// Behind a star: from this place on, and from each later one.
void brace_graph::try_from_here_on(way star) {
    text_pointer behind = star.pattern;
    while (*behind == '*')
        ++behind;
    if (!is_first(about_star_at(star.pattern), star.node, star.subject)) return;
    if (*star.subject != '\0')
        add_way({star.pattern, star.subject + 1, star.node});
    add_way({behind, star.subject, star.node});
}

// True when the way comes to both ends.
bool brace_graph::walk(way at) {
    bool inside = at.node != root;
    text_pointer p = at.pattern, f = at.subject;
    for (;; ++f, ++steps) {
        unsigned char c = *p;
        if (c == '\0') return *f == '\0';
        if (c == '*') {
            if (p[strspn(reinterpret_cast<const char *>(p), "*")] == '\0')
                return true;
            try_from_here_on({p, f, at.node});
            return false;
        }
        if (c == '{') {
            enter({p, f, at.node});
            return false;
        }
        if (inside && (c == ',' || c == '}')) {
            if (c == ',' || p + 1 == node_at(at.node)->close) leave(at.node, f);
            return false;
        }
        if (*f == '\0') return false;
        ++p;
        if (c == '[') {
            p = past_holding_class(p, *f);
            if (p == nullptr) return false;
        } else if (c != '?') {
            if (c == '\\' && *p != '\0') c = *p++;
            if (*f != c) return false;
        }
    }
}

bool brace_graph::run() {
    while (ways.count > 0) {
        way newest = static_cast<way *>(ways.data)[--ways.count];
        if (walk(newest)) return true;
    }
    return false;
}

}  // namespace

bool tovan::match_in_graph(text_pointer whole, text_pointer p, text_pointer f,
                           text_pointer again_p, text_pointer again_f) {
    brace_graph graph = {};
    graph.pattern = whole;
    graph.subject = again_p != nullptr ? again_f : f;
    dydnew(&graph.nodes, first_elements, sizeof(brace_node));
    dydnew(&graph.braces, first_elements, sizeof(brace));
    dydnew(&graph.links, first_elements, sizeof(chain_link));
    dydnew(&graph.ways, first_elements, sizeof(way));
    graph.nodes.count = 1;
    graph.braces.count = 1;
    graph.links.count = 1;
    if (again_p != nullptr) graph.add_way({again_p - 1, again_f, root});
    graph.add_way({p, f, root});
    bool matches = graph.run();
    brace_steps += graph.steps;
    free(graph.nodes.data);
    free(graph.braces.data);
    free(graph.links.data);
    free(graph.ways.data);
    free(graph.facts);
    return matches;
}

TOVAN_IDENT(fmgraph, "8.4", "26/11/22")
