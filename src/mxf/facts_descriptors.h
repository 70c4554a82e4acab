// Facts of the essence descriptors of MXF files (SMPTE ST 377-1, annex F).
#pragma once

#include "mxf/facts_metadata.h"

bool is_picture(const MetadataSet &descriptor);

// All that a descriptor and its sub-descriptors tell of a picture: nothing of how many frames there are.
Picture picture_of(const Metadata &metadata, const MetadataSet &descriptor);
// Labels of a descriptor's colours that ITU-T H.273 has no codes for, with what they are labels of.
std::vector<std::pair<std::string, Bytes>> uncoded_colours(const MetadataSet &descriptor,
                                                           const Colour &colour);

// What the picture was mastered on (SMPTE ST 2067-21, ST 2086): "P3 D65, 0.005 to 1000 cd/m2"; chromaticities
// where they have no name. Empty where nothing is told.
std::string mastering_display(const Metadata &metadata, const MetadataSet &descriptor);

// "frame" or "clip" by the label of an essence container; empty for any other.
std::string wrapping_of(Bytes container);
