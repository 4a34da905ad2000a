# console.sh: pages that show programs, files and commands, and what the
# commands write. Sourced by tests.

# blocks PAGE KIND: the contents of the page's blocks of that kind.
blocks() {
    awk -v start="\`\`\`$2" '
        $0 == "```" { on = 0 }
        on
        $0 == start { on = 1 }' "$1"
}

# replay SHOWN: runs the commands of a console in this folder, each shown
# before what it writes; status and variables go on.
replay() {
    sed -n 's/^\$ //p' "$1" >commands
    [ -s commands ] || echo "no commands"
    status=0
    while IFS= read -r command; do
        printf '$ %s\n' "$command"
        (exit "$status")
        eval "$command" 2>&1 </dev/null
        status=$?
    done <commands
}
