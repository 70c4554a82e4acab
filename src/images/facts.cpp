#include "images/facts.h"

void arri_facts(Input &, Facts &) {}
