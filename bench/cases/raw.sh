# Raw views of 64 MiB of random bytes.
head -c 67108864 /dev/urandom >"$WORK/random"
head -c 1048576 "$WORK/random" >"$WORK/random.txt"
timed 'hex dump, 64 MiB (-h=0,4000000)' 64 MiB "$KELDUMP -h=0,4000000 $WORK/random" "xxd $WORK/random"
timed 'hex dump, 64 MiB' 64 MiB "$KELDUMP -h=0,4000000 $WORK/random" "hexdump -C $WORK/random"
timed 'string search, 64 MiB (-s)' 64 MiB "$KELDUMP -s $WORK/random" "strings -n 6 $WORK/random"
timed 'text dump, 1 MiB (-d)' 1 MiB "$KELDUMP -d $WORK/random.txt" "cat -v $WORK/random.txt"
rm -f "$WORK/random" "$WORK/random.txt"
