// Facts of MXF files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void mxf_facts(Input &input, Facts &facts);
