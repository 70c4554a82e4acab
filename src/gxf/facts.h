// Facts of GXF files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void gxf_facts(Input &input, Facts &facts);
