// Facts of OpenEXR images.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// OpenEXR 2 and 3: scan lines, tiles, deep data, several parts; of the parts the largest is the main picture,
// shown in the display window and stored in the data window. Cut where a chunk that the offset tables name is
// not there, or where they are not filled.
void exr_facts(Input &input, Facts &facts);
