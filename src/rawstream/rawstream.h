// Raw captures of serial digital video.
#pragma once

#include "main/dump_options.h"

// Raster of a capture, found from its timing reference signals (SMPTE 125M, 274M, 296M); with -v its words in
// hexadecimal. The file is opened by name; samples that it lacks are 0.
void rawdump(DumpOptions &opts, const char *name);
