# Completes tarn's command line in bash. What there is to complete, the tool's own help says.

_tarn_files()
{
    compopt -o filenames 2>/dev/null || true # outside of a completion it fails
    mapfile -t COMPREPLY < <(compgen -d -- "$1"; compgen -f -X "!$2" -- "$1")
}

_tarn()
{
    local tool=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command= help choices takes=
    COMPREPLY=()
    if [ "$COMP_CWORD" -gt 1 ]; then
        command=${COMP_WORDS[1]}
    fi
    if [ -z "$command" ] || [ "$command" = help ]; then
        choices=$("$tool" help 2>/dev/null | sed -n '/^Subcommands:/,$s/^  \([a-z][a-z0-9-]*\) .*/\1/p')
        [ -n "$command" ] || choices+=" --help --version"
        mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
        return
    fi
    help=$("$tool" help "$command" 2>/dev/null) || return 0
    if [[ $before =~ ^--[a-z-]+$ ]]; then
        takes=$before=$(sed -nE "s/^  $before ([A-Z]{2,}).*/\1/p" <<<"$help")
    fi
    case $takes in
    --plot=*) _tarn_files "$word" '*.svg' ;;
    *=FILE) _tarn_files "$word" '*.mtx*' ;;
    *=FOLDER) _tarn_files "$word" '' ;;
    --routine=*) # a list with commas between
        local list=${word%"${word##*,}"}
        mapfile -t COMPREPLY < <(compgen -P "$list" -W "all $("$tool" bench --list | cut -d' ' -f1)" -- "${word##*,}")
        ;;
    *=?*) ;; # a value that nobody can guess
    *)
        if [[ $word == -* ]]; then
            choices=$(grep -o '^  [-a-z,]*--[a-z-]*' <<<"$help" | sed 's/.*--/--/')
            mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
        elif grep -q '^  [a-z]* FILE' <<<"$help"; then
            _tarn_files "$word" '*.mtx*'
        fi
        ;;
    esac
}

complete -o bashdefault -o default -F _tarn tarn
