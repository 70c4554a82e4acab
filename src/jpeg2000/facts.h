// Facts of JPEG 2000 and JPEG images.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void jp2_facts(Input &input, Facts &facts);
void codestream_facts(Input &input, Facts &facts);
void jpeg_facts(Input &input, Facts &facts);
