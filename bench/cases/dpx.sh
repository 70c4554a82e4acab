# DPX: start-up, a huge frame, a sequence.
cp "$root/samples/dpx/film10-little.dpx" "$WORK/small.dpx"
timed 'start-up: 100 runs on a small DPX' 100 runs \
    "for i in {1..100}; do $KELDUMP $WORK/small.dpx; done" 'for i in {1..100}; do /bin/true; done'
cp "$WORK/small.dpx" "$WORK/huge.dpx"
truncate -s 10G "$WORK/huge.dpx"
timed 'DPX header, 10 GB frame' 1 files "$KELDUMP $WORK/huge.dpx" "head -c 16384 $WORK/huge.dpx"
bytes_read 'DPX header, 10 GB frame' "$KELDUMP $WORK/huge.dpx"
bytes_read 'DPX header with burned-in timecode (-t)' "$KELDUMP -t $WORK/huge.dpx"
mkdir "$WORK/sequence"
for i in $(seq -w 0 9999); do cp "$WORK/small.dpx" "$WORK/sequence/f$i.dpx"; done
timed 'DPX sequence, 10,000 frames' 10000 frames "$KELDUMP $WORK/sequence/f%04d.dpx 0 9999" \
    "cat $WORK/sequence/*"
rm -rf "$WORK/sequence" "$WORK"/*.dpx
