// Values of dumps as the table has them. Each gives the empty text for what is no such value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

std::string_view trimmed(std::string_view text);

// The whole number that a text begins with, decimal or hexadecimal; -1 where it begins with none, or with one
// that is negative or beyond 48 bits.
int64_t number_in(std::string_view text, int base = 10);
// "24000/1001" or "23.976" as a number; 0 where it is none.
double ratio_in(std::string_view text);

std::string whole_text(int64_t number);     // empty below zero
std::string positive_text(int64_t number);  // empty below one
std::string rate_text(double rate);         // up to three decimals
std::string seconds_text(double seconds);   // three decimals
// "01:02:03:04" of a frame count; "01:02:03;04" with the numbers that drop frame leaves out.
std::string timecode_of_frames(int64_t frames, int64_t base, bool drop);
// "01:02:03:04" of the eight digits of a BCD time code at a rate, 0 where it is not known. Up to 30 frames a
// second the highest bit of the frames' tens is the drop flag (SMPTE 12M).
std::string bcd_timecode_text(std::string_view digits, double rate);

// "02 24 123456 7890+12": manufacturer, film type, prefix, count and perforations (SMPTE 254) of a keycode
// that the dump shows as numbers; empty where one of them is none.
std::string keycode_text(int64_t manufacturer, int64_t type, int64_t prefix, int64_t count,
                         int64_t perforations);

// Converters for values as they stand in a dump.
std::string as_text(std::string_view value);    // blanks at the ends dropped
std::string as_count(std::string_view value);   // "1920" of "1920" and "-1920", nothing of "0"
std::string as_rate(std::string_view value);    // of a number or a fraction
std::string as_quoted(std::string_view value);  // what stands in single quotes
std::string as_name(std::string_view value);    // "RGB" of "50 RGB"
std::string as_bcd(std::string_view value);     // "01020304" of "01020304" and "0x01020304", where it is set
std::string as_timecode(std::string_view value);  // what looks like one: "01:02:03:04?" without the rest
