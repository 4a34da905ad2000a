# zsh.awk: a completion for zsh out of the option table of the program `tool`.
BEGIN { FS = OFS = "\t" }

# What completes a value or an argument.
function action(value) {
    if (value ~ /^(DIR|FOLDER)$/) return "_files -/"
    if (value == "COMMAND") return "_command_names"
    if (value == "SUBCOMMAND") return "(" names ")"
    if (value ~ /^(C|EXPRESSION|EXTENSION|FLAGS|KEY|MODE|MODEL|NAME|NAME=text|PATTERN|TEMPLATE|TEXT|VALUE)$/)
        return ""
    return "_files"
}

# A word in double quotes; colons, and brackets in an option, mean something
# to zsh's functions.
function quoted(text) {
    gsub(/[\\"$`]/, "\\\\&", text)
    return "\"" text "\""
}
function plain(text) {
    gsub(/[\[\]:\\]/, "\\\\&", text)
    return text
}

function specification(name, value, text,    joined) {
    joined = sub(/^\+/, "", value)
    if (value == "") return quoted(name "[" plain(text) "]")
    return quoted(name (joined ? "-" : "+") "[" plain(text) "]:" \
                  tolower(value) ":" action(value))
}

$1 == "subcommand" {
    order[++count] = $2
    texts[$2] = $3
    names = names (count > 1 ? " " : "") $2
}
$1 == "actions" { actions[$2] = $3 }
$1 == "argument" { arguments[$2] = $3 }
$1 == "option" {
    sub(/ .*/, "", $2)
    if (($2, $3) in seen) next
    seen[$2, $3] = 1
    options[$2] = options[$2] " \\\n        " specification($3, $4, $5)
}

function show(subcommand,    word, first) {
    word = arguments[subcommand]
    first = subcommand in actions ? "\"1:action:(" actions[subcommand] ")\" " : ""
    return "_arguments -s" options[subcommand] " \\\n        " first "\"*:" \
        tolower(word) ":" action(word) "\""
}

END {
    print "#compdef " tool
    print "# Completion of " tool " for zsh, made by tools/completion/generate."
    if (count == 0) {
        print show("")
        exit
    }
    print "local -a subcommands=("
    for (i = 1; i <= count; i++)
        print "    " quoted(order[i] ":" plain(texts[order[i]]))
    print ")"
    print "local context state state_descr line"
    print "typeset -A opt_args"
    print "_arguments -s" options[""] " \\"
    print "        \"1:subcommand:->subcommand\" \"*::argument:->argument\""
    print "case $state in"
    print "subcommand) _describe subcommand subcommands ;;"
    print "argument)"
    print "    case $words[1] in"
    for (i = 1; i <= count; i++)
        print "    " order[i] ")\n        " show(order[i]) "\n        ;;"
    print "    esac"
    print "    ;;"
    print "esac"
}
