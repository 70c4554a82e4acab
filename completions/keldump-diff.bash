# Bash completion for keldump-diff.
_keldump_diff() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -*) mapfile -t COMPREPLY < <(compgen -W '--all --json -v --help --version --' -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
}
complete -o filenames -F _keldump_diff keldump-diff
