// One row of the table: what a file's dump says of it.
#pragma once

#include <array>
#include <string>
#include <utility>

enum class Column {
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
    // Not shown: what others are computed of.
    frames,
    samples,
    bcd,  // a time code in eight digits, of which one shares a bit with the drop flag
    first,
    second,
    third,
    fourth,
    fifth,
    sixth,
    seventh,
    count,
};

// Texts as the dump has them, numbers in decimal without unit: rates with up to three decimals, the duration
// in seconds with three. Empty where the dump says nothing.
class Row {
 public:
    std::string &operator[](Column column) { return texts_[static_cast<size_t>(column)]; }
    const std::string &operator[](Column column) const { return texts_[static_cast<size_t>(column)]; }

    // Sets a column that is empty yet.
    void offer(Column column, std::string text) {
        if ((*this)[column].empty()) (*this)[column] = std::move(text);
    }

 private:
    std::array<std::string, static_cast<size_t>(Column::count)> texts_;
};
