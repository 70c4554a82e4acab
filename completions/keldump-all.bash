# Bash completion for keldump-all.
_keldump_all() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -m*) mapfile -t COMPREPLY < <(compgen -W '-mc -mh -ml -mt -mv -mx' -- "$word") ;;
        -*) mapfile -t COMPREPLY < <(compgen -W '-a -d -h -hn -j -mc -ml -mx -p -s -t -u -v --raw --help --version --' -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
}
complete -o filenames -F _keldump_all keldump-all
