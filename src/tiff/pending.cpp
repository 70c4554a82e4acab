#include "tiff/tiff.h"

void tiffdump(DumpOptions &, std::FILE *) {}
void tiffdumpifd(DumpOptions &, Bytes, uint32_t, int) {}
