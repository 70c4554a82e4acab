#include "dpx/dpx.h"

void cineondump(DumpOptions &, Bytes, uint32_t) {}
void dpxdump(DumpOptions &, std::FILE *, Bytes, uint32_t, const char *, int) {}
#include "dpx/kelheader.h"
void kelheaderdump(Bytes, KelHeaderRecord *, int) {}
