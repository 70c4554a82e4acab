# R3D version 2: a header and 4,096 frames of 256 KiB.
frame() { printf '\0\4\0\0%s' "$1" && head -c 262136 /dev/zero; }
frame RDI1 >"$WORK/frames.r3d"
double "$WORK/frames.r3d" 12
{
    printf '\0\0\20\0RED2' && head -c 4088 /dev/zero
    cat "$WORK/frames.r3d"
} >"$WORK/clip.r3d"
rm "$WORK/frames.r3d"
timed 'R3D frames, 1 GiB' 1024 MiB "$KELDUMP $WORK/clip.r3d" "cat $WORK/clip.r3d"
timed 'R3D frames, 1 GiB, records searched (-v)' 1024 MiB "$KELDUMP -v $WORK/clip.r3d"
bytes_read 'R3D frames, 1 GiB' "$KELDUMP $WORK/clip.r3d"
rm -f "$WORK/clip.r3d"
