// What is true of a file, as one record for all formats. The readers are beside the dumps
// (src/<format>/facts.cpp): what a dump prints is its format's contract, what they say has no contract but
// the truth. What is not known stays empty, 0 or as said here; nothing is guessed.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/bytes.h"
#include "common/input.h"

// n/d, not set where one of them is not positive.
struct Ratio {
    int64_t n = 0;
    int64_t d = 0;

    bool is_set() const { return n > 0 && d > 0; }
    double value() const { return is_set() ? static_cast<double>(n) / static_cast<double>(d) : 0; }
    Ratio reduced() const;
    bool operator==(const Ratio &) const = default;
};

enum class Scan : uint8_t { unknown, progressive, interlaced, top_first, bottom_first };

// Colours by the codes of ITU-T H.273; -1 where the file does not say.
struct Colour {
    int primaries = -1;
    int transfer = -1;
    int matrix = -1;
    int full_range = -1;  // 0: narrow ("video") range, 1: full
};

// A picture track, or the picture of a still.
struct Picture {
    uint32_t width = 0;  // as shown, in pixels
    uint32_t height = 0;
    uint32_t coded_width = 0;  // as stored, where that differs
    uint32_t coded_height = 0;
    uint32_t bits = 0;  // a component
    bool floating = false;
    std::string components;  // "4:2:2", "4:4:4:4", "RGB", "RGBA", "Y", "YA", "palette", "Bayer", "YUV 4:2:0"
                             // is "4:2:0"
    std::string codec;       // as people say it: "ProRes 422 HQ", "JPEG 2000 9/7", "LZW", "uncompressed"
    Scan scan = Scan::unknown;
    Ratio pixel_aspect;
    Colour colour;
    Ratio rate;  // frames a second
    std::optional<bool> constant_rate;
    int64_t frames = -1;
    int64_t played = -1;         // frames of these, where an edit list shows others than all
    int64_t bit_rate = -1;       // bits a second, of its samples or as the file says
    bool enabled = true;         // it is played
    std::string mastering = {};  // mastering_text() of its display, where its stream or its track tells
    std::string light = {};      // of its content: greatest and mean of a frame, cd/m2

    int64_t shown() const { return played >= 0 ? played : frames; }
};

// A sound track.
struct Sound {
    uint32_t channels = 0;
    Ratio rate;            // samples a second
    uint32_t bits = 0;     // of a sample as coded; 0 where a codec has none
    std::string codec;     // "PCM", "PCM float", "AAC", "AC-3", "A-law", ...
    std::string layout;    // "mono", "stereo", "5.1", "L R C LFE Ls Rs", ... where the file says it
    std::string language;  // as stored ("eng"), empty where undetermined
    int64_t samples = -1;  // a channel
    int64_t bit_rate = -1;
};

// A timecode of the file. The first of a file is its start as players show it.
struct FileTimecode {
    int64_t frames = -1;  // since midnight, numbers that are dropped not counted
    uint32_t base = 0;    // frames that a second counts (24 of 23.976)
    bool drop = false;
    std::string place;          // "material package", "tape", "track", "header", ...
    uint32_t bcd = 0xFFFFFFFF;  // as a header has it (SMPTE 12M), valid or not; all ones where it has none
    std::string digits = {};    // "hh:mm:ss:ff" where the base is not known, so that nothing can be counted

    bool is_valid() const { return (frames >= 0 && base > 0) || !digits.empty(); }
    bool is_set() const { return is_valid() || bcd != 0xFFFFFFFF; }
    // "01:00:00:00", with a semicolon before the frames where numbers are dropped.
    std::string text() const;
};

// Whether all of a file is there. `whole` and `cut` are proved by a structure that the format counts on,
// never by a size field alone; `open`: its writer has not closed it (yet).
struct Extent {
    enum State : uint8_t { unknown, whole, cut, open } state = unknown;
    uint64_t claimed = 0;  // bytes that the structures of the file reach to; 0 where they do not say
    uint64_t present = 0;  // bytes of the file
    std::string missing;   // of a file that is cut what is not there, of an open one the reason: "no footer"
};

struct Facts {
    std::string
        format;  // of the detection table, or what the reader knows better: "MOV", "BWF"; empty: unknown
    std::string variant;            // "OP1a", "RF64", "tiled", "BigTIFF", "fragmented", ...
    std::vector<Picture> pictures;  // the main one first
    std::vector<Sound> sounds;      // in the file's order
    std::vector<FileTimecode> timecodes;
    std::string keycode;
    std::string reel;
    std::string writer;  // what wrote the file: product and version
    std::string date;    // of its making, ISO 8601, "Z" only where the file says UTC
    Ratio duration;      // seconds, as played
    Extent extent;
    std::string problem;  // why nothing, or too little, is known: "the header is cut at 100 bytes"
    std::vector<std::pair<std::string, std::string>> more;  // name and value, in the format's fixed order
    std::vector<std::pair<std::string, std::string>> held;  // further fields that stay along a sequence

    // The main picture, made where there is none yet.
    Picture &picture();
    void add_more(std::string_view name, std::string value);  // nothing for an empty value
    void add_more(std::string_view name, std::integral auto value) { add_more(name, std::to_string(value)); }
    // Marks the file as cut: where its structures end at least, and what lies behind its end.
    void cut(uint64_t claimed, std::string missing);
    void whole(uint64_t claimed = 0);
    // Cut where its structures end behind the file, else whole.
    void reaches(uint64_t end, std::string missing = "the picture's end");
    void open(std::string reason);
    // The place of the largest picture that is played, which becomes the main one.
    size_t largest() const;
    void largest_first();
    // Seconds of that many frames or samples at a rate; nothing where one is not known.
    void lasts(int64_t frames, Ratio rate);
    void add(FileTimecode timecode);  // nothing for one that is not set
};

// A fixed-width text up to its first NUL or the window's end, blanks at both ends left out. Empty where it
// begins with 0xFF.
std::string fixed_text(Bytes b, uint64_t offset, uint64_t width);

// "4:2:2" by the luma samples that share a chroma sample across and down; empty for what has no name.
std::string chroma_text(uint64_t across, uint64_t down);
// "1920x1080".
std::string size_text(uint64_t width, uint64_t height);
// A maker and what it made, whose name may begin with the maker's.
std::string product_text(std::string maker, const std::string &product);
// Appends a text, where it is none that is empty, to what may have others.
void append(std::string &list, std::string_view text, std::string_view divider = ", ");

// The aspect that a number tells to so many parts; not set where it is no aspect.
Ratio aspect_of(double aspect, int64_t parts = 1000);
// A rate as the ratio that is meant: 23.976, 23.98 and 23.97602 are 24000/1001; whole rates n/1; any other in
// thousandths. Not set for what is no rate.
Ratio rate_of(double rate);
// The same for n/d with numbers of a measured duration, which may be off by a little.
Ratio rate_of(int64_t n, int64_t d);
// Bits a second of bytes that last so many seconds; -1 where one of them is not known.
int64_t bit_rate_of(uint64_t bytes, Ratio seconds);
// Frames that a second's numbers count: 24 of 23.976, 30 of 29.97.
uint32_t base_of(Ratio rate);

// Of hours to frames, at the base's numbers. Not set where a part is out of range, or where the number is
// dropped. Numbers are dropped at bases of 30 and its multiples alone, whatever a file says.
FileTimecode file_timecode(int64_t hours, int64_t minutes, int64_t seconds, int64_t frames, uint32_t base,
                           bool drop, std::string place);
// Of frames since midnight, of which those of whole days are left out.
FileTimecode counted_timecode(int64_t frames, uint32_t base, bool drop, std::string place);
// Of 32 BCD bits as SMPTE 12M has them; bit 6 of the frames' byte is the drop flag at base 30. Base 0: not
// known.
FileTimecode bcd_timecode(uint32_t bcd, uint32_t base, std::string place);

// "02 24 123456 7890+12": manufacturer, film type, prefix, count and perforations of a keycode (SMPTE 254);
// empty where one of the first four is beyond its digits.
std::string keycode_text(int64_t manufacturer, int64_t type, int64_t prefix, int64_t count,
                         int64_t perforations);

// "2026-11-26T10:00:00"; the time is left out where hours are negative; empty where a part is out of range.
std::string iso_date(int64_t year, int64_t month, int64_t day, int64_t hour = -1, int64_t minute = 0,
                     int64_t second = 0, bool utc = false);
// Of a text with the numbers of a date, and of a time where there are six, with what tells its offset from
// UTC: "2026:11:26 10:00:00", "2026:11:26:10:00:00+01", "Thu Nov 26 10:00:00 2026".
std::string iso_date_in(std::string_view text);
// Of seconds since 1970-01-01 UTC.
std::string iso_date_of_unix(int64_t seconds);

// "P3 D65, 0.005 to 1000 cd/m2" of a mastering display (SMPTE ST 2086), as far as each has its bytes.
std::string mastering_text(Bytes primaries, Bytes white, Bytes most, Bytes least);

// A number as "%g" with what digits it needs up to `digits`.
std::string number_text(double number, int digits = 6);

// A decimal number of up to 18 digits; -1 where a text is none, or where n of its characters from a place on
// are none.
int64_t decimal_in(std::string_view text);
int64_t decimal_in(std::string_view text, size_t at, size_t n);
// Whether the bytes before an offset, `most` at most, are all zeros, `least` at least: they were never
// written where the format has no such zeros.
bool ends_in_zeros(Input &input, uint64_t start, uint64_t end, uint64_t least, uint64_t most);

// Bytes as hexadecimal digits, up to 64 of them.
std::string hex_text(Bytes b);
// A label of the SMPTE registers as "06.0e.2b.34.04.01.01.01-0d.01..."; empty where there are no 16 bytes.
std::string label_digits(Bytes label);
