// Numbered frames: files whose names differ in one number.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A name taken apart at the number that counts the frames.
struct FrameNumber {
    size_t start = 0;  // of its digits in the path, behind a sign
    size_t size = 0;   // digits; 0: no number
    int64_t value = 0;
};

// All numbers of a path's last part but those of its extension.
std::vector<FrameNumber> numbers_of(std::string_view path);

struct FrameGroup {
    size_t first = 0;                  // the place of the first file in the list
    std::vector<size_t> files;         // places in the list, by number
    std::vector<FrameNumber> numbers;  // of each
    std::string before;                // what all names begin with, up to the number
    std::string after;                 // and end with
    bool is_numbered = false;          // else one file

    // "scan.[0086400-0087400].dpx": the path with its range of numbers as they are written.
    std::string range_name(const std::vector<std::string> &list) const;
    // The number of a file as it is written, with its sign.
    std::string written(size_t i, const std::vector<std::string> &list) const;
    // The path with "#" for the number.
    std::string stem() const { return is_numbered ? before + "#" + after : before; }
    // Numbers between the first and the last that no file has.
    int64_t missing() const;
};

// Whether a name is that of a still picture, which may be a frame of many.
bool is_still_name(std::string_view path);

// Groups the frames among files. Frames have the same name but for one number, which is the one whose change
// makes the fewest groups, of several the last. A number counts with a minus sign in front where one is at
// the start of the name or behind a dot, underscore or blank; one behind a "v" that no letter precedes is a
// version and counts only where `versions_count`. Files for which `is_frame` is false, and those
// without any number, are groups of their own. Groups are in the order of their first files.
std::vector<FrameGroup> group_frames(const std::vector<std::string> &files,
                                     bool (*is_frame)(std::string_view), bool versions_count = false);

// Groups of more files are sequences whatever is in them.
constexpr size_t kFewFrames = 64;

// Whether a group's files are frames of a sequence, by their numbers and what picture each holds (equal
// numbers for equal pictures, 0: not known). They are none where each holds another picture; else where half
// of them have a neighbour, or where three or more are all alike.
bool are_frames(const std::vector<FrameNumber> &numbers, const std::vector<uint32_t> &pictures);
