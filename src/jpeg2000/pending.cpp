#include "jpeg2000/jpeg2000.h"

void jp2dump(DumpOptions &, std::FILE *) {}
void jpcdump(DumpOptions &, std::FILE *, int) {}
void jpgdump(DumpOptions &, std::FILE *) {}
