# GXF: 16,384 media packets of 64 KiB, of which a dump looks at the first few bytes.
{
    printf '\0\0\0\0\1\xbf\0\1\0\0\0\0\0\0\xe1\xe2\x0c\0'
    head -c 65518 /dev/zero
} >"$WORK/media.gxf"
double "$WORK/media.gxf" 14
timed 'GXF media packets, 1 GiB' 1024 MiB "$KELDUMP $WORK/media.gxf" "cat $WORK/media.gxf"
bytes_read 'GXF media packets, 1 GiB' "$KELDUMP $WORK/media.gxf"
rm -f "$WORK/media.gxf"
