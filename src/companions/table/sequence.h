// The one row of numbered frames.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "companions/frame_groups.h"
#include "companions/shared_names.h"
#include "companions/table/row.h"

// Takes the frames' rows in the order of their numbers. The row is that of the frames, by what most of them
// say, with the range of names, the number of frames and the duration that makes at their rate, the size of
// all, and as its problem what is missing, which frames have a problem of their own, and which are unlike
// most in what frames share. A field of the dump has its values in all frames, 100 at most and "...".
class SequenceRow {
 public:
    void add(const FrameNumber &number, Row row);
    // By numbers and pictures, as keldump-seq has it.
    bool are_frames() const;
    Row finish(const FrameGroup &group, const std::vector<std::string> &list);

 private:
    static constexpr size_t kShared = 15;
    using Values = std::array<uint32_t, kShared>;  // numbers of texts
    struct Frame {
        int64_t number;
        Values values;
    };
    struct Trouble {
        std::string text;
        std::vector<int64_t> frames;
        bool is_of_all = false;
    };

    void add_fields(const Row &row);
    void add_trouble(const std::string &text, int64_t frame);
    void find_unlike(const Values &usual);
    Values usual_values() const;
    Row usual_row(const Values &usual) const;

    Row first_;
    bool has_header_ = false;
    std::vector<std::pair<Values, Row>> kinds_;  // a few
    std::vector<Frame> frames_;                  // that have a header
    std::vector<FrameNumber> numbers_;
    std::vector<uint32_t> pictures_;
    SharedNames texts_;
    std::vector<std::pair<std::string, std::string>> fields_;  // of all frames, each value once, some of them
    uint64_t size_ = 0;
    uint64_t claimed_ = 0;
    std::string extent_;
    std::string missing_;  // of the first frame that is cut
    std::string last_timecode_;
    std::vector<Trouble> troubles_;
};

// "17, 20-21, 40" of numbers in order; with "..." behind the tenth part.
std::string ranges_text(const std::vector<int64_t> &numbers);
