// RED R3D files.
#pragma once

#include "common/input.h"
#include "main/dump_options.h"

// Chunks with offsets and sizes in bytes, and metadata records, of a version 1 or version 2 file; with -v
// every record found in the frames. The walk ends with the file.
void reddumpv1(DumpOptions &opts, Input &input);
void reddumpv2(DumpOptions &opts, Input &input);
