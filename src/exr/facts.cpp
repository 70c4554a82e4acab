#include "exr/facts.h"

void exr_facts(Input &, Facts &) {}
