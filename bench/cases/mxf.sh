# A 60 GB MXF (sparse): a header partition and 5,000 picture elements of 12 MB.
header=$((16#$("$KELDUMP" "$root/samples/mxf/op1a-mpeg2.mxf" | awk '/MXF Generic Container$/ { print $1; exit }')))
head -c $header "$root/samples/mxf/op1a-mpeg2.mxf" >"$WORK/master.mxf"
truncate -s $((header + 60000000000)) "$WORK/master.mxf"
for ((i = 0; i < 5000; i++)); do
    printf '\x06\x0e\x2b\x34\x01\x02\x01\x01\x0d\x01\x03\x01\x15\x01\x05\x01\x83\xb7\x1a\xec' |
        dd of="$WORK/master.mxf" bs=1 seek=$((header + i * 12000000)) conv=notrunc status=none
done
timed 'MXF, 60 GB in 5,000 items' 60000 MB "$KELDUMP $WORK/master.mxf" "cat $WORK/master.mxf"
bytes_read 'MXF, 60 GB in 5,000 items' "$KELDUMP $WORK/master.mxf"
timed 'MXF, 26 KB clip' 1 files "$KELDUMP $root/samples/mxf/op1a-mpeg2.mxf" "cat $root/samples/mxf/op1a-mpeg2.mxf"
rm -f "$WORK/master.mxf"
