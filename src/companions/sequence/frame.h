// What a check of a sequence takes from the header of one frame.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A film position (SMPTE 268M, film information): what stays the same along a roll, then the count of the
// keycode and the offset in perforations from it. -1: not set.
struct Keycode {
    std::string roll;  // manufacturer, type and prefix; empty when none is set
    int32_t count = -1;
    int32_t offset = -1;
    std::string text;  // as it is printed

    bool is_set() const { return !roll.empty() && count >= 0; }
};

// A property that is to be the same in all frames of a sequence, as text; empty when it is not set.
struct Property {
    const char *name;
    std::string value;

    bool operator==(const Property &) const = default;
};

struct Frame {
    std::string problem;  // why there is no header, or what is wrong with the file; empty when all is well
    bool has_header = false;
    std::vector<Property> properties;  // the same names in the same order for all frames of a format
    uint32_t timecode = UINT32_MAX;    // BCD as stored: hours, minutes, seconds, frames; all ones: not set
    double rate = 0;                   // frames a second; 0: not set
    Keycode keycode;

    bool has_timecode() const { return timecode != UINT32_MAX; }
};

// Reads the header of a DPX (SMPTE 268M) or Cineon 4.5 file in either byte order; the rest of the file is not
// read. A file cut short of the size that its header tells, or that its picture needs at least, is a problem,
// but has a header. Safe from any thread.
Frame read_frame(const std::string &path);
