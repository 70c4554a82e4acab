# Directories of a huge file: what is not printed is not read.
{ printf 'II*\0\x00\x28\x6b\xee'; } >"$WORK/huge.tif"
truncate -s 4000000000 "$WORK/huge.tif"
printf '\x01\0\x0f\x01\x02\0\x04\0\0\0Kel\0\0\0\0\0' >>"$WORK/huge.tif"
truncate -s 50G "$WORK/huge.tif"
timed 'TIFF, 50 GB, directory at 4 GB' 1 files "$KELDUMP $WORK/huge.tif" "head -c 16384 $WORK/huge.tif"
bytes_read 'TIFF, 50 GB, directory at 4 GB' "$KELDUMP $WORK/huge.tif"
rm "$WORK/huge.tif"
