// The columns of the table, and what they say of a file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/facts.h"

// In the documented order, to which new ones are added at the end only.
enum class Column : uint8_t {
    file,
    format,
    width,
    height,
    bit_depth,
    codec,
    frame_rate,
    duration,
    channels,
    sample_rate,
    timecode,
    keycode,
    reel,
    problem,
    variant,
    rate,
    constant_rate,
    frames,
    components,
    floating,
    coded_width,
    coded_height,
    scan,
    pixel_aspect,
    display_aspect,
    primaries,
    transfer,
    matrix,
    range,
    video_tracks,
    audio_tracks,
    audio_codec,
    audio_bits,
    audio_layout,
    languages,
    samples,
    timecode_frames,
    timecode_base,
    timecode_drop,
    timecode_end,
    timecodes,
    extent,
    bytes_claimed,
    missing,
    writer,
    date,
    size,
    bit_rate,
    first_frame,
    last_frame,
    frames_missing,
    video_bit_rate,
    audio_bit_rate,
    rotation,
    count,
};

struct ColumnRow {
    Column column;
    const char *name;  // in CSV, JSON and --columns
    enum Kind : uint8_t { text, number, truth } kind;
};
std::span<const ColumnRow> table_columns();

// What a file or a sequence says: texts as CSV has them, numbers in decimal without unit; empty where nothing
// is known.
struct Row {
    std::string cells[static_cast<size_t>(Column::count)];
    std::vector<std::pair<std::string, std::string>> more;    // names of the format
    std::vector<std::pair<std::string, std::string>> fields;  // patterns of --field, with a value; in order
    bool is_known = false;                                    // its format

    std::string &operator[](Column column) { return cells[static_cast<size_t>(column)]; }
    const std::string &operator[](Column column) const { return cells[static_cast<size_t>(column)]; }

    // The value of a column by its name, one of `more`, all of these ("more"), or a pattern of --field, where
    // several are joined by "; ".
    std::string named(std::string_view name) const;

    // As one text, and back, from process to process.
    std::string packed() const;
    static Row unpacked(std::string_view text);
};

Row row_of(const Facts &facts, std::string_view file);

// The column of a pattern of --field: the pattern, as "*/keycode" where the table has a column of that name.
std::string field_name(const std::string &pattern);

// "cut: 3.1 of 6.2 GB, data of tracks 1 and 2"; empty where all is well, or cannot be told.
std::string problem_of(const Facts &facts);
// "6.2 GB", "4,736 bytes".
std::string size_text(uint64_t bytes);
// "1,001".
std::string grouped(uint64_t number);
