#include "red/facts.h"

void red_facts(Input &, Facts &) {}
