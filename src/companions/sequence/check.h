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
// is told from the flag or from the first minute that shows it, and beyond 30 frames a second whether two
// frames share a number. A keycode's step is that of most frames, its perforations a count those of its film.
// A file whose name has no number is a sequence of its own, not `numbered`.
Report check_sequence(const std::vector<SequenceFrame> &frames, bool numbered);
