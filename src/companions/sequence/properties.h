// Properties that should stay the same along a sequence.
#pragma once

#include <string>
#include <vector>

#include "companions/sequence/check.h"

// Where a property changes: a frame, or a stretch, that alone differs from what is around it, a change that
// comes back every n frames, one that stays. A property that changes with most frames is none. Frames are
// those that can be compared.
void find_changes(const std::vector<const SequenceFrame *> &frames, const SharedNames &names,
                  std::vector<Finding> &findings);

// The stable word of findings on a property.
std::string kind_of_property(const std::string &name);
