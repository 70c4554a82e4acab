#include "mxf/facts.h"

void mxf_facts(Input &, Facts &) {}
