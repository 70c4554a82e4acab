// Facts of GXF files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// Tracks, rates and fields by the map, timecode and sampling rates by the UMF packets, sizes by the first
// media packets; whole where the stream's end is there (SMPTE 360M).
void gxf_facts(Input &input, Facts &facts);
