// Facts of MPEG streams.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// Program streams (ISO 13818-1, 11172-1) and elementary video (ISO 13818-2, 11172-2): headers of the first
// MiB, clocks of the last.
void mpeg_facts(Input &input, Facts &facts);
// Transport streams (ISO 13818-1) with packets of 188 bytes, and of 192 and 204.
void transport_facts(Input &input, Facts &facts);
