// Facts of QuickTime and MPEG-4 files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void movie_facts(Input &input, Facts &facts);
