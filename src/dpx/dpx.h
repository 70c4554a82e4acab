// DPX and Cineon film scans and the metadata that travels with them.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/input.h"
#include "main/dump_options.h"

// DPX header (SMPTE 268M, versions 1 and 2) in either byte order, with the user data; one line of timecodes
// instead when `range_flag` is set. `header` holds the first `length` bytes of the file, zeros beyond its
// end.
void dpxdump(DumpOptions &opts, Input &input, Bytes header, uint32_t length, const char *name,
             int range_flag);

// Cineon header (FIDO/Kodak 4.5); every number is read little-endian.
void cineondump(DumpOptions &opts, Bytes header, uint32_t length);
