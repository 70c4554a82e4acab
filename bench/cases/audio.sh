# Samples of a 1 GB WAVE of 8 channels of 24 bits (zeros), beside xxd on the same bytes.
{
    printf 'RIFF\xe8\xff\xff\x3bWAVEfmt \x10\0\0\0\x01\0\x08\0\x80\xbb\0\0\0\x94\x11\0\x18\0\x18\0data\x00\xca\x9a\x3b'
} >"$WORK/sound.wav"
truncate -s 1000000044 "$WORK/sound.wav"
timed 'WAVE header, 1 GB' 1 files "$KELDUMP $WORK/sound.wav" "head -c 100 $WORK/sound.wav"
bytes_read 'WAVE header, 1 GB' "$KELDUMP $WORK/sound.wav"
timed 'samples in hexadecimal, 1 GB (-a)' 1000 MB "$KELDUMP -a $WORK/sound.wav" "xxd -p $WORK/sound.wav"
timed 'timecode search, 1 GB (-t)' 1000 MB "$KELDUMP -t $WORK/sound.wav" "cat $WORK/sound.wav"
rm -f "$WORK/sound.wav"
