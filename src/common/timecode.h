// SMPTE 12M time codes as frame counts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

// How a sequence counts: frames a second, and whether numbers are dropped to follow 29.97 or 59.94 Hz.
struct Counting {
    uint32_t base = 0;  // 0: not known
    bool drop = false;
    bool pairs = false;  // two frames share a number, as they may beyond 30 frames a second

    uint32_t dropped() const { return drop ? base / 15 : 0; }  // numbers a minute, but every tenth
};

// "hh:mm:ss:ff" of a BCD time code, with a semicolon before the frames of one that drops numbers.
std::string timecode_text(uint32_t timecode, const Counting &counting = {});

// Whether the time code says of itself that it drops numbers; those of rates above 30 have no room for that.
bool has_drop_flag(uint32_t timecode, const Counting &counting);

// Whether all digits of a time code are decimal.
bool has_digits(uint32_t timecode, const Counting &counting);

// The frame that a time code counts, from midnight on; nothing for one that is invalid, that has a number
// beyond the base, or that the counting drops.
std::optional<int64_t> frame_count(uint32_t timecode, const Counting &counting);

// The number of a frame within its day, with the numbers before it that were dropped.
int64_t frame_number(int64_t count, const Counting &counting);

// The time code of a frame, midnight after a day.
uint32_t timecode_of(int64_t count, const Counting &counting);
