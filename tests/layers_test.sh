# layers_test.sh: includes point down, and the "Builds on:" line of each
# header names what its sources include.
#   tests/layers.txt   the families in order, and the exceptions
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
lib=$SOURCE/lib
layers=$SOURCE/tests/layers.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

# quoted FILE...: the quoted includes, without what every file has.
quoted() {
    sed -n 's/^#include "\(.*\)"$/\1/p' "$@" | sort -u |
        grep -vE '^(attrs|ident|tovan)\.h$|^private_'
}

# family HEADER: the sources whose own (first quoted) header it is.
awk 'FNR == 1 { found = 0 }
     !found && /^#include "/ { split($0, part, "\""); print part[2], FILENAME; found = 1 }
    ' "$lib"/*.cc >"$work/families"
family() {
    sed -n "s,^$1 ,,p" "$work/families"
}

# stated HEADER: the headers of its "Builds on:" sentence.
stated() {
    awk '/^\/\/ Builds on:/ { on = 1 } on; on && /\.$/ { exit }' "$lib/$1" |
        grep -oE '[a-z0-9_]+\.h' | sort -u
}

rank() {
    grep -nx "$1" "$layers" | cut -d: -f1
}

# behind FILE...: the families whose private headers are included.
behind() {
    sed -n 's/^#include "private_\(.*\)"$/\1/p' "$@" | sort -u |
        while read -r name; do [ -f "$lib/$name" ] && echo "$name"; done
}

for header in "$lib"/*.h; do
    name=$(basename "$header")
    case $name in private_*|attrs.h|ident.h|tovan.h) continue ;; esac
    base=${name%.h}
    [ -n "$(rank "$base")" ] || bad "$name: not in layers.txt"
    quoted "$header" $(family "$name") | grep -vx "$name" >"$work/included"
    stated "$name" >"$work/stated"
    # What only a private header brings may be stated, and need not be.
    behind $(family "$name") | sort -u "$work/included" - >"$work/all"
    comm -12 "$work/stated" "$work/all" | sort -u "$work/included" - |
        diff "$work/stated" - >"$work/diff" ||
        bad "$name: Builds on (<) is not what is included (>): $(grep '^[<>]' "$work/diff" | tr '\n' ' ')"
    while read -r other; do
        other=${other%.h}
        [ "$other" = "$base" ] && continue
        grep -qx "$base > $other" "$layers" && continue
        [ "$(rank "$other")" -lt "$(rank "$base")" ] ||
            bad "$base includes $other, which lies above it"
    done <"$work/all"
done
[ "$failures" -eq 0 ]
