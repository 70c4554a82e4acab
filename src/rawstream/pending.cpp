#include "rawstream/rawstream.h"

void rawdump(DumpOptions &, const char *) {}
