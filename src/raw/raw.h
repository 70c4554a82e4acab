// Views of a file that know no media format: hex dump, string search, text, XML and bitmap font dumps.
#pragma once

#include <cstdint>

#include "common/bytes.h"
#include "common/input.h"
#include "main/dump_options.h"

// Hex dump of `length` bytes from `start` rounded down to 16; 0 stands for 65536 bytes. What lies beyond the
// end of the file is cut off; a negative or overlong range prints nothing.
void hexdumpfile(DumpOptions &opts, Input &input, int64_t start, int64_t length);

// The lines of the hex dump over `length` bytes: of the file from `address` on or, when it is null, of
// `memory`. `address` is the offset that the first line shows.
void hexdump(DumpOptions &opts, Input *input, Bytes memory, int64_t address, int64_t length);

// Prints every run of at least 6 ASCII letters and digits on a line of its own.
void stringsearchfile(DumpOptions &opts, Input &input);

// Text of at most 1 MiB, decoded by its byte-order mark (UTF-8, UTF-16 of both orders) or byte by byte.
void dumpfile(DumpOptions &opts, Input &input);

// Prints the "Fileformat:XML" line only.
void xmldump(DumpOptions &opts, Input &input);

// Header and glyph table of a Windows bitmap font resource (FNT version 3); fields beyond the file are 0.
void fontdump(DumpOptions &opts, Input &input);
