// Facts of TIFF and DNG files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void tiff_facts(Input &input, Facts &facts);
