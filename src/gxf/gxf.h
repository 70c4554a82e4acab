// GXF files (SMPTE 360M).
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// Every packet of the file with the fields of map, media, field locator and UMF packets; offsets in bytes,
// durations in fields. A packet that the file's end cuts shows what there is of it.
void gxfdump(DumpOptions &opts, Input &input);
