# subproject_test.sh: libtovan as a part of other projects, in C, in C++ and in
# both, with every compiler, and whatever those have set for themselves.
. "$SOURCE/tests/shipping/support.sh"
here=$SOURCE/tests/shipping/consumer
project=$work/build
compilers >"$work/compilers"
while read -r cc cxx; do
    for languages in C CXX 'C;CXX'; do
        rm -rf "$project"
        CC=$cc CXX=$cxx cmake -G Ninja -S "$here" -B "$project" \
            -DLANGUAGES="$languages" -DTREE="$SOURCE" \
            -DCMAKE_CXX_VISIBILITY_PRESET=hidden -DCMAKE_UNITY_BUILD=ON \
            -DCMAKE_POSITION_INDEPENDENT_CODE=OFF -DBUILD_SHARED_LIBS=ON \
            >"$work/log" 2>&1 &&
            cmake --build "$project" >>"$work/log" 2>&1 ||
            { tail -n 40 "$work/log"; bad "$cc, $languages: does not build"; continue; }
        for program in "$project"/program_*; do
            same 'seven is 7' "$("$program")" "$cc, $languages, $program"
            case $program in *_C_*) needs_libc_alone "$program" ;; esac
        done
        # Nothing but the library is built for others, nothing installed.
        [ ! -e "$project/tovan/bin" ] || bad "$cc, $languages: builds tools"
    done
done <"$work/compilers"
finish
