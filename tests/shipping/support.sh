# support.sh: what the tests of shipping share. Sourced by them; $work is a
# folder of their own that goes when they end.
failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

bad() {
    echo "$1"
    failures=$((failures + 1))
}

# same EXPECTED ACTUAL WHAT: reports texts that differ.
same() {
    [ "$1" = "$2" ] && return
    bad "$3: expected"
    printf '%s\n---- but got\n%s\n----\n' "$1" "$2"
}

# needs_libc_alone FILE...: the C library, its loader and libtovan count.
needs_libc_alone() {
    for needing in "$@"; do
        readelf -d "$needing" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
            grep -vE '^(libc|ld-linux.*|libtovan)\.so\.' &&
            bad "$needing needs more than the C library"
    done
}

# compilers: those that are there, each as "C-COMPILER C++-COMPILER".
compilers() {
    for pair in 'gcc g++' 'clang clang++'; do
        if command -v "${pair#* }" >/dev/null; then
            echo "$pair"
        else
            echo "no ${pair#* } here: its programs are not tested" >&2
        fi
    done
}

finish() {
    [ "$failures" -eq 0 ]
    exit
}
