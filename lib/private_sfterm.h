// private_sfterm.h (private): the dictionary's terms and their index.
// Builds on: dystr.h, private_istype.h.
#ifndef TOVAN_PRIVATE_SFTERM_H
#define TOVAN_PRIVATE_SFTERM_H

#include "dystr.h"
#include "private_istype.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// A defined name. Its address holds until a term is added or removed.
struct sf_term {
    char *name;
    const char *where;  // not owned: a dictionary's name
    dy value;
    int line;
    uint32_t tag;  // text_tag() of the name
    size_t name_length;
};

// All terms, in no order.
struct sf_terms {
    const sf_term *start;
    size_t count;
};

sf_terms all_terms();

// The term of a name; null when there is none.
sf_term *find_term(const char *name, size_t length);

// A new term for a name that has none: copies of the name and of the value.
void add_term(const char *name, size_t length, const dy *value,
              const char *where, int line);

void remove_term(sf_term *term);

// The text that stands for undefined names; may be null.
const char *text_of_undefined();

inline bool starts_name(char character) {
    return in_class(character, class_letter | class_underscore);
}

inline bool continues_name(char character) {
    return in_class(character, class_letter | class_underscore | class_digit);
}

// The first character that is no part of a name.
inline const char *end_of_name(const char *next) {
    while (continues_name(*next))
        ++next;
    return next;
}

}  // namespace tovan

#endif
