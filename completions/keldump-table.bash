# Bash completion for keldump-table.
_keldump_table() {
    local word=${COMP_WORDS[COMP_CWORD]}
    case $word in
        -*) mapfile -t COMPREPLY < <(compgen -W '--csv --json --lines --odd --each --columns --field --files-from -0 -v -j --help --version --' -- "$word") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
}
complete -o filenames -F _keldump_table keldump-table
