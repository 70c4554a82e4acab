// Audio containers.
#pragma once

#include "common/bytes.h"
#include "main/dump_options.h"

// Chunks of a RIFF file (WAVE, AVI, ...) or, with `rf64` set, of an RF64 file (EBU Tech 3306). `header` holds
// the first bytes of the file, which is opened again by name.
void riffdump(DumpOptions &opts, Bytes header, const char *name, int rf64);

// Chunks of an AIFF or AIFF-C file.
void aiffdump(DumpOptions &opts, Bytes header, const char *name);
