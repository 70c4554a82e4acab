# QuickTime: long sample tables, and a movie whose media data is far larger than its header.
box() { be32 $(($2 + 8)) && printf '%s' "$1"; } # box TYPE PAYLOAD_SIZE: an atom's header
entries=1000000
head -c $((8 * entries)) /dev/urandom >"$WORK/entries"
for table in stsz stco; do
    head_size=$([ $table = stsz ] && echo 12 || echo 8)
    {
        box $table $((head_size + 4 * entries))
        head -c $((head_size - 4)) /dev/zero
        be32 $entries
        head -c $((4 * entries)) "$WORK/entries"
    } >"$WORK/$table"
done
{ box stts $((8 + 8 * entries)) && be32 0 && be32 $entries && cat "$WORK/entries"; } >"$WORK/stts"
tables=$(cat "$WORK"/st?? | wc -c)
{ box moov $((tables + 8)) && box stbl "$tables" && cat "$WORK"/st??; } >"$WORK/tables.mov"
timed 'sample tables, 3 x 1,000,000 entries' $((4 * entries)) lines "$KELDUMP $WORK/tables.mov" \
    "xxd $WORK/tables.mov"
for table in stsz stco stts; do
    cp "$WORK/$table" "$WORK/$table.mov"
    lines=$([ $table = stts ] && echo $((2 * entries)) || echo $entries)
    timed "$table, 1,000,000 entries" "$lines" lines "$KELDUMP $WORK/$table.mov"
done
{
    be32 1 && printf mdat && be32 50 && be32 16 # 50 times 4 GiB and the header
    truncate -s 214748364816 "$WORK/huge.mov"
} >"$WORK/mdat"
dd if="$WORK/mdat" of="$WORK/huge.mov" conv=notrunc status=none
cat "$root/samples/quicktime/prores-timecode.mov" >>"$WORK/huge.mov"
timed 'movie behind 200 GiB of media data' 1 files "$KELDUMP $WORK/huge.mov"
bytes_read 'movie behind 200 GiB of media data' "$KELDUMP $WORK/huge.mov"
rm -f "$WORK"/st?? "$WORK"/*.mov "$WORK/entries" "$WORK/mdat"
