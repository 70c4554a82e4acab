// Facts of OpenEXR images.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void exr_facts(Input &input, Facts &facts);
