// MPEG streams.
#pragma once

#include <cstdint>

#include "common/input.h"
#include "main/dump_options.h"

// Start codes of a program stream or video elementary stream (ISO/IEC 11172, 13818-1, 13818-2) from a byte
// offset on: of the first MiB, with -v of the whole file. Bits beyond its end read as the bit reader gives
// them. `text` is scratch space of at least 32 bytes for the system clock.
void mpegdump(DumpOptions &opts, Input &input, int64_t start, char *text);

// Packets of a transport stream (ISO/IEC 13818-1) from a byte offset on, until one does not begin with the
// sync byte or the file ends.
void tsdump(DumpOptions &opts, Input &input, int64_t start, char *text);
