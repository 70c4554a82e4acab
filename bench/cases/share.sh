# Files on a slow link, read cold, beside cat: a FUSE file system of our own that charges round trips and bandwidth.
# Needs root, /dev/fuse and libfuse (apt install libfuse3-dev fuse3 pkg-config).
share=$WORK/share

# cold 'COMMAND': microseconds of one run, nothing of the share in memory; the commands themselves are.
cold() {
    local start end
    fusermount3 -u "$share/mount"
    mount_share
    start=${EPOCHREALTIME/./}
    eval "$1" >/dev/null
    end=${EPOCHREALTIME/./}
    echo $((end - start))
}

mount_share() {
    RTT=$rtt BANDWIDTH=$bandwidth "$share/slow_share" "$share/files" "$share/mount" >/dev/null 2>&1 &
    local i
    for ((i = 0; i < 100; i++)); do
        if mountpoint -q "$share/mount"; then break; fi
        sleep 0.05
    done
}

# beside LABEL 'COMMAND' 'OTHER COMMAND'
beside() {
    local ours other
    ours=$(cold "$2")
    other=$(cold "$3")
    awk -v label="$1" -v ours="$ours" -v other="$other" -v name="${3%% *}" 'BEGIN {
        printf "%-46s %9.4f s   %s %.4f s, %.2f of it\n", label, ours / 1e6, name, other / 1e6, ours / other }'
}

# frames FILE COUNT LEAST MOST: an MXF of frames, each a system item, a filler, a picture and eight sounds.
frames() {
    awk -v count="$2" -v least="$3" -v most="$4" 'BEGIN {
        srand(1)
        for (n = 0; n < count; n++) {
            print "060e2b34020501010d01030104010100", 57
            print "060e2b34010101020301021001000000", 100
            print "060e2b34010201010d01030115010501", int(least + rand() * (most - least))
            for (i = 0; i < 8; i++) print "060e2b34010201010d0103011608010" i, 5760
        } }' |
        perl -e 'open(my $file, ">", $ARGV[0]) or die; local $/ = "\n";
            while (my $line = <STDIN>) {
                my ($key, $size) = split " ", $line;
                print $file pack("H*C", $key, 0x83), substr(pack("N", $size), 1);
                seek $file, $size, 1;
            }
            truncate $file, tell $file;' "$1"
}

share_cases() {
    beside "  MXF, 3,000 frames of one size" "$KELDUMP $share/mount/constant.mxf" "cat $share/mount/constant.mxf"
    beside "  MXF, 3,000 frames of 100 to 300 KB" "$KELDUMP $share/mount/random.mxf" "cat $share/mount/random.mxf"
    beside "  transport stream, 100 MB" "$KELDUMP $share/mount/clip.ts" "cat $share/mount/clip.ts"
    beside "  hex dump, 100 MB" "$KELDUMP -h=0,5f5e100 $share/mount/clip.ts" "cat $share/mount/clip.ts"
    beside "  DPX, 200 frames of a range" "$KELDUMP $share/mount/frame.%04d.dpx 0 199" \
        "head -qc 16384 $share/mount/frame.*"
    local sample
    for sample in mxf/dv.mxf gxf/dv.gxf tiff/exif.tif audio/stereo24.wav quicktime/mjpeg.qt; do
        beside "  sample $sample" "$KELDUMP $share/mount/${sample#*/}" "cat $share/mount/${sample#*/}"
    done
}

if mkdir -p "$share/files" "$share/mount" && [ -e /dev/fuse ] && pkg-config --exists fuse3 2>/dev/null &&
    cc -O2 -o "$share/slow_share" "$root/bench/slow_share.c" $(pkg-config --cflags --libs fuse3); then
    frames "$share/files/constant.mxf" 3000 200000 200000
    frames "$share/files/random.mxf" 3000 100000 300000
    for ((i = 0; i < 200; i++)); do
        cp "$root/samples/dpx/film10-big.dpx" "$share/files/frame.$(printf %04d "$i").dpx"
    done
    cp "$root"/samples/{mxf/dv.mxf,gxf/dv.gxf,tiff/exif.tif,audio/stereo24.wav,quicktime/mjpeg.qt} "$share/files/"
    for ((i = 0; i < 8865; i++)); do cat "$root/samples/mpeg/transport.ts"; done >"$share/files/clip.ts"
    for link in '0.001 1e9' '0.005 1e8'; do
        read -r rtt bandwidth <<<"$link"
        echo "Share with a round trip of $rtt s and $bandwidth bytes/s, cold"
        mount_share
        share_cases
        fusermount3 -u "$share/mount"
    done
else
    echo "share: needs root, /dev/fuse and: apt install libfuse3-dev fuse3 pkg-config"
fi
