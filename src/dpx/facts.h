// Facts of film scans.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// DPX (SMPTE 268M, versions 1 and 2), and Cineon 4.5 in either byte order: the header, 2048 bytes. Whole or
// cut by what the picture needs as it is packed; the size field alone proves nothing.
void dpx_facts(Input &input, Facts &facts);
void cineon_facts(Input &input, Facts &facts);
