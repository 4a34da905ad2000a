// istype.cc: the character class table.
#include "istype.h"

#include "errexit.h"
#include "ident.h"
#include "private_istype.h"
#include "private_table.h"

namespace {

consteval int letter_or_digit(int c) {
    using tovan::is_between;
    if (is_between(c, 'A', 'Z')) return tovan::class_upper;
    if (is_between(c, 'a', 'z')) return tovan::class_lower;
    if (is_between(c, '0', '9')) return tovan::class_digit;
    return 0;
}

consteval unsigned short class_of(int c) {
    using namespace tovan;
    int classes = letter_or_digit(c);
    if (is_between(c, '!', '~') && classes == 0) classes |= class_punct;
    if (is_one_of(c, " \t\n\v\f\r")) classes |= class_space;
    if (is_between(c, 0, 31) || c == 127) classes |= class_control;
    if (is_one_of(c, "ABCDEFabcdef")) classes |= class_hex_letter;
    if (c == '_') classes |= class_underscore;
    if (c == ' ') classes |= class_blank;
    if (c == '\t') classes |= class_tab;
    if (c == '\n') classes |= class_newline;
    if (is_one_of(c, "\"$&'()*;<=>?[\\]^`|")) classes |= class_shell;
    if (is_one_of(c, "\"$\\`")) classes |= class_quoted;
    if (c == '\0') classes |= class_nul;
    if (c == '#') classes |= class_comment;
    return static_cast<unsigned short>(classes);
}

static_assert(class_of(' ') == (tovan::class_space | tovan::class_blank));
static_assert(class_of('\t') ==
              (tovan::class_space | tovan::class_control | tovan::class_tab));
static_assert(class_of('\0') == (tovan::class_control | tovan::class_nul));
static_assert(class_of('#') == (tovan::class_punct | tovan::class_comment));
static_assert(class_of('_') == (tovan::class_punct | tovan::class_underscore));
static_assert(class_of('f') == (tovan::class_lower | tovan::class_hex_letter));
static_assert(class_of('`') ==
              (tovan::class_punct | tovan::class_shell | tovan::class_quoted));
static_assert(class_of(128) == 0 && class_of(255) == 0);

// Whether applistype() has been called.
constinit bool application_class_is_set = false;

}  // namespace

constinit unsigned short _istype[256] = {TOVAN_TABLE_256(class_of)};

void applistype(const char *characters) {
    if (application_class_is_set)
        errexit("LOGIC ERROR - applistype() called a second time");
    application_class_is_set = true;
    for (; *characters != '\0'; characters++) {
        _istype[static_cast<unsigned char>(*characters)] |=
            tovan::class_application;
    }
}

TOVAN_IDENT(istype, "8.4", "26/11/21")
