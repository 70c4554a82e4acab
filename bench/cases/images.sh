# PNG whose picture data is huge.
png_chunk() { (be32 "$2" && printf '%s' "$3") | dd of="$WORK/huge.png" bs=1 seek="$1" conv=notrunc status=none; }
# Two chunks of picture data in 4 GB, and the last chunk behind them.
cp "$root/samples/images/ffmpeg.png" "$WORK/huge.png"
truncate -s 54 "$WORK/huge.png"
png_chunk 54 2147483647 IDAT
png_chunk 2147483713 2147483583 IDAT
png_chunk 4294967308 0 IEND
truncate -s 4294967320 "$WORK/huge.png"
bytes_read 'PNG, 4 GB in two chunks' "$KELDUMP $WORK/huge.png"
timed 'PNG, 4 GB in two chunks' 1 files "$KELDUMP $WORK/huge.png" "head -c 16384 $WORK/huge.png"
# 64 MiB in chunks of 8 KiB, as encoders write them.
head -c 8192 /dev/zero >"$WORK/data"
{ be32 8192 && printf IDAT && cat "$WORK/data" && be32 0; } >"$WORK/chunk"
double "$WORK/chunk" 13
{ head -c 54 "$WORK/huge.png" && cat "$WORK/chunk"; } >"$WORK/many.png"
bytes_read 'PNG, 64 MiB in chunks of 8 KiB' "$KELDUMP $WORK/many.png"
timed 'PNG, 64 MiB in chunks of 8 KiB' 8192 chunks "$KELDUMP $WORK/many.png" "cat $WORK/many.png"
rm -f "$WORK"/huge.* "$WORK"/many.png "$WORK/data" "$WORK/chunk"
