// Facts of the essence descriptors of MXF files (SMPTE ST 377-1, annex F).
#pragma once

#include "mxf/facts_metadata.h"

bool is_picture(const MetadataSet &descriptor);
bool is_sound(const MetadataSet &descriptor);

// All that a descriptor and its sub-descriptors tell of a picture: nothing of how many frames there are.
Picture picture_of(const Metadata &metadata, const MetadataSet &descriptor);
Sound sound_of(const Metadata &metadata, const MetadataSet &descriptor);

// "frame" or "clip" by the label of an essence container; empty for any other.
std::string wrapping_of(Bytes container);
