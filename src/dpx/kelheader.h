// The per-frame header in the user data of DPX files.
#pragma once

#include "common/bytes.h"

struct KelHeaderRecord;

// Prints the tagged items (timecodes, user bits, film data, ancillary packets) of a per-frame header: at most
// 256 words of 32 bits from the start of `header`, in either byte order; nothing without its magic.
void kelheaderdump(Bytes header, KelHeaderRecord *record, int print);
