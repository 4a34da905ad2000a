# bash.awk: a completion for bash out of the option table of the program `tool`.
BEGIN { FS = OFS = "\t" }

# What completes a value or an argument.
function kind(value) {
    sub(/^\+/, "", value)
    if (value ~ /^(DIR|FOLDER)$/) return "folder"
    if (value == "COMMAND") return "command"
    if (value == "SUBCOMMAND") return "subcommand"
    if (value ~ /^(C|EXPRESSION|EXTENSION|FLAGS|KEY|MODE|MODEL|NAME|NAME=text|PATTERN|TEMPLATE|TEXT|VALUE)$/)
        return "nothing"
    return "file"
}

$1 == "subcommand" { order[++count] = $2; names = names " " $2 }
$1 == "actions" { actions[$2] = $3 }
$1 == "argument" { arguments[$2] = kind($3) }
$1 == "option" {
    sub(/ .*/, "", $2)
    if (index(options[$2] " ", " " $3 " ")) next
    options[$2] = options[$2] " " $3
    if ($4 != "" && $4 !~ /^\+/)
        values[$2] = values[$2] "        " $3 ") kind=" kind($4) " ;;\n"
}

function show(subcommand) {
    print "    " (subcommand == "" ? "''" : subcommand) ")"
    print "        options='" substr(options[subcommand], 2) "'"
    print "        kind=" (subcommand == "" && count > 0 ? "subcommand" \
                                                      : arguments[subcommand])
    if (subcommand in actions) {
        print "        actions='" actions[subcommand] "'"
        print "        [[ $before == " subcommand " ]] && kind=action"
    }
    if (values[subcommand] != "")
        printf "        case $before in\n%s        esac\n", values[subcommand]
    print "        ;;"
}

END {
    print "# Completion of " tool " for bash, made by tools/completion/generate."
    print "_tovan_" tool "() {"
    print "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}"
    print "    local subcommand= options= kind= i"
    if (count > 0) {
        print "    local subcommands='" substr(names, 2) "' actions="
        print "    for ((i = 1; i < COMP_CWORD; i++)); do"
        print "        case ${COMP_WORDS[i]} in"
        print "        -V) ((i++)) ;;"
        print "        -*) ;;"
        print "        *) subcommand=${COMP_WORDS[i]}; break ;;"
        print "        esac"
        print "    done"
    }
    print "    case $subcommand in"
    show("")
    for (i = 1; i <= count; i++) show(order[i])
    print "    esac"
    print "    [[ $word == -* ]] && kind=option"
    print "    compopt -o filenames 2>/dev/null"
    print "    case $kind in"
    print "    option) mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\") ;;"
    print "    file) mapfile -t COMPREPLY < <(compgen -f -- \"$word\") ;;"
    print "    folder) mapfile -t COMPREPLY < <(compgen -d -- \"$word\") ;;"
    print "    command) mapfile -t COMPREPLY < <(compgen -c -- \"$word\") ;;"
    if (count > 0)
        print "    subcommand) mapfile -t COMPREPLY < <(compgen -W \"$subcommands\" -- \"$word\") ;;"
    if (count > 0)
        print "    action) mapfile -t COMPREPLY < <(compgen -W \"$actions\" -- \"$word\") ;;"
    print "    *) COMPREPLY=() ;;"
    print "    esac"
    print "}"
    print "complete -F _tovan_" tool " " tool
}
