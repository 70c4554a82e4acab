#include "gxf/gxf.h"

void gxfdump(DumpOptions &, std::FILE *) {}
