# A 1 GB transport stream (one packet repeated) and a 1 GB program stream with every packet shown (-v).
repeat() { # FILE BYTES: the file again and again up to a size
    local size
    cp "$1" "$WORK/part"
    while size=$(stat -c %s "$WORK/part") && ((size < 64000000)); do double "$WORK/part" 1; done
    while ((size < $2)); do
        cat "$WORK/part"
        set -- "$1" $(($2 - size))
    done
    rm "$WORK/part"
}
{ printf '\x47\x01\x00\x10' && head -c 184 /dev/zero | tr '\0' x; } >"$WORK/packet"
repeat "$WORK/packet" 1060000000 >"$WORK/stream.ts"
timed 'transport stream' "$(($(stat -c %s "$WORK/stream.ts") / 1000000))" MB "$KELDUMP $WORK/stream.ts" "cat $WORK/stream.ts"
rm "$WORK/stream.ts"
repeat "$root/samples/mpeg/program.vob" 1060000000 >"$WORK/stream.vob"
timed 'program stream (-v)' "$(($(stat -c %s "$WORK/stream.vob") / 1000000))" MB "$KELDUMP -v $WORK/stream.vob" "cat $WORK/stream.vob"
timed 'program stream, 1 GB, first MiB' 1 files "$KELDUMP $WORK/stream.vob" "head -c 1048576 $WORK/stream.vob"
bytes_read 'program stream, 1 GB, first MiB' "$KELDUMP $WORK/stream.vob"
rm "$WORK/stream.vob"
