# Bash completion for keldump.
_keldump() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -m*) COMPREPLY=($(compgen -W '-mc -mh -ml -ms -ms= -mt -mv -mx' -- "$word")) ;;
        -h*) COMPREPLY=($(compgen -W '-h -hn -h= -hn=' -- "$word")) ;;
        -*) COMPREPLY=($(compgen -W '-a -d -h -hn -mc -ml -ms -mx -p -s -t -u -v' -- "$word")) ;;
        *)
            COMPREPLY=()
            [ "$COMP_CWORD" -eq 1 ] && COMPREPLY=($(compgen -W verify -- "$word"))
            COMPREPLY+=($(compgen -f -- "$word"))
            ;;
    esac
    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
}
complete -o filenames -F _keldump keldump
