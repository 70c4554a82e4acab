# Markers and boxes of huge files: what is not printed is not read.
cp "$root/samples/jpeg/baseline.jpg" "$WORK/huge.jpg"
truncate -s 10G "$WORK/huge.jpg"
bytes_read 'JPEG, 10 GB' "$KELDUMP $WORK/huge.jpg"
cp "$root/samples/jpeg2000/plain.jp2" "$WORK/huge.jp2"
truncate -s 10G "$WORK/huge.jp2"
bytes_read 'JP2, 10 GB' "$KELDUMP $WORK/huge.jp2"
rm "$WORK"/huge.*
