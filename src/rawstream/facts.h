// Facts of raw SDI captures.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void sdi_facts(Input &input, Facts &facts);
