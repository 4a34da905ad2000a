# consumer_test.sh: a C program links the whole archive, and the shared
# library, with the C compiler alone; the list has one entry a source.
grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/program.c" <<'PROGRAM'
#include <stdio.h>
#include <stdlib.h>
#include <tovan/tovan.h>

int main(void) {
    dy text = {0};
    progname = "program";
    dynew(&text, 0);
    puts(dyfmt(&text, "@s @d", "seven is", 7));
    printf("%s\n", libtovan_list[0]);
    free(text.buffer);
    return 0;
}
PROGRAM
# A program may own the words and tables that are made for it.
cat >"$work/owner.c" <<'PROGRAM'
#include <stdio.h>
#include <tovan/errexit.h>

static const char *const texts[] = {"one", "two"};
const char *const *app_errlist = texts;
int app_nerr = 2;

int main(void) {
    int is_unnamed = progname == NULL;
    printf("%d %s %s\n", is_unnamed, errmsg(-1), errmsg(-2));
    return 0;
}
PROGRAM
expected='seven is 7'
compiler="$CC -std=c11 -Wall -Wextra -Wpedantic -Werror ${flags:-} -I$BINARY/include"
compile="$compiler $work/program.c"

$compiler "$work/owner.c" "$BINARY/lib/libtovan.a" -o "$work/owner" || exit 1
[ "$("$work/owner")" = '1 one two' ] || exit 1
$compiler "$work/owner.c" -L"$BINARY/lib" -ltovan \
    -Wl,-rpath,"$BINARY/lib" -o "$work/owner" || exit 1
[ "$("$work/owner")" = '1 one two' ] || exit 1

$compile "$BINARY/lib/libtovan.a" -o "$work/static" || exit 1
[ "$("$work/static" | head -n 1)" = "$expected" ] || exit 1

sources=$(ls "$SOURCE"/lib/*.cc | wc -l)
size=$(nm -S "$work/static" | awk '$4 == "libtovan_list" { print $2 }')
[ "$((0x$size))" -eq $((sources * 8)) ] || {
    echo "libtovan_list has not one entry a source ($sources sources)"
    exit 1
}

$compile -L"$BINARY/lib" -ltovan -Wl,-rpath,"$BINARY/lib" -o "$work/shared" ||
    exit 1
[ "$("$work/shared" | head -n 1)" = "$expected" ] || exit 1
for program in static shared; do
    readelf -d "$work/$program" "$BINARY"/lib/libtovan.so | grep NEEDED |
        grep -vE 'libc\.so|libtovan\.so|libasan|libubsan|File:' && {
        echo "needs more than the C library"
        exit 1
    }
done
readelf -d "$BINARY/lib/libtovan.so" | grep -q 'soname: \[libtovan.so.8\]'
