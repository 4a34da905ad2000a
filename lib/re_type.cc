// re_type.cc: the character classes of regular expressions.
#include "rxpcomp.h"

#include "ident.h"
#include "private_rxp.h"
#include "private_table.h"

namespace {

consteval unsigned char class_of(int c) {
    using namespace tovan;
    int classes = 0;
    if (is_between(c, 'a', 'z')) classes |= re_lower;
    if (is_between(c, 'A', 'Z')) classes |= re_upper;
    if (is_between(c, '0', '9')) classes |= re_digit;
    if (c == '\0') classes |= re_null;
    if (is_one_of(c, "\"#%&',/:;?@`~\n")) classes |= re_punctuation;
    if (is_one_of(c, "\t\r \n")) classes |= re_space;
    if (c == '_') classes |= re_underbar;
    if (is_one_of(c, "!$()*+-.<=>[\\]^{|}_")) classes |= re_special;
    if (is_between(c, '1', '9')) classes |= re_special;
    return static_cast<unsigned char>(classes);
}

static_assert(class_of('a') == 0x01 && class_of('Z') == 0x20);
static_assert(class_of('0') == 0x02 && class_of('1') == 0x82);
static_assert(class_of('\n') == 0x18 && class_of('\t') == 0x10);
static_assert(class_of('_') == 0xc0 && class_of('#') == 0x08);
static_assert(class_of('\v') == 0 && class_of(127) == 0 && class_of(128) == 0);

}  // namespace

constinit const unsigned char re_type[256] = {TOVAN_TABLE_256(class_of)};

TOVAN_IDENT(re_type, "8.4", "26/11/21")
