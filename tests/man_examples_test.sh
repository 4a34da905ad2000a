# man_examples_test.sh: the examples of the manual pages compile, and what
# they write is what the pages show. A display is marked by the comment before
# it:
#   example NAME.c   a program, compiled as ./NAME
#   output NAME      what ./NAME writes
#   console          commands behind "$ ", and what they write
#   file NAME        the contents of a file
: "${SOURCE:?}" "${BINARY:?}" "${CC:?}"
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"
unset KIVS_FILE TRAITS_FILE HOME_MORVA KRT_debug
export PATH=.:$BINARY/bin:$PATH MORVA=/nowhere LC_ALL=C

compile() {
    "$CC" -std=c11 -Wall -Wextra -Wpedantic -Werror ${flags:-} \
        -I"$BINARY/include" "$1" "$BINARY/lib/libtovan.a" -o "${1%.c}"
}

# replay COMMANDS: a session as it is shown; status and variables go on.
replay() {
    sed -n 's/^\$ //p' "$1" >"$work/commands"
    status=0
    while IFS= read -r command; do
        printf '$ %s\n' "$command"
        (exit "$status")
        eval "$command" 2>&1 </dev/null
        status=$?
    done <"$work/commands"
}

# run_block FILE KIND NAME: what a display stands for, in this folder.
run_block() {
    case $2 in
    none) ;;
    file) cp "$1" "$3" ;;
    example) cp "$1" "$3" && compile "$3" ;;
    output) "./$3" 2>&1 </dev/null | diff "$1" - ;;
    console) (replay "$1") | diff "$1" - ;;
    *) echo "$2: unknown mark" && false ;;
    esac
}

for page in "$SOURCE"/man/*; do
    mkdir "$work/blocks" "$work/here"
    cd "$work/here" || exit 1
    awk -v into="$work/blocks" -f "$SOURCE/tests/man/blocks.awk" "$page" \
        >"$work/list"
    while read -r file kind name; do
        run_block "$file" "$kind" "$name" || bad "$page: $kind $name"
    done <"$work/list"
    case $page in
    *.3tovan)
        grep -q ' example ' "$work/list" || bad "$page: no example"
        grep -qE ' (output|console)' "$work/list" || bad "$page: nothing runs"
        ;;
    esac
    cd / && rm -rf "$work/blocks" "$work/here"
done
[ "$failures" -eq 0 ]
