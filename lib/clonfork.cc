// clonfork.cc: descriptors that no command inherits.
#include "execstr.h"

#include "errexit.h"
#include "ident.h"

#include <unistd.h>

namespace {

constexpr int capacity = 129;

// Filled by operation 0, in the order of registration until one is taken
// out; holds for the process.
struct registry {
    int count;
    int descriptors[capacity];
};
constinit registry registered{};

// The place of a descriptor, or the count when it is not registered.
int find(int descriptor) {
    int place = 0;
    while (place < registered.count &&
           registered.descriptors[place] != descriptor) {
        place++;
    }
    return place;
}

void add(int descriptor) {
    if (find(descriptor) < registered.count) return;
    if (registered.count == capacity) {
        errexit("LOGIC ERROR - closeonfork() table full");
    }
    registered.descriptors[registered.count++] = descriptor;
}

void take_out(int descriptor) {
    int place = find(descriptor);
    if (place == registered.count) return;
    registered.descriptors[place] = registered.descriptors[--registered.count];
}

void close_all() {
    for (int place = registered.count; place-- > 0;) {
        close(registered.descriptors[place]);
    }
}

}  // namespace

void closeonfork(int operation, int descriptor) {
    switch (operation) {
        case 0:
            add(descriptor);
            break;
        case 1:
            take_out(descriptor);
            break;
        case 2:
            close_all();
            break;
        default:
            break;
    }
}

TOVAN_IDENT(clonfork, "8.4", "26/11/21")
