# reach.awk: from `objdump -dr` of the archive, the functions from which one
# of the functions in `ends` (separated by blanks) can be reached by calls,
# as far as they are not made through pointers. Local functions are known by
# their object and name.
function known(name) {
    sub(/[-+]0x[0-9a-f]+$/, "", name)
    sub(/\.(cold|part|constprop|isra).*$/, "", name)
    return name
}
function edge(to) {
    to = known(to)
    if (to != current) calls[++n] = object SUBSEP current SUBSEP to
}

/file format/ { object = $1 }
/^[0-9a-f]+ <.*>:$/ {
    current = known(substr($2, 2, length($2) - 3))
    defined[object, current] = 1
    next
}
/ R_X86_64_(PLT32|PC32|GOTPCREL|GOTPCRELX|REX_GOTPCRELX|64|32S?)/ { edge($NF) }
/[^a-z](call|jmp|j[a-z]+) .*<.*>$/ {
    sub(/^.*</, "")
    sub(/>$/, "")
    edge($0)
}

END {
    for (i = 1; i <= n; i++) {
        split(calls[i], part, SUBSEP)
        to = (part[1], part[3]) in defined ? part[1] SUBSEP part[3] : part[3]
        callers[to] = callers[to] " " i
    }
    last = split(ends, todo, " ")
    for (next_one = 1; next_one <= last; next_one++) {
        m = split(callers[todo[next_one]], list, " ")
        for (k = 1; k <= m; k++) {
            split(calls[list[k]], part, SUBSEP)
            if ((part[1], part[2]) in seen) continue
            seen[part[1], part[2]] = 1
            print part[2]
            todo[++last] = part[1] SUBSEP part[2]
            todo[++last] = part[2]
        }
    }
}
