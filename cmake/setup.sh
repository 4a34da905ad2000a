# setup.sh: what ./demo and ./check share: the packages they need, and builds
# that show progress on a terminal and stay quiet elsewhere. Sourced, with the
# current directory at the root of the tree.

say() {
    printf '%s\n' "$*" >&2
}

# have THING: a command, or a file (a pattern) when it holds a slash.
have() {
    case $1 in
    */*) for file in $1; do [ -e "$file" ] && return 0; done; return 1 ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

# need PACKAGE=THING...: installs the packages whose thing is missing, or says
# which they are and ends.
need() {
    missing=
    for pair in "$@"; do
        have "${pair#*=}" || missing="$missing ${pair%%=*}"
    done
    [ -z "$missing" ] && return 0
    if [ "$(id -u)" -ne 0 ] || ! have apt-get; then
        say "$0: these packages are missing, please install them:$missing"
        exit 1
    fi
    say "installing$missing"
    log=$(mktemp)
    if ! { DEBIAN_FRONTEND=noninteractive apt-get update &&
        DEBIAN_FRONTEND=noninteractive apt-get install -y \
            --no-install-recommends $missing; } >"$log" 2>&1; then
        cat "$log" >&2
        say "$0: could not install$missing"
        exit 1
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: configures and builds in build/PRESET.
build() {
    preset=$1
    shift
    log=build/$preset.log
    mkdir -p build
    if ! cmake --preset "$preset" >"$log" 2>&1; then
        cat "$log" >&2
        say "$0: cannot configure build/$preset"
        exit 1
    fi
    if [ -t 2 ]; then
        ninja -C "build/$preset" "$@" 1>&2
    else
        say "building ($preset)"
        ninja -C "build/$preset" "$@" >"$log" 2>&1 || {
            cat "$log" >&2
            false
        }
    fi || {
        say "$0: build/$preset does not build"
        exit 1
    }
}
