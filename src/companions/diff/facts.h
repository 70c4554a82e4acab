// What differs between two files as people say it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/facts.h"

struct FactDifference {
    std::string name;   // "sound", "timecode", "rate"
    std::string one;    // of the first file; empty: it has none
    std::string other;  // of the second
    std::string text;   // "sound: 2 tracks instead of 1"
};

// Of one place; not set where a file has none.
struct TimecodePair {
    FileTimecode one;
    FileTimecode other;
};

// In the order in which people ask. Dates, sizes and identifiers only with `everything`.
std::vector<FactDifference> differing_facts(const Facts &one, const Facts &other, bool everything);

// Start timecodes that the facts told: fields that say the same need not be told again.
class ToldTimecodes {
 public:
    ToldTimecodes(const Facts &one, const Facts &other);
    bool has_told(std::string_view label, std::string_view one, std::string_view other) const;

 private:
    std::vector<TimecodePair> pairs_;
};
