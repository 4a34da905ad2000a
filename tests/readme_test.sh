# readme_test.sh: the README names every source and header of the library, its
# links lead somewhere, and its tool compiles and ends as it is shown.
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
readme=$SOURCE/README.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for file in "$SOURCE"/lib/*.cc "$SOURCE"/lib/*.h; do
    name=$(basename "$file")
    case $name in private_*|attrs.h|ident.h) continue ;; esac
    grep -qE "^ *$name " "$readme" || bad "$name is not in the tour"
done
grep -oE '^ +[a-z0-9_]+\.(cc|h) |^[a-z0-9_]+\.h ' "$readme" | tr -d ' ' |
    while read -r name; do
        [ -f "$SOURCE/lib/$name" ] || echo "$name"
    done | grep . && bad "the tour names files that are not there"
grep -oE '\]\([^)#]+\)' "$readme" | tr -d '])(' | while read -r link; do
    [ -e "$SOURCE/$link" ] || echo "$link"
done | grep . && bad "links that lead nowhere"

grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"
sed -n '/^```c$/,/^```$/p' "$readme" | grep -v '^```' >"$work/tool.c"
"$CC" -std=c11 -Wall -Wextra -Werror ${flags:-} -I"$BINARY/include" \
    "$work/tool.c" "$BINARY/lib/libtovan.a" -o "$work/tool" ||
    bad "the tool does not compile"
cd "$work" || exit 1
printf 'CC = cc\nSrcPath = . src\n' >definitions
mkdir src && touch src/main.c
"$BINARY/bin/kivs" -o heap definitions || bad "no heap"
export KIVS_FILE=heap
[ "$(./tool '@CC -c @(findfile main.c)')" = 'cc -c src/main.c' ] ||
    bad "the tool does not expand"
./tool 'cc -c @(findfile main.c' 2>message
[ $? -eq 255 ] || bad "the mistake does not end the tool"
sed -n '/^    \$ \.\/tool/,/^$/p' "$readme" | sed -n 's/^    \(tool:\)/\1/p' |
    diff - message || bad "the message is not the one that is shown"
[ "$failures" -eq 0 ]
