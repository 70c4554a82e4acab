#include "raw/raw.h"

void hexdumpfile(DumpOptions &, std::FILE *, int64_t, int64_t) {}
void hexdump(DumpOptions &, std::FILE *, Bytes, int64_t, int64_t) {}
void stringsearchfile(DumpOptions &, std::FILE *) {}
void dumpfile(DumpOptions &, std::FILE *) {}
void xmldump(DumpOptions &, std::FILE *) { std::printf("Fileformat:XML\n"); }
void fontdump(DumpOptions &, std::FILE *) {}
