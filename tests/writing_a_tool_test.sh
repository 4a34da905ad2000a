# writing_a_tool_test.sh: the program of docs/writing-a-tool.md compiles, and
# every command of the page writes what the page shows.
page=$SOURCE/docs/writing-a-tool.md
. "$SOURCE/tests/support/console.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"

mkdir "$work/bin" "$work/tree"
blocks "$page" c >"$work/ccline.c"
blocks "$page" definitions >"$work/tree/definitions"
blocks "$page" console >"$work/shown"
"$CC" -std=c11 -Wall -Wextra -Wpedantic -Wconversion -Werror ${flags:-} \
    -I"$BINARY/include" "$work/ccline.c" "$BINARY/lib/libtovan.a" \
    -o "$work/tree/ccline" || exit 1

unset KIVS_FILE ccline_debug KRT_debug
PATH=$work/tree:$BINARY/bin:$PATH
export PATH MORVA="$work/nowhere"
cd "$work/tree" || exit 1
replay "$work/shown" >"$work/written"
diff "$work/shown" "$work/written"
