# Bash completion for keldump-seq.
_keldump_seq() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -*) mapfile -t COMPREPLY < <(compgen -W '--frames --ignore --quiet --json -j --help --version --' -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
}
complete -o filenames -F _keldump_seq keldump-seq
