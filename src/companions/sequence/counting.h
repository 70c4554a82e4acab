// How the time codes and film positions of a sequence count.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/timecode.h"
#include "companions/sequence/frame.h"

// A stretch of frames at one rate.
struct TimecodeRule {
    Counting counting;
    int64_t step = 1;    // numbers a frame; below zero where they run backwards
    int64_t share = 1;   // successive frames that share a number
    bool holds = false;  // they do though the rate has a number for each
    int64_t told = 0;    // numbers a second by the headers, where those of the frames are others
};
TimecodeRule timecode_rule(std::span<const SequenceFrame *const> frames);

// Of keycodes, in perforations.
struct FilmRule {
    std::optional<int64_t> step;       // a frame; below zero where the film runs backwards
    std::optional<int64_t> per_count;  // from one count to the next
    int64_t share = 1;                 // successive frames of one position
};
FilmRule film_rule(std::span<const SequenceFrame *const> frames);

// Which of the values seen most often comes first.
class Votes {
 public:
    void add(int64_t value);
    // The value with the most votes, where it has that many.
    std::optional<int64_t> winner(uint64_t needed = 1) const;
    uint64_t of(int64_t value) const;
    uint64_t all() const { return all_; }

 private:
    std::vector<std::pair<int64_t, uint64_t>> votes_;
    uint64_t all_ = 0;
};
