// Rows for a person to read.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "companions/table/output.h"
#include "companions/table/row.h"

std::string picture_size(const Row &row);  // "3840x2160"
std::string duration_text(
    const Row &row);  // "00:01:30:12", without a rate "00:01:30.500"; frames of numbered ones
std::string sound_text(const Row &row);         // "2ch 24/48k", "6ch AAC 48k"
std::string start_text(const Row &row);         // the timecode, or the keycode of what has none
std::string title_of(const std::string &name);  // of a column: "FRAME RATE"

// What a table ends with.
struct TableSums {
    uint64_t files = 0;  // frames of sequences count
    uint64_t rows = 0;
    double seconds = 0;
    uint64_t bytes = 0;
    uint64_t problems = 0;
    uint64_t others = 0;  // files of unknown format that directories held

    void add(const Row &row);
    std::string text() const;
};

// Aligned columns that fit a width in columns of a terminal; the file's name stands last. A row with a
// problem has "!" in front and the problem below, in lines of that width. Rows are given as they are known:
// the columns and their widths are those of the first 50 rows, or of those of the first second. A heading is
// given again when a later file needs one more.
class TerminalTable {
 public:
    using Taker = std::function<void(const std::string &)>;

    // `width` 0: as wide as it gets; nothing is shortened then.
    TerminalTable(size_t width, const Selection &selection, Taker take);

    // Leaves out the columns but those with these titles.
    void keep(const std::vector<std::string> &titles);

    // `remarks`: further lines below the row.
    void add(const Row &row, const std::vector<std::string> &remarks = {});
    // To be called now and then: gives the first rows when a second is over.
    void tick();
    // The rest.
    void finish();

 private:
    struct Cell {
        std::string title;
        bool right = false;
        int importance = 0;  // what is least important is left out first
        size_t most = 0;     // characters on a terminal; 0: no limit
        std::function<std::string(const Row &)> text;
        size_t width = 0;
        bool shown = false;
        bool asked = false;     // for by its name: it is never left out
        bool narrowed = false;  // as there is no room
    };
    struct Waiting {
        Row row;
        std::vector<std::string> remarks;
    };

    static std::vector<Cell> standard_cells();
    static Cell cell_of(const std::string &name);
    bool use(const Row &row);  // whether that shows a further column
    void fit();
    void start();
    void give_heading();
    void give(const Waiting &waiting);
    std::string cells_of(const Row &row, size_t room) const;
    std::string in_width(const Cell &cell, const std::string &text, size_t most) const;

    size_t width_;
    Taker take_;
    std::vector<Cell> cells_;
    bool names_file_ = false;  // a cell does
    bool names_problem_ = false;
    std::vector<Waiting> waiting_;
    bool started_ = false;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};
