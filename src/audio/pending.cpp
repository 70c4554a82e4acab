#include "audio/audio.h"

void riffdump(DumpOptions &, Bytes, const char *, int) {}
void aiffdump(DumpOptions &, Bytes, const char *) {}
