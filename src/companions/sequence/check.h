// What breaks in a sequence of frames.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "companions/sequence/frame.h"

struct Finding {
    std::string kind;  // a stable word: "missing", "cut", "timecode", ...
    int64_t first = 0;
    int64_t last = 0;
    bool is_of_all = false;  // all frames of the sequence
    std::string text;
};

struct SequenceReport {
    std::vector<Finding> findings;  // in the order of the frames
    std::string summary;            // of the whole sequence
};

struct SequenceQuestion {
    bool numbered = true;                               // the names have numbers
    std::optional<std::pair<int64_t, int64_t>> wanted;  // the frames that should be there
    std::vector<std::string> ignored;                   // kinds of findings that are left out
};

// "10-200", "-5-20" as the frames that should be there; false where it is no range.
bool parse_frames(const std::string &text, SequenceQuestion &question);

// Judges frames in the order of their numbers: numbers that are missing or double, files without header or
// cut, time codes, film positions, positions and names in headers that do not go on by as many frames as the
// numbers do, and properties that change. What belongs together is one finding, on the first frame of it:
// frames that changed places, a frame that is its neighbour's, a value that one frame or every n-th has
// alone.
SequenceReport check_sequence(const std::vector<SequenceFrame> &frames, const SharedNames &names,
                              const SequenceQuestion &question);
