#include "mpeg/mpeg.h"

void mpegdump(DumpOptions &, std::FILE *, int64_t, char *) {}
void tsdump(DumpOptions &, std::FILE *, int64_t, char *) {}
