# packages_test.sh: the Debian packages and the archive of cpack hold what they
# should, please lintian, and have the same bytes wherever they are built.
. "$SOURCE/tests/shipping/support.sh"
export SOURCE_DATE_EPOCH
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l "$SOURCE/debian/changelog" -S Timestamp)

# package FOLDER: its Debian packages beside it, its archive in it.
package() {
    (
        cd "$1" || exit 1
        DEB_BUILD_OPTIONS="nocheck parallel=$(nproc)" \
            dpkg-buildpackage -b -us -uc &&
            cmake --preset tools && cmake --build build/tools &&
            cd build/tools && cpack -G TGZ
    ) >"$work/log" 2>&1 || { tail -n 40 "$work/log"; bad "no packages in $1"; }
}

# The sources twice, without what builds left among them.
mkdir -p "$work/one/tovan" "$work/another/place"
tar -C "$SOURCE" --exclude=./build --exclude=./.git -cf - . |
    tar -C "$work/one/tovan" -xf -
cp -a "$work/one/tovan" "$work/another/place/tovan"
package "$work/one/tovan"
package "$work/another/place/tovan"
one=$work/one
another=$work/another/place
for package in libtovan8 libtovan-dev tovan-tools; do
    file=$(cd "$one" && ls "${package}"_*.deb)
    cmp "$one/$file" "$another/$file" || bad "$package depends on its place"
done
archive=$(cd "$one/tovan/build/tools" && ls libtovan-*.tar.gz)
cmp "$one/tovan/build/tools/$archive" "$another/tovan/build/tools/$archive" ||
    bad "$archive depends on its place"

lintian --fail-on error,warning "$one"/*.changes >"$work/lintian" ||
    { cat "$work/lintian"; bad "lintian complains"; }
grep '^[EW]:' "$work/lintian" && bad "lintian warns"

# What is in them.
for package in libtovan8 libtovan-dev tovan-tools; do
    dpkg-deb -x "$one/${package}"_*.deb "$work/root"
done
mkdir "$work/unpacked"
tar -C "$work/unpacked" -xzf "$one/tovan/build/tools/$archive"
for root in "$work/root/usr" "$work/unpacked"/usr/local; do
    same 42 "$("$root/bin/vop" expr '6 * 7')" "vop in $root"
    libdir=$(dirname "$(find "$root/lib" -name libtovan.a)")
    cc -std=c11 "-I$root/include" "$SOURCE/tests/shipping/consumer/program.c" \
        "-L$libdir" -ltovan "-Wl,-rpath,$libdir" -o "$work/program" &&
        same 'seven is 7' "$("$work/program")" "program with $root"
done
dpkg-deb -f "$one"/tovan-tools_*.deb Depends | grep -v '^libc6 ([^,]*)$' &&
    bad "tovan-tools depends on more than the C library"
grep -q '^prefix=/usr/local$' "$work"/unpacked/usr/local/lib/pkgconfig/libtovan.pc ||
    bad "libtovan.pc of the archive names another place"

# For system_test.sh.
rm -rf "$SOURCE/build/packages"
mkdir -p "$SOURCE/build/packages"
cp "$one"/lib*.deb "$one"/tovan-tools_*.deb "$SOURCE/build/packages"
finish
