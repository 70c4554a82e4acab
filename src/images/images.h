// Simple image headers, raw YUV, ARRI raw and Windows executables.
#pragma once

#include "common/bytes.h"
#include "common/input.h"
#include "main/dump_options.h"

// Headers that lie in the first bytes of the file, which `header` holds; fields beyond a short file are 0.
void bmpdump(DumpOptions &opts, Bytes header);   // Windows and OS/2 bitmap, sizes in pixels and bytes
void tgadump(DumpOptions &opts, Bytes header);   // Truevision TGA 2.0, without its footer
void sgidump(DumpOptions &opts, Bytes header);   // SGI image file format 1.0
void softdump(DumpOptions &opts, Bytes header);  // Softimage PIC with its channel packets
void exedump(Bytes header);                      // COFF header of a Windows PE image

// Netpbm headers (PBM, PGM and PPM, plain and raw): the two header lines; numbers that are missing are 0.
void ppmdump(DumpOptions &opts, Input &input);

// Chunks of a PNG file (ISO/IEC 15948) but IDAT, with -v their bytes in hexadecimal. Ends with the
// chunk that the file's end cuts. Of an MNG file only the format is named.
void pngdump(DumpOptions &opts, Input &input);
void mngdump(DumpOptions &opts, Input &input);

// The raster in pixels guessed from the size of a file that holds nothing but 4:2:2 samples of 8, 10 or 16
// bits.
void yuvdump(DumpOptions &opts, Input &input);
void yuv10dump(DumpOptions &opts, Input &input);
void yuv16dump(DumpOptions &opts, Input &input);

// The 4096-byte header of an ARRI raw frame; nothing for a shorter file.
void aridump(DumpOptions &opts, Input &input);
