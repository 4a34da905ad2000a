# compat_test.sh: every test that docs/compat.md names is there, and so is each
# that a comment of the sources names.
page=$SOURCE/docs/compat.md
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}

grep '^|' "$page" | grep -vE '^\| (What|---)|^\|---' | grep -vE '`[a-z0-9_]+_test( [A-Za-z0-9_]+)?` \|$' |
    grep . && bad "lines without a test at their end"

grep -oE '`[a-z0-9_]+_test( [A-Za-z0-9_]+)?`' "$page" | tr -d '`' | sort -u |
    while read -r program name; do
        if [ -z "$name" ]; then
            ls "$SOURCE"/tests/"$program".sh "$SOURCE"/tests/*/"$program".sh
        else
            grep -qE "^TEST(_F|_P)?\([A-Za-z0-9_]+, *$name\)" \
                "$SOURCE/tests/$program.cc" && echo "$name"
        fi 2>/dev/null | grep -q . || echo "$program $name"
    done | grep . && bad "docs/compat.md names tests that are not there"

# Comments wrap: a name may stand on the line behind its "(test".
cat "$SOURCE"/lib/*.cc "$SOURCE"/lib/*.h "$SOURCE"/tools/*.cc \
    "$SOURCE"/tools/*/*.cc | sed 's|^ *// *||' | tr '\n' ' ' |
    grep -oE '\(test [A-Za-z0-9_]+\)' | tr -d '()' | sort -u |
    while read -r _ name; do
        grep -qE "^TEST(_F|_P)?\([A-Za-z0-9_]+, *$name\)" "$SOURCE"/tests/*_test.cc ||
            echo "$name"
    done | grep . && bad "comments name tests that are not there"
[ "$failures" -eq 0 ]
