// JPEG 2000 (ISO/IEC 15444-1) and JPEG (ISO/IEC 10918-1).
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// Boxes of a JP2 file with offsets and lengths in bytes, and the markers of its codestream. "ERROR during
// decoding" when a length leads beyond the file.
void jp2dump(DumpOptions &opts, Input &input);

// Marker segments of a bare codestream, after a 16-byte prefix where `skip_prefix` is set; tile data is
// jumped over. A segment that the file's end cuts shows zeros and ends the dump.
void jpcdump(DumpOptions &opts, Input &input, int skip_prefix);

// JPEG marker segments up to the first scan, with EXIF directories; a cut segment shows zeros.
void jpgdump(DumpOptions &opts, Input &input);
