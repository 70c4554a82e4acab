#include "dpx/dpx.h"
#include "dpx/kelheader.h"

void cineondump(DumpOptions &, Bytes, uint32_t) {}
void kelheaderdump(Bytes, KelHeaderRecord *, int) {}
