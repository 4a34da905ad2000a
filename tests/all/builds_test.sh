# builds_test.sh: library and programs need the C library alone however they
# are built: with each compiler, unoptimised, with the assertions of the C++
# library, and with the flags of distributions.
. "$SOURCE/tests/shipping/support.sh"

# build_with CC CXX FLAGS: in $work/build, which then holds the last one.
build_with() {
    rm -rf "$work/build"
    CC=$1 CXX=$2 cmake -G Ninja -S "$SOURCE" -B "$work/build" \
        -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="$3" -DCMAKE_C_FLAGS="$3" \
        -DTOVAN_TESTS=OFF >"$work/log" 2>&1 &&
        cmake --build "$work/build" >>"$work/log" 2>&1 ||
        { tail -n 40 "$work/log"; bad "$1 $3: does not build"; return; }
    needs_libc_alone "$work/build/lib/libtovan.so" "$work/build"/bin/*
    SOURCE=$SOURCE BINARY=$work/build sh "$SOURCE/tests/shipping/symbols_test.sh" ||
        bad "$1 $3: see above"
    # What the archive needs is its own or the C library's: C links all of it.
    printf '#include <tovan/tovan.h>\nint main(void) { return !libtovan_list[0]; }\n' >"$work/all.c"
    $1 "-I$work/build/include" "$work/all.c" "$work/build/lib/libtovan.a" \
        -o "$work/all" && "$work/all" || bad "$1 $3: the archive does not link as C"
    needs_libc_alone "$work/all"
}

compilers >"$work/compilers"
while read -r cc cxx; do
    build_with "$cc" "$cxx" '-O0'
    build_with "$cc" "$cxx" '-O2 -D_GLIBCXX_ASSERTIONS -D_GLIBCXX_DEBUG'
done <"$work/compilers"
build_with gcc g++ '-O3 -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fcf-protection -D_FILE_OFFSET_BITS=64'
finish
