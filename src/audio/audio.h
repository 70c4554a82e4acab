// Audio containers.
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// Chunks of a RIFF file (WAVE, AVI, ...) or, with `rf64` set, of an RF64 file (EBU Tech 3306), lengths in
// bytes, with -a and -t the samples. `header` holds the first bytes of the file, which is opened again by
// name. A chunk that the file's end cuts ends the list with "Error: read failed".
void riffdump(DumpOptions &opts, Bytes header, const char *name, int rf64);

// Chunks of an AIFF or AIFF-C file (Apple, 1989 and 1991), with -a and -t the samples. A file shorter than it
// says prints its three header lines and an error.
void aiffdump(DumpOptions &opts, Bytes header, const char *name);
