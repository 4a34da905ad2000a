// dyfmt_test.cc: formatted text, with "@" as the introducer.
#include "support/records.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdarg.h>
#include <string.h>
#include <tovan/dystr.h>

using support::owned_string;
using support::text_of;

namespace {

template <typename... Arguments>
std::string formatted(const char *format, Arguments... arguments) {
    owned_string string("<");
    EXPECT_EQ(dyfmt(&string, format, arguments...), string.buffer);
    EXPECT_EQ(support::flaw_of(string), "");
    return text_of(string).substr(1);
}

TEST(dyfmt, directives) {
    const char *span = "span";
    EXPECT_EQ(formatted("@s", "text"), "text");
    EXPECT_EQ(formatted("@s", static_cast<char *>(nullptr)), "");
    EXPECT_EQ(formatted("@S", span + 1, span + 3), "pa");
    EXPECT_EQ(formatted("@S", span + 3, span + 1), "");
    EXPECT_EQ(formatted("@d", 0), "0");
    EXPECT_EQ(formatted("@d@d", INT_MIN, INT_MAX), "-21474836482147483647");
    EXPECT_EQ(formatted("@c@c", 'x', 'y'), "xy");
    EXPECT_EQ(formatted("a@cb", 0), "ab");
    EXPECT_EQ(formatted("@@"), "@");
}

TEST(dyfmt, text_between_the_directives_is_copied) {
    EXPECT_EQ(formatted("plain"), "plain");
    EXPECT_EQ(formatted("100%d a@s!", "b"), "100%d ab!");
    EXPECT_EQ(formatted("a@sb@dc@@@x", "S", INT_MIN), "aSb-2147483648c@@x");
}

TEST(dyfmt, what_is_no_directive_is_an_at_sign_and_text) {
    EXPECT_EQ(formatted("@"), "@");
    EXPECT_EQ(formatted("a@"), "a@");
    EXPECT_EQ(formatted("@x"), "@x");
    EXPECT_EQ(formatted("@x@s", "y"), "@xy");
    EXPECT_EQ(formatted("@@@"), "@@");
    EXPECT_EQ(formatted("@ @@s"), "@ @s");
}

TEST(dyfmt, no_byte_but_the_directives_is_special) {
    for (int c = 1; c < 256; c++) {
        if (strchr("sSdc@", c) != nullptr) continue;
        const char format[] = {'@', static_cast<char>(c), '\0'};
        EXPECT_EQ(formatted(format), format);
    }
}

TEST(dyfmt, an_empty_format_touches_nothing) {
    owned_string string("abc", 16);
    string.buffer[3] = 'x';
    EXPECT_EQ(dyfmt(&string, ""), string.buffer);
    EXPECT_EQ(string.buffer[3], 'x');
    string.buffer[3] = '\0';
    EXPECT_STRING(string, "abc", 16);
}

char *through_list(dy *string, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char *buffer = dyvfmt(string, format, arguments);
    va_end(arguments);
    return buffer;
}

TEST(dyvfmt, takes_its_arguments_from_a_list) {
    owned_string string;
    EXPECT_EQ(through_list(&string, "@s=@d", "x", -5), string.buffer);
    EXPECT_EQ(text_of(string), "x=-5");
}

}  // namespace
