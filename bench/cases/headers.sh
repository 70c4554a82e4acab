# What a header dump reads of a 10 GB file: a sample, or the first bytes of a format that has none, before zeros.
# (PNG, QuickTime and program streams, whose walks do not end at zeros, have cases of their own.)
mkdir "$WORK/headers"
for sample in dpx/film10-big.dpx dpx-cineon/film.cin audio/broadcast.wav audio/large.wav audio/picture.avi audio/mono16.aiff \
    mxf/op1a-mpeg2.mxf gxf/dv.gxf mpeg/transport.ts exr/uncompressed.exr tiff/exif.tif jpeg2000/plain.jp2 \
    jpeg2000/tiles.j2k jpeg/exif.jpg images/rgb24.bmp images/raw.tga images/raw.sgi images/raw.ppm; do
    cp "$root/samples/$sample" "$WORK/headers/"
done
printf 'S\x80\xf6\x34\x40\x40\0\0' >"$WORK/headers/softimage.pic"
{ printf 'ARRI\x12\x34\x56\x78\0\x10\0\0\x03\0\0\0' && head -c 4096 /dev/zero; } >"$WORK/headers/frame.ari"
printf 'STREAMERsize 1000\nnbits 10\n\t' >"$WORK/headers/capture.raw"
printf 'MZ%058d\x40\0\0\0PE\0\0\x64\x86' 0 >"$WORK/headers/program.exe"
printf '\0\x03' >"$WORK/headers/font.fnt"
printf '\0\0\0\x08RED1' >"$WORK/headers/clip1.r3d"
printf '\0\0\x10\0RED2' >"$WORK/headers/clip2.r3d"
for file in "$WORK"/headers/*; do
    truncate -s 10G "$file"
    bytes_read "10 GB $(basename "$file")" "$KELDUMP $file"
done
rm -r "$WORK/headers"
