// private_istype.h (private): names for the class bits of _istype.
// Builds on: istype.h.
#ifndef TOVAN_PRIVATE_ISTYPE_H
#define TOVAN_PRIVATE_ISTYPE_H

#include "istype.h"

namespace [[gnu::visibility("hidden")]] tovan {

constexpr int class_upper = 0x0001;
constexpr int class_lower = 0x0002;
constexpr int class_digit = 0x0004;
constexpr int class_space = 0x0008;
constexpr int class_punct = 0x0010;
constexpr int class_control = 0x0020;
constexpr int class_hex_letter = 0x0040;
constexpr int class_underscore = 0x0080;
constexpr int class_blank = 0x0100;
constexpr int class_tab = 0x0200;
constexpr int class_newline = 0x0400;
constexpr int class_shell = 0x0800;
constexpr int class_quoted = 0x1000;  // special inside double quotes
constexpr int class_nul = 0x2000;
constexpr int class_comment = 0x4000;
constexpr int class_application = 0x8000;

constexpr int class_letter = class_upper | class_lower;
constexpr int class_line_space = class_blank | class_tab | class_newline;
constexpr int class_word_end = class_line_space | class_nul;

// Whether the character is in one of the classes.
[[gnu::always_inline]] inline bool in_class(char character, int classes) {
    return (_istype[static_cast<unsigned char>(character)] & classes) != 0;
}

}  // namespace tovan

#endif
