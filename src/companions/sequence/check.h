// What breaks in a sequence of frames.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "companions/sequence/frame.h"

struct SequenceFrame {
    int64_t number;  // in its name, or its place where names have none
    Frame frame;
};

struct Report {
    std::vector<std::string> findings;  // a line each, in the order of the frames
    std::string summary;                // of the whole sequence
};

// Compares each frame with the one before: numbers that are missing, files without header or cut, time codes
// and film positions that do not go on by as many frames as the numbers do, and properties that change. Time
// codes count by the rate of the headers (by what they show where none is set); whether numbers are dropped
// is told from the flag or from the first minute that shows it. A keycode's step and its perforations a count
// are those that most frames of the sequence have.
Report check_sequence(const std::vector<SequenceFrame> &frames);
