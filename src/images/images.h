// Simple image headers, raw YUV, ARRI raw and Windows executables.
#pragma once

#include <cstdio>

#include "common/bytes.h"
#include "main/dump_options.h"

// Headers taken from the first bytes of the file; fields beyond a short file are 0.
void bmpdump(DumpOptions &opts, Bytes header);
void tgadump(DumpOptions &opts, Bytes header);
void sgidump(DumpOptions &opts, Bytes header);
void softdump(DumpOptions &opts, Bytes header);
void exedump(Bytes header);

void ppmdump(DumpOptions &opts, std::FILE *file);  // PBM, PGM and PPM, plain and raw
void pngdump(DumpOptions &opts, std::FILE *file);  // chunks but IDAT; with -v their data in hexadecimal
void mngdump(DumpOptions &opts, std::FILE *file);  // names the format only

// The raster guessed from the size of a file that holds nothing but 4:2:2 samples.
void yuvdump(DumpOptions &opts, std::FILE *file);
void yuv10dump(DumpOptions &opts, std::FILE *file);
void yuv16dump(DumpOptions &opts, std::FILE *file);

// Header of an ARRI raw frame; nothing for a file below 4096 bytes.
void aridump(DumpOptions &opts, std::FILE *file);
