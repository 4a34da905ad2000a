# words_test.sh: the general words among the library's names (error, usage,
# trim, dup2, ...) serve those who mean ours and nobody else: not other
# libraries, not programs that own a word. Every program is linked with the
# archive and with the shared library.
. "$SOURCE/tests/shipping/support.sh"
here=$SOURCE/tests/shipping/words
archive=$BINARY/lib/libtovan.a
shared="-L$BINARY/lib -ltovan -Wl,-rpath,$BINARY/lib"
compile="$CC -std=c11 -Wall -Wextra -Werror -I$BINARY/include"
cd "$work" || exit 1

# make OUTPUT ARGUMENT...
make() {
    output=$1
    shift
    $compile "$@" -o "$output" || bad "$output: does not build"
}

# Another library keeps the C library's error, dup2 and mkstemp, beside a
# program that has ours.
make libother.so -shared -fPIC "$here/other.c"
other="-L. -lother -Wl,-rpath,$work"
make beside_archive "$here/beside_other.c" $other "$archive"
make beside_shared "$here/beside_other.c" $other $shared
for program in beside_archive beside_shared; do
    same "$(printf '%s\n' 'from program' "./$program: from other")" \
        "$("./$program" 2>&1)" "who speaks in $program"
    LD_BIND_NOW=1 LD_DEBUG=bindings LD_DEBUG_OUTPUT="$work/bound" "./$program" \
        2>/dev/null
    cat "$work"/bound.* >bindings && rm "$work"/bound.*
    for word in error dup2 mkstemp; do
        target=$(sed -n "s|.*binding file .*/libother\.so .* to \([^ ]*\) .*symbol \`$word'.*|\1|p" bindings)
        case $target in
        */libc.so.*) ;;
        *) bad "$program: another library's $word is found in '$target'" ;;
        esac
    done
done

# A layer over the library, and a plugin, have ours in a program that means
# the C library's.
make liblayer.so -shared -fPIC "$here/layer.c" $shared
make libown.so -shared -fPIC "$here/layer.c" "$archive"
make over_layer "$here/over_layer.c" -L. -llayer "-Wl,-rpath,$work"
make over_own "$here/over_layer.c" -L. -lown "-Wl,-rpath,$work"
make with_plugin "$here/over_layer.c" -DPLUGIN='"./liblayer.so"'
make with_own "$here/over_layer.c" -DPLUGIN='"./libown.so"'
for program in over_layer over_own with_plugin with_own; do
    same "$(printf '%s\n' 'from layer' "./$program: from program")" \
        "$("./$program" 2>&1)" "who speaks in $program"
done
same layer_speaks "$(nm -D --defined-only libown.so | awk '{ print $3 }')" \
    "names that a library with the archive inside shows"

# A program owns all of the words, and the library goes on as ever.
printf 'X>/a /b\n' >maps
printf '@{ a\n@| a  \nplain\n@}\n' >fixed
cat >expected <<LINES
Warning: maps:1: mapping type not one of [MPD]>
plain
a b
/b
output
error
$work/root/x:/usr/bin:/bin
a file
-q: invalid flag
Usage: own [-xvX] [-V dflags] [test <flags>]
Use -x flag for explanations
LINES
for link in "$archive" "$shared"; do
    make own "$here/with_own_words.c" "$here/own_words.c" $link
    MORVA=$work/root HOME_MORVA=$work/home DBLESLASHROOT=0 PATH=/usr/bin:/bin \
        ./own >written 2>&1
    same 255 $? "status with $link"
    same "$(cat expected)" "$(cat written)" "a program with words of its own, $link"
done

# A program brings its own tables, by definition or by assignment.
cat >expected <<'LINES'
first of ours
second of ours
Unknown error
what this does
LINES
for link in "$archive" "$shared"; do
    for how in DEFINITION ASSIGNMENT; do
        make tables "$here/own_tables.c" "-DBY_$how" $link
        same "$(cat expected)" "$(./tables | sed -n '1,3p; /what this does/p')" \
            "by $how with $link"
    done
done

# <error.h> and our header get along in both orders, in C and in C++. Whose
# error() a program means is said by the order of its libraries.
for language in c c++; do
    for order in '' -DTOVAN_NO_ERROR '-DOURS_FIRST -DTOVAN_NO_ERROR'; do
        for link in "$archive" "$shared"; do
            "$CXX" -x $language -Wall -Wextra -Werror -I"$BINARY/include" \
                $order "$here/both_errors.c" -x none -Wl,-lc $link -o both ||
                bad "$language $order: does not build"
            same "$(printf '%s\n' './both: from C' 'from tovan')" \
                "$(./both 2>&1)" "$language $order"
        done
    done
done

# Copies of variables in programs at a fixed address, and in others.
for how in '-no-pie -fno-pic' '-pie -fPIE'; do
    make copies $how "$here/copies.c" $shared
    same "$(printf '%s\n' 'one table' 'copies: one name')" \
        "$(./copies 2>&1)" "copies, $how"
done

# The system's headers may call mkstemp by another name; ours keeps its own.
if grep -qx mkstemp "$SOURCE/tests/exports.txt"; then
    "$CXX" -std=c++20 -O2 -D_FILE_OFFSET_BITS=64 -I"$BINARY/include" -c \
        "$SOURCE/lib/mkstemp.cc" -o large.o
    nm large.o | grep -q ' T mkstemp$' ||
        bad "mkstemp loses its name under large-file flags"
    for link in "$archive" "$shared"; do
        make large "$here/large_files.c" $link
        same made "$(./large)" "mkstemp under large-file flags"
    done
fi

# Identification strings stay where the linker drops what nothing refers to.
strings_of() {
    strings -a "$1" | grep -o '@(#)-ltovan(.*' | sort
}
program=$SOURCE/tests/shipping/consumer/program.c
make whole "$program" "$archive"
make lean -ffunction-sections -fdata-sections -Wl,--gc-sections "$program" "$archive"
strings_of whole >kept
[ "$(wc -l <kept)" -ge 10 ] || bad "only few identification strings"
strings_of lean | diff kept - || bad "--gc-sections drops identification strings"
strings -a lean | grep -qF 'V@(#)Libtovan 8.4.1' ||
    bad "--gc-sections drops the banner"

finish
