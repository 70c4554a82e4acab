// What a check of a sequence keeps of a frame.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/facts.h"
#include "companions/packing.h"
#include "companions/shared_names.h"

constexpr uint32_t kNoTimecode = 0xFFFFFFFF;
constexpr int64_t kKeycodeCounts = 10000;  // before they begin anew

// A film position (SMPTE 254): what stays the same along a roll, then the count and the perforations from it.
struct Keycode {
    uint32_t roll = 0;  // its name; 0: not set
    int32_t count = -1;
    int32_t offset = -1;

    bool is_set() const { return roll != 0; }
    bool operator==(const Keycode &) const = default;
};

// A frame in less than a hundred bytes; texts are numbers of `SharedNames`.
struct SequenceFrame {
    int64_t number = 0;               // in the file's name
    int64_t position = -1;            // in its header; -1: none
    int64_t name_number = -1;         // of the name in its header the last number
    uint32_t name_rest = 0;           // and what is around it
    uint32_t timecode = kNoTimecode;  // BCD
    float rate = 0;
    uint32_t user_bits = kNoTimecode;
    Keycode keycode;
    uint32_t problem = 0;     // why it cannot be judged, or what is wrong with the file
    uint64_t bytes = 0;       // of the file
    uint32_t properties = 0;  // all that is to stay the same, packed
    uint16_t digits = 0;      // of the number in the file's name
    bool has_header = false;
};

// What of a file's facts counts for a sequence: problem, timecode, rate, what varies, and the properties that
// are to stay the same; packed.
std::string packed_frame(const Facts &facts);
SequenceFrame unpacked_frame(std::string_view packed, SharedNames &names);

// What kind of picture a frame holds, as a number of `SharedNames`: format, size, depth, codec and
// components; 0 without a header.
uint32_t picture_of(const SequenceFrame &frame, SharedNames &names);

TextPairs properties_of(const SequenceFrame &frame, const SharedNames &names);
