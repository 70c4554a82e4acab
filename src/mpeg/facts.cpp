#include "mpeg/facts.h"

void mpeg_facts(Input &, Facts &) {}
void transport_facts(Input &, Facts &) {}
