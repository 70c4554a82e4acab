// GXF files (SMPTE 360M).
#pragma once

#include <cstdio>

#include "main/dump_options.h"

// Every packet of the file with the fields of map, media, field locator and UMF packets.
void gxfdump(DumpOptions &opts, std::FILE *file);
