#include "mxf/mxf.h"

void mxfdump(DumpOptions &, std::FILE *) {}
