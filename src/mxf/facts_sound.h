// Facts of the sound descriptors of MXF files and of their channel labels (SMPTE ST 377-1, ST 377-4).
#pragma once

#include "mxf/facts_metadata.h"

bool is_sound(const MetadataSet &descriptor);

// All that a descriptor and its labels tell of a sound: nothing of how many samples there are.
Sound sound_of(const Metadata &metadata, const MetadataSet &descriptor);

// What kind of sound its labels say it is: "PRM", "ME, commentary"; empty where they do not.
std::string sound_content(const Metadata &metadata, const MetadataSet &descriptor);
