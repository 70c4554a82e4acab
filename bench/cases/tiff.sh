# Directories, boxes and markers of huge files: what is not printed is not read.
{ printf 'II*\0\x00\x28\x6b\xee'; } >"$WORK/huge.tif"
truncate -s 4000000000 "$WORK/huge.tif"
printf '\x01\0\x0f\x01\x02\0\x04\0\0\0Kel\0\0\0\0\0' >>"$WORK/huge.tif"
truncate -s 50G "$WORK/huge.tif"
timed 'TIFF, 50 GB, directory at 4 GB' 1 files "$KELDUMP $WORK/huge.tif" "head -c 16384 $WORK/huge.tif"
bytes_read 'TIFF, 50 GB, directory at 4 GB' "$KELDUMP $WORK/huge.tif"
rm "$WORK/huge.tif"
cp "$root/samples/jpeg/baseline.jpg" "$WORK/huge.jpg"
truncate -s 10G "$WORK/huge.jpg"
bytes_read 'JPEG, 10 GB' "$KELDUMP $WORK/huge.jpg"
cp "$root/samples/jpeg2000/plain.jp2" "$WORK/huge.jp2"
truncate -s 10G "$WORK/huge.jp2"
bytes_read 'JP2, 10 GB' "$KELDUMP $WORK/huge.jp2"
cp "$root/samples/exr/"*.exr "$WORK/" 2>/dev/null
for exr in "$WORK"/*.exr; do truncate -s 10G "$exr"; bytes_read 'OpenEXR, 10 GB' "$KELDUMP $exr"; break; done
rm -f "$WORK"/huge.* "$WORK"/*.exr
