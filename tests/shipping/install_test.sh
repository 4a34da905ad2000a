# install_test.sh: what an installation holds, where it says that it lies, and
# that C, C++ and mixed projects build against it with every compiler, by
# pkg-config and by find_package.
. "$SOURCE/tests/shipping/support.sh"

# install COMPONENT PREFIX
install() {
    cmake --install "$BINARY" --component "$1" --prefix "$2" \
        >"$work/install.log" 2>&1 ||
        { cat "$work/install.log"; bad "component $1: not installed"; }
}

# files FOLDER: paths below it, without the manual pages.
files() {
    (cd "$1" && find . ! -type d | sed 's|^\./||' | grep -v '/man/' | sort)
}

libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$BINARY/CMakeCache.txt")
install runtime "$work/runtime"
install dev "$work/dev"
install tools "$work/tools"
same "$(printf '%s\n' "$libdir/libtovan.so.8" "$libdir/libtovan.so.8.4.1")" \
    "$(files "$work/runtime")" "component runtime"
{
    (cd "$SOURCE/lib" && ls *.h) | grep -vE '^(private_.*|ident)\.h$' |
        sed 's|^|include/tovan/|'
    cat <<FILES
$libdir/cmake/tovan/tovan-config-version.cmake
$libdir/cmake/tovan/tovan-config.cmake
$libdir/libtovan.a
$libdir/libtovan.so
$libdir/pkgconfig/libtovan.pc
FILES
} | sort >"$work/expected"
same "$(cat "$work/expected")" "$(files "$work/dev")" "component dev"
same "$(printf 'bin/%s\n' kivs mktraits vop)" \
    "$(files "$work/tools" | grep '^bin/')" "component tools"

# All of it, for the consumers below.
cmake --install "$BINARY" --prefix "$work/usr" >"$work/install.log" 2>&1 ||
    bad "not installed"
needs_libc_alone "$work"/usr/bin/*
same 42 "$("$work/usr/bin/vop" expr '6 * 7')" "installed vop"

# The place that libtovan.pc names: the prefix, not the staging folder before
# it; folders given as absolute stay so.
DESTDIR=$work/staged cmake --install "$BINARY" --component dev --prefix /opt/t \
    >"$work/install.log" 2>&1 || bad "not staged"
pc=$work/staged/opt/t/$libdir/pkgconfig
asked() {
    PKG_CONFIG_PATH=$pc pkg-config "$@" libtovan | sed 's/ *$//'
}
same /opt/t "$(asked --variable=prefix)" "prefix"
same "/opt/t/$libdir" "$(asked --variable=libdir)" "libdir"
same "-I/opt/t/include -L/opt/t/$libdir -ltovan" "$(asked --cflags --libs)" flags
same "$(asked --libs)" "$(asked --libs --static)" "flags for the archive"
same 8.4.1 "$(asked --modversion)" version
pc=$work
cmake -DCMAKE_INSTALL_PREFIX=/opt/t -DOUTPUT="$work/libtovan.pc" \
    -DLIBDIR=/srv/lib -DINCLUDEDIR=/srv/include -DVERSION=8.4.1 \
    -DDESCRIPTION=x -P "$SOURCE/cmake/pkgconfig.cmake"
same '-I/srv/include -L/srv/lib -ltovan' "$(asked --cflags --libs)" \
    "absolute folders"

# By pkg-config: a C and a C++ program, shared and static.
here=$SOURCE/tests/shipping/consumer
lib=$work/usr/$libdir
expected='seven is 7'
export PKG_CONFIG_PATH="$lib/pkgconfig"
flags="$(pkg-config --cflags libtovan) -Wall -Wextra -Wpedantic -Werror"
compilers >"$work/compilers"
while read -r cc cxx; do
    for link in "$(pkg-config --libs libtovan) -Wl,-rpath,$lib" "$lib/libtovan.a"; do
        $cc -std=c11 $flags "$here/program.c" $link -o "$work/c" &&
            $cxx -std=c++20 $flags "$here/program.cc" $link -o "$work/cc" ||
            bad "$cc: does not build with $link"
        same "$expected" "$("$work/c")" "C program, $cc, $link"
        same "$expected" "$("$work/cc")" "C++ program, $cxx, $link"
        needs_libc_alone "$work/c"
    done
done <"$work/compilers"

# As the README says it, for the tool that it shows.
mkdir "$work/readme"
readme=$SOURCE/README.md
sed -n '/^```c$/,/^```$/p' "$readme" | grep -v '^```' >"$work/readme/tool.c"
(
    cd "$work/readme" || exit 1
    eval "$(sed -n 's/^    \(cc tool.c .*pkg-config.*\)/\1/p' "$readme")" || exit 1
    LD_LIBRARY_PATH=$lib ./tool 2>&1
) >"$work/said"
same 'tool: usage: tool TEXT...' "$(cat "$work/said")" "the tool by pkg-config"
{
    printf 'cmake_minimum_required(VERSION 3.20)\nproject(tool C)\n'
    sed -n 's/^    \(find_package(.*\) # and \(target_.*\)/\1\nadd_executable(tool tool.c)\n\2/p' "$readme"
} >"$work/readme/CMakeLists.txt"
cmake -G Ninja -S "$work/readme" -B "$work/readme/build" \
    -DCMAKE_PREFIX_PATH="$work/usr" >"$work/log" 2>&1 &&
    cmake --build "$work/readme/build" >>"$work/log" 2>&1 ||
    { cat "$work/log"; bad "the tool does not build by find_package"; }
same 'tool: usage: tool TEXT...' "$("$work/readme/build/tool" 2>&1)" \
    "the tool by find_package"

# By find_package, where the installation was moved to: projects in C, in C++
# and in both.
mv "$work/usr" "$work/moved"
project=$work/build
while read -r cc cxx; do
    for languages in C CXX 'C;CXX'; do
        rm -rf "$project"
        CC=$cc CXX=$cxx cmake -G Ninja -S "$here" -B "$project" \
            -DLANGUAGES="$languages" -DCMAKE_PREFIX_PATH="$work/moved" \
            >"$work/log" 2>&1 &&
            cmake --build "$project" >>"$work/log" 2>&1 ||
            { cat "$work/log"; bad "$cc, $languages: does not build"; continue; }
        for program in "$project"/program_*; do
            same "$expected" "$("$program")" "$cc, $languages, $program"
            case $program in *_C_*) needs_libc_alone "$program" ;; esac
        done
    done
done <"$work/compilers"

# One major version does not stand in for another.
cmake "$project" -DVERSION=7 >"$work/log" 2>&1 &&
    bad "version 8 is taken for version 7"
tr -s '\n ' ' ' <"$work/log" |
    grep -q 'compatible with requested version "7"' ||
    { cat "$work/log"; bad "version 7 is refused for another reason"; }

finish
