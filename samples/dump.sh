#!/usr/bin/env bash
# Makes the dump of every sample that has one anew, with the switches in its name: clip.wav.txt,
# clip.wav.-a+-t.txt. A new sample gets a dump with: dump.sh FAMILY/SAMPLE [SWITCH...]. Read what git diff shows.
set -euo pipefail
binary=${KELDUMP:-$(cd "$(dirname "$0")/.." && pwd)/build/keldump}
cd "$(dirname "$0")"

# dump SAMPLE TARGET [SWITCH...]
dump() {
    local sample=$1 target=$2
    shift 2
    (cd "$(dirname "$sample")" && "$binary" "$@" "$(basename "$sample")") >"$target"
}

if [ $# -gt 0 ]; then
    sample=$1
    shift
    switches=$(IFS=+ && echo "$*")
    dump "$sample" "$sample${switches:+.$switches}.txt" "$@"
    exit
fi
for target in */*.txt; do
    sample=${target%.txt}
    if [ -f "$sample" ]; then
        dump "$sample" "$target"
    elif [ -f "${sample%%.-*}" ]; then
        IFS=+ read -ra switches <<<"${sample#*.-}"
        switches[0]=-${switches[0]}
        dump "${sample%%.-*}" "$target" "${switches[@]}"
    fi
done
