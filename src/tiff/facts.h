// Facts of TIFF and DNG files.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// TIFF 6.0, BigTIFF, DNG 1.6 with the timecodes of CinemaDNG: all directories of the chain, and those below
// them; the largest picture is the main one. Cut where a directory or picture data lies beyond the end, or
// where compressed data ends in zeros.
void tiff_facts(Input &input, Facts &facts);
