// The one row of numbered frames.
#pragma once

#include <string>
#include <vector>

#include "companions/frame_groups.h"
#include "companions/table/row.h"

// Takes the frames' rows in the order of their numbers. The row is that of the first frame with the range of
// names, the number of frames and the duration that makes at their rate, the size of all, and as its problem
// what is missing, which frames have a problem of their own, and in what the first one that is unlike them
// differs.
class SequenceRow {
 public:
    void add(const FrameNumber &number, Row row);
    // Frames that differ from the first in what frames share.
    size_t unlike() const { return unlike_; }
    Row finish(const FrameGroup &group, const std::vector<std::string> &list);

 private:
    struct Trouble {
        std::string text;
        std::vector<int64_t> frames;
    };

    void add_trouble(const std::string &text, int64_t frame);

    Row row_;
    bool begun_ = false;
    size_t unlike_ = 0;
    uint64_t size_ = 0;
    uint64_t claimed_ = 0;
    std::string last_timecode_;
    std::vector<Trouble> troubles_;
};

// "17, 20-21, 40" of numbers in order; with "..." behind the tenth part.
std::string ranges_text(const std::vector<int64_t> &numbers);
