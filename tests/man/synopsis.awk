# synopsis.awk: the SYNOPSIS of a manual page as C: its includes, then one
# declaration a line.

# The words behind the macro, without quotes around them, joined by commas.
function arguments(line,    list) {
    list = ""
    while (match(line, /^ *("[^"]*"|[^ "]+)/)) {
        word = substr(line, RSTART, RLENGTH)
        line = substr(line, RSTART + RLENGTH)
        gsub(/^ *"?|"$/, "", word)
        list = list (list == "" ? "" : ", ") word
    }
    return list
}
function rest() {
    sub(/^\.[A-Z][a-z] /, "")
    return $0
}

/^\.Sh / { on = $2 == "SYNOPSIS" }
!on { next }
/^\.In / { print "#include <" $2 ">" }
/^\.Vt / { print arguments(rest()) }
/^\.Ft / { type = rest() }
/^\.Fn / {
    name = $2
    sub(/^\.Fn [^ ]+ */, "")
    print type " " name "(" arguments($0) ");"
}
/^\.Fo / { name = $2; list = "" }
/^\.Fa / { list = list (list == "" ? "" : ", ") arguments(rest()) }
/^\.Fc/ { print type " " name "(" list ");" }
