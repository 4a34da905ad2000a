// private_sfterm.h (private): the dictionary's terms and their index.
// Builds on: dystr.h, private_istype.h.
#ifndef TOVAN_PRIVATE_SFTERM_H
#define TOVAN_PRIVATE_SFTERM_H

#include "dystr.h"
#include "private_istype.h"

#include <stddef.h>
#include <stdint.h>

namespace [[gnu::visibility("hidden")]] tovan {

// A defined name. Its address holds until a term is added or removed. What a
// look-up reads stands together, the names of usual length included.
struct sf_term {
    dy value;
    union {
        char short_name[16];  // with its NUL
        char *long_name;      // where that is too small
    };
    uint32_t name_length;
    uint32_t tag;       // text_tag() of the name
    const char *where;  // not owned: a dictionary's name
    int line;
};

inline bool has_short_name(const sf_term *term) {
    return term->name_length < sizeof term->short_name;
}

inline const char *name_of(const sf_term *term) {
    return has_short_name(term) ? term->short_name : term->long_name;
}

// All terms, in no order.
struct sf_terms {
    const sf_term *start;
    size_t count;
};

sf_terms all_terms();

// Has memory fetched for a look-up that comes soon: in a large dictionary,
// waiting for it costs as much as all else.
void expect_term(const char *name, size_t length);

// The term of a name; null when there is none.
sf_term *find_term(const char *name, size_t length);

// A new term for a name that has none: copies of the name and of the value.
//   name      a NUL follows its `length` characters
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
