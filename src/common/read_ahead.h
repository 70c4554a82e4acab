// What to ask of a slow link before it is needed. Pure bookkeeping: who reads tells what and how long it
// took, and announces to the system what a plan names.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "common/file_range.h"

// What requests to a file's place cost, as measured: a small read's time is a round trip, what a large one
// takes beyond that gives the bandwidth. Where a large one comes first, what it takes beyond a fast link's
// time is the round trip. Before anything was measured a link counts as fast.
class LinkCost {
 public:
    void measured(uint64_t bytes, double seconds);

    // Whether round trips cost so much that bytes are worth spending for them.
    bool is_slow() const { return round_trip_ >= kSlow; }
    double round_trip() const { return round_trip_; }  // in seconds
    double bandwidth() const { return bandwidth_; }    // in bytes a second
    // The bytes that cost as much as one round trip: a gap below that is cheaper read than skipped.
    uint64_t bytes_of_a_round_trip() const;

 private:
    static constexpr double kSlow = 100e-6;

    double round_trip_ = 0;
    double bandwidth_ = 1e9;
};

// Follows the reads of one file and plans what to announce. A walk whose steps repeat (frames of constant
// size) has its next places announced and the gaps between them skipped; any other that goes forward by steps
// cheaper read than skipped has what follows announced, the longer it lasts the more; a jump starts anew.
class ReadAhead {
 public:
    static constexpr uint64_t kSmallFile = 1 << 20;  // such a file is announced whole
    // Systems drop announcements beyond some eight or nine requests under way.
    static constexpr uint64_t kDeepest = 1 << 20;  // bytes ahead of a stream
    static constexpr size_t kPlacesAhead = 8;      // of a pattern

    explicit ReadAhead(uint64_t file_size) : file_size_(file_size) {}

    // The ranges to announce before n bytes at an offset are read; valid until the next call.
    std::span<const FileRange> before_read(uint64_t offset, uint64_t n, const LinkCost &link);

 private:
    void enter(FileRange place);
    size_t period() const;
    void extend_pattern();
    void extend_stream(FileRange read, uint64_t bridge);
    void announce(uint64_t offset, uint64_t end);

    uint64_t file_size_;
    std::vector<FileRange> plan_;

    // Places: runs of reads that lie close together, the current one last.
    static constexpr uint64_t kNear = 64 << 10;
    static constexpr size_t kPlacesKept = 40;
    static constexpr size_t kLongestPeriod = 12;
    static constexpr uint64_t kLargestPlace = 256 << 10;  // longer ones are streams of their own
    std::deque<FileRange> places_;
    std::deque<FileRange> expected_;  // announced places, the next one first

    static constexpr uint64_t kFirstDepth = 128 << 10;
    FileRange stream_{0, 0};  // from its first read to its last one's end
    uint64_t announced_to_ = 0;
    uint64_t depth_ = kFirstDepth;
    bool whole_announced_ = false;
};
