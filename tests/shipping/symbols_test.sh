# symbols_test.sh: the shared library shows the published names under one
# version and nothing else, the archive shows nothing through what links it,
# and neither runs code before main or needs memory that is both writable and
# executable.
. "$SOURCE/tests/shipping/support.sh"
map=$SOURCE/lib/libtovan.map
shared=$BINARY/lib/libtovan.so
archive=$BINARY/lib/libtovan.a

# The version script against the published names.
sed 's|/\*.*||' "$map" | sed -n 's/^    \([A-Za-z0-9_]*\);$/\1/p' |
    sort >"$work/map"
diff "$SOURCE/tests/exports.txt" "$work/map" ||
    bad "libtovan.map (>) differs from exports.txt (<)"
grep -E '^[A-Z].*\{$' "$map" >"$work/nodes"
same 'LIBTOVAN_8.4 {' "$(cat "$work/nodes")" "nodes of libtovan.map"

# The shared library against both.
for source in "$SOURCE"/lib/*.cc; do
    echo "SID_$(basename "$source" .cc)"
done | cat - "$SOURCE/tests/exports.txt" | sort >"$work/published"
nm -D --defined-only --with-symbol-versions "$shared" |
    awk '$3 != "LIBTOVAN_8.4@@LIBTOVAN_8.4" && $2 != "A" { print $3 }' |
    sort >"$work/shown"
sed 's/$/@@LIBTOVAN_8.4/' "$work/published" | diff - "$work/shown" ||
    bad "the shared library (>) does not show what is published (<)"

# Its own functions are called directly; what programs may replace or copy is
# reached through the table.
readelf -rW "$shared" | grep JUMP_SLO | grep '@LIBTOVAN' &&
    bad "functions of the library are called through names"
readelf -rW "$shared" | sed -n 's/.*GLOB_DAT.* \([a-z_]*\)@@LIBTOVAN.*/\1/p' |
    sort >"$work/reached"
for name in progname progdesc app_errlist app_nerr _istype rxpbuf; do
    grep -qx "$name" "$work/reached" ||
        bad "$name is not reached where a program has it"
done

# Every definition of the archive is hidden.
readelf -sW "$archive" 2>/dev/null |
    awk '$5 == "GLOBAL" && $7 ~ /^[0-9]+$/ && $6 != "HIDDEN" { print $8 }' |
    grep . && bad "definitions of the archive that are not hidden"

# Loaded as it lies on disk.
readelf -dW "$shared" | grep -E 'TEXTREL|RPATH|RUNPATH' &&
    bad "text relocations or paths"
same 'libtovan.so.8' \
    "$(readelf -dW "$shared" | sed -n 's/.*soname: \[\(.*\)\]/\1/p')" soname
same 'libtovan.so.8.4.1' "$(basename "$(readlink -f "$shared")")" "file name"
needs_libc_alone "$shared" "$BINARY"/bin/kivs "$BINARY"/bin/mktraits \
    "$BINARY"/bin/vop
for file in "$shared" "$BINARY"/bin/*; do
    readelf -lW "$file" | grep GNU_STACK | grep -q 'RW ' ||
        bad "$file: executable stack"
    # One entry, that of the compiler's own start files.
    entries=$(readelf -SW "$file" |
        sed -n 's/.* \.init_array *INIT_ARRAY *[^ ]* [^ ]* \([^ ]*\) .*/\1/p')
    [ "$((0x$entries))" -le 8 ] || bad "$file: runs code before main"
done
objects=$(ar t "$archive" | wc -l)
stacks=$(readelf -SW "$archive" | grep -c '\.note\.GNU-stack')
same "$objects" "$stacks" "objects that say what stack they need"
readelf -SW "$archive" | grep '\.note\.GNU-stack' | grep -q ' X ' &&
    bad "objects that need an executable stack"

finish
