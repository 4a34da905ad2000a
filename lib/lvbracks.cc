// lvbracks.cc: where the calls and subscripts of a text end.
//
// The outermost bracket is looked for by reading on; the same reading notes
// the closing bracket of every bracket inside, so that each character is
// looked at for brackets once, however deep it lies.
//
// The two kinds of brackets do not see each other. In "@(f @X[)]" the call
// ends inside the subscript: the "]" is never read, and the subscript has no
// end. In "@X[@(f ]) ]" the subscript ends inside the call: its ")" is mapped
// as missing.
#include "lvexpand.h"

#include "dypadd.h"
#include "ident.h"
#include "private_lvexpand.h"

namespace {

struct bracket {
    const char *inside;  // behind the opening bracket
    const char *close;   // null while it is open
    int outer;           // index of the one around it; none_open
};
constexpr int none_open = -1;

bracket *brackets(tovan::bracket_map *map) {
    return static_cast<bracket *>(map->list.data);
}

void open_bracket(tovan::bracket_map *map, const char *inside, int *innermost) {
    bracket opened = {inside, nullptr, *innermost};
    *innermost = map->list.count;
    if (map->list.capacity == 0) dydreuse(&map->list, sizeof(bracket));
    dydadd(&map->list, &opened);
}

void close_bracket(tovan::bracket_map *map, const char *close, int *innermost) {
    if (*innermost == none_open) return;
    bracket *closed = &brackets(map)[*innermost];
    closed->close = close;
    *innermost = closed->outer;
}

}  // namespace

const char *tovan::map_brackets(bracket_map *map, const char *inside,
                                char close) {
    int round = none_open;
    int square = none_open;
    map->list.count = 0;
    map->passed = 0;
    for (const char *at = inside; *at != '\0'; at++) {
        if (*at == close && (close == ')' ? round : square) == none_open) {
            return at;
        }
        switch (*at) {
            // clang-format off
            case '(': open_bracket(map, at + 1, &round); break;
            case '[': open_bracket(map, at + 1, &square); break;
            case ')': close_bracket(map, at, &round); break;
            case ']': close_bracket(map, at, &square); break;
                // clang-format on
        }
    }
    return nullptr;
}

const char *tovan::mapped_close(bracket_map *map, const char *inside) {
    while (brackets(map)[map->passed].inside != inside)
        map->passed++;
    return brackets(map)[map->passed].close;
}

TOVAN_IDENT(lvbracks, "8.4", "26/11/21")
