# man_test.sh: the manual pages are complete, true to the headers, and clean.
#   man/               the pages
#   $BINARY/man        the same as installed, with a link for each further name
#   tests/man/*.awk    what reads them
: "${SOURCE:?}" "${BINARY:?}" "${CC:?}" "${CXX:?}"
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
helpers=$SOURCE/tests/man

# names PAGE: the names of its NAME section, one a line.
names() {
    sed -n '/^\.Nd /q; s/^\.Nm \([^ ]*\).*/\1/p' "$1"
}
# section PAGE TITLE: the text of a section, on one line.
section() {
    awk -v title="$2" '/^\.Sh / { on = $0 == ".Sh " title; next } on' "$1" |
        tr '\n' ' '
}

# Every exported name has a page that declares it.
while read -r name; do
    link=$BINARY/man/man3/$name.3tovan
    [ -f "$link" ] || { bad "$name: no page"; continue; }
    page=$(sed -n 's,^\.so man3/,,p' "$link")
    page=$SOURCE/man/${page:-$name.3tovan}
    names "$page" | grep -qx "$name" || bad "$name: not in its page's NAME"
done <"$SOURCE/tests/exports.txt"

# Every program and every file format has its page, and none has two.
for tool in "$SOURCE"/tools/*.cc; do
    page=$(basename "$tool" .cc).1
    [ -f "$SOURCE/man/$page" ] || bad "$tool: no page"
done
for format in "$SOURCE"/docs/formats/*.md; do
    page=tovan-$(basename "$format" .md).5
    [ -f "$SOURCE/man/$page" ] || bad "$format: no page"
done
for page in "$SOURCE"/man/*; do
    names "$page" | sed "s/\$/.${page##*.}/"
done | sort | uniq -d | grep . && bad "explained twice"

# A SYNOPSIS agrees with the headers, in C and in C++.
for page in "$SOURCE"/man/*.3tovan; do
    awk -f "$helpers/synopsis.awk" "$page" >"$work/declared"
    names "$page" | while read -r name; do
        grep -v '^#' "$work/declared" | grep -qw "$name" || echo "$name"
    done | grep . && bad "$page: not in the SYNOPSIS"
    {
        grep '^#' "$work/declared"
        printf '#ifdef __cplusplus\nextern "C" {\n#endif\n'
        grep -v '^#' "$work/declared"
        printf '#ifdef __cplusplus\n}\n#endif\n'
    } >"$work/synopsis.c"
    cp "$work/synopsis.c" "$work/synopsis.cc"
    for compile in "$CC -std=c11 $work/synopsis.c" \
        "$CXX -std=c++20 $work/synopsis.cc"; do
        $compile -Wall -Wextra -Werror -fsyntax-only -I"$BINARY/include" ||
            bad "$page: the SYNOPSIS does not compile"
    done
done

# Records are shown as the headers have them.
cat "$SOURCE"/lib/*.h | sed 's,//.*,,; s,/\*[^*]*\*/,,g' | tr -d ' \n' \
    >"$work/headers"
for page in "$SOURCE"/man/*.3tovan; do
    awk -v into="$work" -f "$helpers/blocks.awk" "$page" |
        while read -r file kind; do
            grep -q '^typedef' "$file" || continue
            sed 's,/\*[^*]*\*/,,g' "$file" | tr -d ' \n' >"$work/record"
            grep -qF -f "$work/record" "$work/headers" || head -n 1 "$file"
        done | grep . && bad "$page: not as in the headers"
done

# What every page of section 3 has to say.
for page in "$SOURCE"/man/*.3tovan; do
    for title in DESCRIPTION EXAMPLES ERRORS "SEE ALSO" CAVEATS; do
        [ -n "$(section "$page" "$title")" ] || bad "$page: no $title"
    done
    section "$page" ERRORS | grep -qE 'ends? the process' ||
        bad "$page: does not say what ends the process"
    section "$page" CAVEATS | grep -q 'static' ||
        bad "$page: does not say what is static"
    section "$page" CAVEATS | grep -q 'not thread-safe' ||
        bad "$page: does not speak of threads"
done

# References lead somewhere: into the library or into the system's manual.
for page in "$SOURCE"/man/*; do
    grep -oE '(^|[. ])Xr [^ ]+ [^ ]+' "$page" | sed 's/.*Xr //' |
        while read -r name suffix; do
            file=$BINARY/man/man${suffix%tovan}/$name.$suffix
            case $suffix in
            3tovan|7) ;;
            *) [ "$name" = "${name#tovan-}" ] && continue ;;
            esac
            [ -f "$file" ] || echo "$name $suffix"
        done | grep . && bad "$page: references lead nowhere"
done

# Clean. A clock that runs behind makes the dates lie in the future; that is
# no fault of a page.
have() {
    command -v "$1" >/dev/null || {
        echo "$1 is not installed: what it says of the pages is not checked"
        return 1
    }
}
if have mandoc; then
    mandoc -T lint -W warning "$SOURCE"/man/* >"$work/said" 2>&1
    grep -v ': future date' "$work/said" | grep . && bad "mandoc complains"
fi
if have groff; then
    for page in "$SOURCE"/man/*; do
        groff -ww -mdoc -Tutf8 -z "$page" 2>&1
    done | grep . && bad "groff complains"
fi
if have man && [ "$(man --version 2>/dev/null | sed 's/ .*//')" = man ]; then
    for page in "$SOURCE"/man/*; do
        MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null |
            sed "s,^,$page: ,"
    done | grep . && bad "man complains"
    MANWIDTH=80 man -M "$BINARY/man" 3tovan error 2>&1 | grep -q '^ERREXIT' ||
        bad "man 3tovan error shows another page"
fi
[ "$failures" -eq 0 ]
