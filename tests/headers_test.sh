# headers_test.sh: every header compiles alone, the public ones as C11 and as
# C++20, and the private ones stay out of the public ones.
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
warnings="-Wall -Wextra -Wpedantic -Wconversion -Werror -fsyntax-only"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for header in "$SOURCE"/lib/*.h; do
    name=$(basename "$header")
    printf '#include <tovan/%s>\nextern int used;\n' "$name" >"$work/alone.c"
    cp "$work/alone.c" "$work/alone.cc"
    "$CXX" -std=c++20 $warnings -I"$BINARY/include" "$work/alone.cc" ||
        bad "$name: not C++20"
    case $name in
    private_*|ident.h) continue ;;
    esac
    "$CC" -std=c11 $warnings -I"$BINARY/include" "$work/alone.c" ||
        bad "$name: not C11"
    grep -nE '#include "(private_|ident\.h)' "$header" &&
        bad "$name: includes a private header"
    grep -q "#include \"$name\"" "$SOURCE/lib/tovan.h" ||
        case $name in tovan.h|attrs.h) ;; *) bad "$name: not in tovan.h" ;; esac
done
[ "$failures" -eq 0 ]
