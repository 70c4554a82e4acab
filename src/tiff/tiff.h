// TIFF directories (TIFF 6.0, with EXIF, DNG and Photoshop resources).
#pragma once

#include <cstdint>

#include "common/budget.h"
#include "common/input.h"
#include "common/ordered_bytes.h"
#include "main/dump_options.h"

// File header and every directory of a TIFF file, offsets in bytes; with -v -p the first pixels. Values
// beyond the file are 0, and entries end with it.
void tiffdump(DumpOptions &opts, Input &input);

// One chain of directories with the sub-directories reached from it. Offsets count from the start of `base`.
// The directories of one file share a budget.
void tiffdumpifd(DumpOptions &opts, OrderedBytes base, uint32_t ifd_offset, Budget &budget);
