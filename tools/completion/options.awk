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
/^-/ {
    text = $0
    if (!sub(/^[^\t]*\t+/, "", text)) text = ""
    sub(/\t.*/, "")
    first = count + 1
    n = split($0, each, ", ")
    for (i = 1; i <= n; i++) add(each[i])
    for (i = first; i <= count; i++) texts[i] = text
    next
}
/^\t/ && first > 0 {
    sub(/^\t+/, "")
    for (i = first; i <= count; i++)
        texts[i] = texts[i] (texts[i] == "" ? "" : " ") $0
    next
}
# An action of a subcommand: "add [-s C] NAME", "get TAB what it does".
subcommand != "" && /^[a-z]+(\t| (\[-[^]]*\] )*[A-Z])/ {
    split($0, words, /[ \t]/)
    actions = actions (actions == "" ? "" : " ") words[1]
    split($0, each, "\t")
    while (match(each[1], /\[-[^]]*\]/)) {
        first = count + 1
        add(substr(each[1], RSTART + 1, RLENGTH - 2))
        texts[count] = "with " words[1]
        owners[count] = subcommand " " words[1]
        each[1] = substr(each[1], RSTART + RLENGTH)
    }
}
{ first = 0 }
END {
    if (actions != "") print "actions", subcommand, actions
    for (i = 1; i <= count; i++)
        print "option", i in owners ? owners[i] : subcommand, names[i], \
            values[i], texts[i]
}
