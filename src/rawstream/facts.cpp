#include "rawstream/facts.h"

void sdi_facts(Input &, Facts &) {}
