# options.awk: what a help text says of options and arguments, as rows of the
# option table (see the script `table`). Variables: tool, subcommand.
BEGIN { OFS = "\t" }

# "-f HEAP", "--dump", "-cNAME" (the value is joined to the letter).
function add(option) {
    value = ""
    if (option ~ /^-[a-z][A-Z]+$/) {
        value = "+" substr(option, 3)
        option = substr(option, 1, 2)
    } else if (option ~ / /) {
        value = substr(option, index(option, " ") + 1)
        sub(/ .*/, "", option)
    }
    names[++count] = option
    values[count] = value
}

# The last word of the synopsis, without brackets and dots.
NR == 1 {
    last = $NF == "...]" ? $(NF - 1) : $NF
    gsub(/[^A-Za-z=]/, "", last)
    print "argument", subcommand, last
    next
}
/^-[^\t]*\t/ {
    text = $0
    sub(/^[^\t]*\t+/, "", text)
    first = count + 1
    n = split(substr($0, 1, index($0, "\t") - 1), each, ", ")
    for (i = 1; i <= n; i++) add(each[i])
    for (i = first; i <= count; i++) texts[i] = text
    next
}
/^\t\t/ && first > 0 {
    sub(/^\t+/, "")
    for (i = first; i <= count; i++) texts[i] = texts[i] " " $0
    next
}
{ first = 0 }
END {
    for (i = 1; i <= count; i++)
        print "option", subcommand, names[i], values[i], texts[i]
}
