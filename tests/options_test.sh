# options_test.sh: what the programs accept, what their help says, what the
# manual pages list, and what bash and zsh complete are the same options.
#   tools/completion/table   the options, from the help texts
: "${SOURCE:?}" "${BINARY:?}"
tools="kivs mktraits vop"
failures=0
bad() {
    echo "$1"
    failures=$((failures + 1))
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tab=$(printf '\t')
completion=$SOURCE/tools/completion
unset KIVS_FILE TRAITS_FILE
export MORVA=/nowhere HOME_MORVA=/nowhere TMPDIR=$work LC_ALL=C
cd "$work" || exit 1

# same WHAT: whether the files `one` and `other` hold the same lines.
same() {
    sort one >one.sorted
    sort other | diff one.sorted - || bad "$1 (< help)"
}
# completed: subcommand and name of each option of the table, those of actions
# with their subcommand.
completed() {
    awk -F"$tab" '$1 == "option" { sub(/ .*/, "", $2); print $2 "\t" $3 }' table |
        sort -u
}

# The completions in the tree are those that would be made now.
"$completion/generate" "$BINARY/bin" "$work/made" || bad "cannot generate"
diff -r "$completion/bash" "$work/made/bash" &&
    diff -r "$completion/zsh" "$work/made/zsh" ||
    bad "completions are stale: run tools/completion/generate $BINARY/bin"

# Letters that are accepted, with a value in the next argument or without.
letters=$(printf '%s ' a b c d e f g h i j k l m n o p q r s t u v w x y z \
    A B C D E F G H I J K L M N O P Q R S T U V W X Y Z 0 1 2 3 4 5 6 7 8 9)
refusal() {
    "$@" 2>&1 >/dev/null </dev/null | head -n 1
}
accepted() { # TOOL [SUBCOMMAND]
    for letter in $letters; do
        case $(refusal "$@" "-$letter" -% -%) in
        "-$letter: invalid flag") continue ;;
        esac
        case $(refusal "$@" "-$letter") in
        "-$letter: value missing") printf '%s\n' "-$letter value" ;;
        *) printf '%s\n' "-$letter" ;;
        esac
    done
}

for tool in $tools; do
    program=$BINARY/bin/$tool
    "$completion/table" "$program" >table
    grep '^option' table | cut -f2- >options
    common=$(sed -n "s/^$tab\([^$tab]*\)$tab.*/\1/p" options)

    # The lists of the manual page, without what every subcommand takes.
    awk -F"$tab" -v common=" $(echo $common) " '
        $1 != "" && $1 !~ / / && index(common, " " $2 " ") { next }
        { value = tolower($3)
          if (value != "" && !sub(/^\+/, "", value)) value = " " value
          print $1 "\t" $2 value }' options >one
    awk -f "$SOURCE/tests/man/options.awk" "$SOURCE/man/$tool.1" >other
    same "$tool.1"

    # What can be traced.
    for package in $(sed -n "s/^$tab-V$tab.*error: \(.*\) or all.*/\1/p" options |
        tr -d ,); do
        sed -n '/^\.It Fl V/,/^\.It Fl x/p' "$SOURCE/man/$tool.1" |
            grep -q "Cm $package\( \|\$\)" ||
            bad "$tool.1: $package cannot be traced"
    done

    # What is accepted, where options are told from arguments at all.
    cut -f1 options | sort -u >with_options
    while IFS= read -r subcommand; do
        case $(refusal "$program" $subcommand -%) in
        "-%: invalid flag") ;;
        *) continue ;;
        esac
        case $subcommand in
        *' '*) printf '%s\n' '-V value' -x ;; # as its subcommand
        esac >others
        awk -F"$tab" -v subcommand="$subcommand" '
            $1 == subcommand && length($2) == 2 {
                print $2 ($3 == "" || $3 ~ /^\+/ ? "" : " value") }' options |
            cat - others >one
        accepted "$program" $subcommand >other
        same "$tool $subcommand"
    done <with_options

    # Misuse and help of each, as of every program.
    for subcommand in '' $(sed -n "s/^subcommand$tab\([^$tab]*\).*/\1/p" table); do
        [ "$subcommand" = help ] && continue
        "$program" $subcommand --help >out 2>err </dev/null &&
            [ -s out ] && [ ! -s err ] || bad "$tool $subcommand --help"
        grep -q "$(printf '\033')" out && bad "$tool $subcommand: escapes"
    done
done

# bash completes the same options and subcommands.
if command -v bash >/dev/null; then
    for tool in $tools; do
        program=$BINARY/bin/$tool
        "$completion/table" "$program" >table
        completed >one
        sed -n "s/^subcommand$tab\([^$tab]*\).*/+$tab\1/p" table >>one
        cat >complete.bash <<'BASH'
. "$1"
ask() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    _tovan_$tool
}
tool=$2
ask "$tool" -
for option in "${COMPREPLY[@]}"; do printf '\t%s\n' "$option"; done
[ $# -gt 2 ] || exit 0
ask "$tool" ''
for name in "${COMPREPLY[@]}"; do printf '+\t%s\n' "$name"; done
shift 2
for subcommand; do
    ask "$tool" -V all "$subcommand" -
    for option in "${COMPREPLY[@]}"; do
        printf '%s\t%s\n' "$subcommand" "$option"
    done
done
BASH
        bash complete.bash "$completion/bash/$tool" "$tool" \
            $(sed -n "s/^subcommand$tab\([^$tab]*\).*/\1/p" table) >other
        same "bash, $tool"
    done
    touch some.heap
    found=$(bash -c '. "$1"; COMP_WORDS=(vop expand -f some); COMP_CWORD=3
        _tovan_vop; echo "${COMPREPLY[*]}"' bash "$completion/bash/vop")
    [ "$found" = some.heap ] || bad "bash does not complete files"
else
    echo "bash is not installed: its completions are not tried"
fi

# zsh: what its own functions are handed.
if command -v zsh >/dev/null; then
    cat >complete.zsh <<'ZSH'
fpath=($1) tool=$2
autoload -Uz _$tool
_describe() { :; }
# Tells the options of the innermost call, and leads to the subcommand.
_arguments() {
    local each
    told=()
    for each; do
        [[ $each == -*\[* ]] && told+=${${each%%\[*}%[+-]}
    done
    state=argument
}
shift 2
for subcommand in '' $@; do
    words=($subcommand)
    _$tool
    for each in $told; print -r -- $subcommand$'\t'$each
done
ZSH
    for tool in $tools; do
        program=$BINARY/bin/$tool
        "$completion/table" "$program" >table
        completed >one
        zsh -f complete.zsh "$completion/zsh" "$tool" \
            $(sed -n "s/^subcommand$tab\([^$tab]*\).*/\1/p" table |
                grep -vx help) >other
        same "zsh, $tool"
    done
else
    echo "zsh is not installed: its completions are not tried"
fi
[ "$failures" -eq 0 ]
