# system_test.sh: a bare Debian 12 in a folder. There the packages install,
# manual pages show, vop helps, and C and C++ programs build by pkg-config and
# by find_package. Takes the packages that packages_test.sh left, and root.
. "$SOURCE/tests/shipping/support.sh"
root=$work/system
inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        LC_ALL=C "$@"
}

ls "$SOURCE"/build/packages/libtovan8_*.deb >/dev/null || {
    bad "packages_test.sh left no packages"
    finish
}
debootstrap --variant=minbase \
    --include=g++,cmake,ninja-build,pkg-config,man-db \
    bookworm "$root" >"$work/log" 2>&1 || {
    tail -n 20 "$work/log"
    bad "no bare system"
    finish
}
# Images without manual pages are common; these are wanted.
rm -f "$root"/etc/dpkg/dpkg.cfg.d/*
mkdir "$root/packages" "$root/consumer"
cp "$SOURCE"/build/packages/*.deb "$root/packages"
cp "$SOURCE"/tests/shipping/consumer/* "$root/consumer"

inside sh -c 'dpkg -i /packages/*.deb' >"$work/log" 2>&1 ||
    { cat "$work/log"; bad "the packages do not install"; }
inside vop help | grep -q expand || bad "vop does not help"
same 42 "$(inside vop expr '6 * 7')" "vop"
for page in dystr '3tovan error' '7 libtovan' '1 vop' '1 kivs'; do
    inside sh -c "MANPAGER=cat MANWIDTH=80 man $page" >"$work/page" 2>&1 &&
        grep -q '^NAME' "$work/page" || {
        cat "$work/page"
        bad "man $page shows nothing"
    }
done

inside sh -ec 'cd /consumer
    for try in "cc program.c" "c++ -std=c++20 program.cc"; do
        $try $(pkg-config --cflags --libs libtovan) -o by_name
        ./by_name
    done
    for languages in C CXX "C;CXX"; do
        rm -rf build
        cmake -G Ninja -S . -B build -DLANGUAGES="$languages" >/dev/null
        cmake --build build >/dev/null
        for program in build/program_*; do $program; done
    done' >"$work/said" 2>"$work/errors" ||
    { head -n 20 "$work/errors"; bad "programs do not build"; }
same "$(yes 'seven is 7' | head -n 10)" "$(cat "$work/said")" "programs"
finish
