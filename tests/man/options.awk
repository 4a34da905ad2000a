# options.awk: the options in the lists of a manual page of section 1, a line
# for each: the subcommand, a tab, the option and its value as they are typed.
function typed(line,    n, i, word, glue, text) {
    n = split(line, word, " ")
    glue = 1
    text = ""
    for (i = 2; i <= n; i++) {
        if (word[i] == "Ns") { glue = 1; continue }
        if (word[i] == "Ar" || word[i] == "No" || word[i] == "Li") continue
        if (word[i] == ",") { print subcommand "\t" text; text = ""; glue = 1; continue }
        text = text (glue ? "" : " ") (word[i] == "Fl" ? "-" : "")
        if (word[i] == "Fl") i++
        text = text word[i]
        glue = 0
    }
    print subcommand "\t" text
}

/^\.Sh / { on = $2 == "DESCRIPTION"; subcommand = "" }
/^\.Ss / { subcommand = $2 }
on && /^\.It Fl / { typed($0) }
# Options of an action: ".It Cm add Oo Fl s Ar c Oc Ar name".
on && /^\.It Cm / {
    whole = subcommand
    subcommand = subcommand " " $3
    n = split($0, optional, / Oo /)
    for (k = 2; k <= n; k++) {
        sub(/ Oc.*/, "", optional[k])
        typed(".It " optional[k])
    }
    subcommand = whole
}
