#include "quicktime/quicktime.h"

int qtdump(const char *) { return 0; }
