// Facts of JPEG 2000 and JPEG images.
#pragma once

#include "common/facts.h"
#include "common/input.h"

void jp2_facts(Input &input, Facts &facts);
void codestream_facts(Input &input, Facts &facts);
void jpeg_facts(Input &input, Facts &facts);

// What the main header of a JPEG 2000 codestream tells of its picture: the codec by the wavelet, and sizes,
// bits and components where they are not set yet. False where no codestream begins.
bool codestream_picture(Bytes codestream, Picture &picture);
