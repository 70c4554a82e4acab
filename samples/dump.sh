#!/usr/bin/env bash
# Makes the dump of every sample that has one anew, with the switches in its name: clip.wav.txt,
# clip.wav.-a+-t.txt. A new sample gets a dump with: dump.sh FAMILY/SAMPLE [SWITCH...]. Read what git diff shows.
# The dumps are those of the newest binary in build and build-check, or of $KELDUMP.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
newest() {
    local found='' binary
    for binary in "$root"/build{,-check}/keldump; do
        [ -x "$binary" ] && { [ -z "$found" ] || [ "$binary" -nt "$found" ]; } && found=$binary
    done
    echo "$found"
}
refuse() {
    echo "dump.sh: $1" >&2
    exit 2
}
binary=$(realpath -q "${KELDUMP:-$(newest)}") || refuse 'build keldump first'
"$binary" verify | grep -q '^keldump: ' || refuse "$binary does not run"
stale=$(find "$root/src" -type f ! -path '*/companions/*' -newer "$binary" -print -quit)
[ -n "${KELDUMP-}" ] || [ -z "$stale" ] || refuse "$binary is older than $stale"
cd "$root/samples"

# dump SAMPLE TARGET [SWITCH...]
dump() {
    local sample=$1 target=$2
    shift 2
    (cd "$(dirname "$sample")" && "$binary" "$@" "$(basename "$sample")") >"$target"
}

if [ $# -gt 0 ]; then
    sample=$1
    shift
    [ -f "$sample" ] || refuse "samples/$sample is no file"
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
