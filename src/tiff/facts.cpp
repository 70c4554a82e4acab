#include "tiff/facts.h"

void tiff_facts(Input &, Facts &) {}
