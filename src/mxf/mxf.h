// MXF files (SMPTE 377M).
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// Every KLV item of the file with its byte position and fields; the names that references point to are
// collected first. The last item of a cut file is dumped as far as it goes, zeros behind it.
void mxfdump(DumpOptions &opts, Input &input);
