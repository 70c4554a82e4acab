#include "gxf/facts.h"

void gxf_facts(Input &, Facts &) {}
