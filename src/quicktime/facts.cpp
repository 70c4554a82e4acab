#include "quicktime/facts.h"

void movie_facts(Input &, Facts &) {}
