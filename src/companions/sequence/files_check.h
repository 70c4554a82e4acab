// What is wrong with the files of a sequence and their numbers.
#pragma once

#include <vector>

#include "companions/sequence/check.h"

// Numbers that are missing, double or padded otherwise, and files that cannot be judged; what many frames
// share is one finding.
void check_files(const std::vector<SequenceFrame> &frames, const SharedNames &names,
                 const SequenceQuestion &question, std::vector<Finding> &findings);
