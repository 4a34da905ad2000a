# examples_test.sh: the example programs build without a warning, and every
# command of their page writes what the page shows.
. "$SOURCE/tests/support/console.sh"
page=$SOURCE/examples/README.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
grep -q 'TOVAN_SANITIZE:BOOL=ON' "$BINARY/CMakeCache.txt" &&
    flags="-fsanitize=address,undefined"

mkdir -p "$work/bin" "$work/tree" "$work/root/data/traits"
for source in "$SOURCE"/examples/*.c "$SOURCE"/examples/*.cc; do
    name=$(basename "$source")
    grep -qF "[$name]($name)" "$page" || {
        echo "$name is not on the page"
        exit 1
    }
    case $name in
    *.cc) compile="$CXX -std=c++20" ;;
    *) compile="$CC -std=c11 -D_POSIX_C_SOURCE=200809L" ;;
    esac
    $compile -Wall -Wextra -Wpedantic -Wconversion -Werror ${flags:-} \
        -I"$BINARY/include" "$source" "$BINARY/lib/libtovan.a" \
        -o "$work/bin/${name%.*}" || exit 1
done

blocks "$page" definitions >"$work/tree/definitions"
blocks "$page" roots.map >"$work/root/data/roots.map"
blocks "$page" console >"$work/shown"
mkdir "$work/tree/src" "$work/tree/lib"
touch "$work/tree/src/main.c" "$work/tree/lib/util.c"
unset KIVS_FILE TRAITS_FILE KRT_debug
PATH=$work/bin:$BINARY/bin:$PATH
export PATH MORVA="$work/root" HOME_MORVA="$work/nowhere"
cd "$work/tree" || exit 1
replay "$work/shown" >"$work/written"
diff "$work/shown" "$work/written"
