# man_ends_test.sh: what a manual page says under ERRORS is what the object
# code can do: each function that reaches exit() or abort() is named there, or
# the section speaks of all; where memory can run out, it says so.
: "${SOURCE:?}" "${BINARY:?}"
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ "$(uname -m)" != x86_64 ] || ! command -v objdump >/dev/null ||
    grep -qE 'TOVAN_(SANITIZE|COVERAGE):BOOL=ON' "$BINARY/CMakeCache.txt"; then
    echo "not looked at: object code of another machine, or with additions"
    exit 0
fi
objdump -dr "$BINARY/lib/libtovan.a" >"$work/code" 2>/dev/null
reached() {
    awk -v ends="$1" -f "$SOURCE/tests/man/reach.awk" "$work/code" | sort -u
}
reached 'exit _exit' >"$work/exit"
reached 'abort __assert_fail' >"$work/abort"
for name in errexit lclexit lvget usage; do
    grep -qx "$name" "$work/exit" || bad "$name does not exit: is this the code?"
done
grep -qx dystr "$work/abort" || bad "dystr does not abort: is this the code?"
grep -qxE 'dytrim|fakesyserr' "$work/exit" && bad "too much exits"

for page in "$SOURCE"/man/*.3tovan; do
    awk '/^\.Sh / { on = /ERRORS/ } on' "$page" >"$work/errors"
    sed -n '/^\.Nd /q; s/^\.Nm \([^ ]*\).*/\1/p' "$page" >"$work/names"
    grep -qE '^(All|Every|Any) function|^All of them' "$work/errors" ||
        for name in $(grep -xF -f "$work/exit" "$work/names"); do
            grep -qw "$name" "$work/errors" || bad "$page: $name can exit"
        done
    for name in $(grep -xF -f "$work/abort" "$work/names" |
        grep -vxF -f "$work/exit"); do
        grep -qE "memory|\\<$name\\>" "$work/errors" ||
            bad "$page: $name can abort"
    done
done
[ "$failures" -eq 0 ]
