#include "common/timecode.h"

#include <cstdio>

namespace {

constexpr uint32_t kDropFlag = 0x40;  // beside the frames' tens, which go up to 2 at the rates that drop

// The digits alone. At rates above 30 the frames' tens need the flag's bit.
uint32_t digits_of(uint32_t timecode, const Counting &counting) {
    return timecode & (counting.base > 30 ? 0x3F7F7F7F : 0x3F7F7F3F);
}

uint32_t two_digits(uint32_t timecode, unsigned shift) {
    const uint32_t byte = timecode >> shift & 0xFF;
    return (byte >> 4) * 10 + (byte & 15);
}

uint32_t bcd(int64_t value) { return static_cast<uint32_t>(value / 10 << 4 | value % 10); }

}  // namespace

std::string timecode_text(uint32_t timecode, const Counting &counting) {
    const uint32_t digits = digits_of(timecode, counting);
    char text[16];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x%c%02x", digits >> 24, digits >> 16 & 0xFF,
                  digits >> 8 & 0xFF, counting.drop ? ';' : ':', digits & 0xFF);
    return text;
}

bool has_drop_flag(uint32_t timecode, const Counting &counting) {
    return counting.base == 30 && (timecode & kDropFlag);
}

bool has_digits(uint32_t timecode, const Counting &counting) {
    const uint32_t digits = digits_of(timecode, counting);
    for (unsigned shift = 0; shift < 32; shift += 4) {
        if ((digits >> shift & 15) > 9) return false;
    }
    return true;
}

std::optional<int64_t> frame_count(uint32_t timecode, const Counting &counting) {
    if (!has_digits(timecode, counting)) return std::nullopt;
    const uint32_t digits = digits_of(timecode, counting);
    if (two_digits(digits, 24) > 23 || two_digits(digits, 16) > 59 || two_digits(digits, 8) > 59)
        return std::nullopt;
    const int64_t minutes = int64_t{two_digits(digits, 24)} * 60 + two_digits(digits, 16);
    const uint32_t seconds = two_digits(digits, 8);
    const uint32_t frames = two_digits(digits, 0);
    const uint32_t dropped = counting.dropped();
    if (frames >= counting.base) return std::nullopt;
    if (dropped && minutes % 10 != 0 && seconds == 0 && frames < dropped) return std::nullopt;
    return (minutes * 60 + seconds) * counting.base + frames - dropped * (minutes - minutes / 10);
}

int64_t frame_number(int64_t count, const Counting &counting) {
    const int64_t dropped = counting.dropped();
    const int64_t minute = int64_t{60} * counting.base - dropped;
    const int64_t ten_minutes = 10 * minute + dropped;
    count %= 144 * ten_minutes;
    // Back in go the numbers that were dropped: none in the first minute of ten.
    const int64_t rest = count % ten_minutes;
    const int64_t number = count + count / ten_minutes * 9 * dropped;
    return rest < minute + dropped ? number : number + dropped * ((rest - dropped) / minute);
}

uint32_t timecode_of(int64_t count, const Counting &counting) {
    const int64_t number = frame_number(count, counting);
    const int64_t seconds = number / counting.base;
    return bcd(seconds / 3600) << 24 | bcd(seconds / 60 % 60) << 16 | bcd(seconds % 60) << 8 |
           bcd(number % counting.base);
}
