# Bash completion for keldump.
_keldump() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -m*) mapfile -t COMPREPLY < <(compgen -W '-mc -mh -ml -ms -ms= -mt -mv -mx' -- "$word") ;;
        -h*) mapfile -t COMPREPLY < <(compgen -W '-h -hn -h= -hn=' -- "$word") ;;
        -*) mapfile -t COMPREPLY < <(compgen -W '-a -d -h -hn -mc -ml -ms -mx -p -s -t -u -v' -- "$word") ;;
        *)
            mapfile -t COMPREPLY < <(
                [ "$COMP_CWORD" -ne 1 ] || compgen -W verify -- "$word"
                compgen -f -- "$word"
            )
            ;;
    esac
    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
}
complete -o filenames -F _keldump keldump
