# exports_test.sh: the archive defines exactly the published names, needs the
# C library alone, and runs nothing before main.
#   tests/exports.txt   the published names, one a line, in byte order
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
archive=$BINARY/lib/libtovan.a
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

# Coverage and sanitizer builds add names of their own.
nm -g --defined-only "$archive" 2>/dev/null | awk 'NF == 3 { print $3 }' |
    grep -v '^__odr_asan' | sort >"$work/defined"
grep -v '^_Z' "$work/defined" | grep -v '^SID_' >"$work/names"
sort -c "$SOURCE/tests/exports.txt" || bad "exports.txt is not sorted"
diff "$SOURCE/tests/exports.txt" "$work/names" ||
    bad "the archive's names differ from exports.txt (< published, > defined)"
uniq -d "$work/defined" | grep . && bad "defined twice"

# Names that files share lie in the hidden namespace tovan.
grep '^_Z' "$work/defined" | grep -v '^_ZN5tovan' &&
    bad "names outside of the namespace tovan"

# One identification string a source.
for source in "$SOURCE"/lib/*.cc; do
    basename "$source" .cc
done | sed 's/^/SID_/' | sort >"$work/sources"
grep '^SID_' "$work/defined" | diff "$work/sources" - ||
    bad "sources without an identification string"

# Every general word stands alone: its object defines nothing else.
for word in error usage trim clean function trait zombie protect spread dup2 mkstemp; do
    grep -qx "$word" "$SOURCE/tests/exports.txt" || continue
    nm -A -g --defined-only "$archive" 2>/dev/null | grep ":$word.cc.o:" |
        awk '{ print $3 }' | grep -vE "^($word|SID_$word|__odr_asan.*)$" &&
        bad "$word.cc defines more than its word"
    nm -A -u "$archive" 2>/dev/null | grep -E " U $word$" | grep -vE ':(dup2|mkstemp)\.cc' &&
        bad "the library calls $word by its general name"
done

# The word stays the same where headers rename it for 64-bit file offsets.
"$CXX" -std=c++20 -D_FILE_OFFSET_BITS=64 -c "$SOURCE/lib/mkstemp.cc" \
    -o "$work/mkstemp.o" || bad "mkstemp.cc does not compile"
nm -g --defined-only "$work/mkstemp.o" | grep -q ' mkstemp$' ||
    bad "mkstemp has another name with 64-bit file offsets"

case $(grep -c 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt") in
0)
    # Nothing undefined but the library's own and the C library's.
    nm -u "$archive" 2>/dev/null | awk '{ print $2 }' |
        grep -E '^(_Zn|_Zd|_ZSt|_ZNSt|__cxa|__gxx|__glibcxx)' &&
        bad "needs the C++ run-time library"
    readelf -SW "$archive" 2>/dev/null | grep -E '\.(init_array|ctors)' &&
        bad "something runs before main"
    ;;
esac
[ "$failures" -eq 0 ]
