// Raw captures of serial digital video.
#pragma once

#include "main/dump_options.h"

// Raster of a capture, found from its timing reference signals. The file is opened by name.
void rawdump(DumpOptions &opts, const char *name);
