// Facts of JPEG 2000 and JPEG images.
#pragma once

#include "common/facts.h"
#include "common/input.h"

// Boxes (ISO/IEC 15444-1, annex I) or a codestream alone: the picture, what its main header says of how it is
// coded, and by its tile-parts whether it is whole.
void jp2_facts(Input &input, Facts &facts);
void codestream_facts(Input &input, Facts &facts);
// The picture by its frame header (ISO/IEC 10918-1), EXIF's dates and writer, and whether its end is there.
void jpeg_facts(Input &input, Facts &facts);

// What the main header of a JPEG 2000 codestream tells of its picture: the codec by the wavelet, and sizes,
// bits and components where they are not set yet. False where no codestream begins.
bool codestream_picture(Bytes codestream, Picture &picture);
