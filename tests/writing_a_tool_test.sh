# writing_a_tool_test.sh: the program of docs/writing-a-tool.md compiles, and
# every command of the page writes what the page shows.
page=$SOURCE/docs/writing-a-tool.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"

# blocks NAME: the contents of the page's blocks of that kind.
blocks() {
    awk -v start="\`\`\`$1" '
        $0 == "```" { on = 0 }
        on
        $0 == start { on = 1 }' "$page"
}

mkdir "$work/bin" "$work/tree"
blocks c >"$work/ccline.c"
blocks definitions >"$work/tree/definitions"
blocks console >"$work/shown"
grep -c '^\$ ' "$work/shown" | grep -qvx 0 || {
    echo "no commands in the page"
    exit 1
}
"$CC" -std=c11 -Wall -Wextra -Wpedantic -Wconversion -Werror ${flags:-} \
    -I"$BINARY/include" "$work/ccline.c" "$BINARY/lib/libtovan.a" \
    -o "$work/tree/ccline" || exit 1

# Each command is shown, then run; status and variables go on.
unset KIVS_FILE ccline_debug KRT_debug
PATH=$work/tree:$BINARY/bin:$PATH
export PATH MORVA="$work/nowhere"
cd "$work/tree" || exit 1
sed -n 's/^\$ //p' "$work/shown" >"$work/commands"
status=0
while IFS= read -r command; do
    printf '$ %s\n' "$command"
    (exit "$status")
    eval "$command" 2>&1 </dev/null
    status=$?
done <"$work/commands" >"$work/written"
diff "$work/shown" "$work/written"
