// Facts of R3D files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void red_facts(Input &input, Facts &facts);
