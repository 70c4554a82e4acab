# Bash completion for keldump-json.
_keldump_json() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -*) mapfile -t COMPREPLY < <(compgen -W '--lines --utf8 --match -j -v -a -d -h -hn -mc -ml -mx -p -s -t -u --help --version --' -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
}
complete -o filenames -F _keldump_json keldump-json
