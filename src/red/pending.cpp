#include "red/red.h"

void reddumpv1(DumpOptions &, std::FILE *) {}
void reddumpv2(DumpOptions &, std::FILE *) {}
