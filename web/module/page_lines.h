// A dump for the page: blocks of lines as columns, which it takes as typed arrays.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "companions/lines/lines.h"
#include "companions/registers/annotate.h"

// What is told of a dump: lines behind the first `skip`, until there are so many, or so many bytes of text.
struct PageLimits {
    uint64_t skip = 0;
    uint64_t lines = UINT64_MAX;
    uint64_t bytes = UINT64_MAX;
};

// Listens to a dump and writes a block to standard output, in one piece, when it holds many lines or some
// time has passed. A block, in little-endian order: twelve words (a mark, numbers of lines, of bytes of their
// text, of further ranges, of bytes of new names, of the format's name; the end and the status of the dump in
// its last block; numbers of notes and of bytes of their text; widths, 1: places are doubles, else 32 bits,
// 2: names have 32 bits, else 16; 0); offsets and sizes of further ranges (doubles); for each line the offset
// and the size of its first range, where its text and, where there are any, its further ranges end; its name
// (0: none) in the dump's list of names, where that has 32 bits; in which line of the block each note stands
// and where its text ends; for each line its name of 16 bits, its depth (16 bits) and its marks (8 bits); the
// names, each behind its size; the format's name; the text; the text of notes (what the registers say of
// MXF).
class PageLines : public Listener {
 public:
    enum Mark : uint8_t { kListing = 1, kAside = 2, kCut = 4, kOpen = 8, kBlank = 16 };
    enum End : uint32_t { none, dumped, unopened, unknown, stopped };

    explicit PageLines(const PageLimits &limits);

    void format(const char *name) override { format_ = name; }
    void line(const Line &line) override;
    void finish(End end, int status);
    bool is_stopped() const { return stopped_; }

 private:
    void begin(const Line &line);
    void take_note(const Line &line);
    void end(const Line &line, uint8_t marks);
    uint32_t name_of(const PathElement &element);
    void write_due();
    void write_block(End end, uint32_t status);

    const PageLimits limits_;
    uint64_t lines_ = 0;  // of the dump
    uint64_t bytes_ = 0;  // told
    bool stopped_ = false;
    bool in_line_ = false;

    LinePlaces places_;
    FieldLine field_;
    uint16_t depth_ = 0;  // of the current line
    uint32_t name_ = 0;
    std::unordered_map<std::string, uint32_t> known_names_;
    std::string format_;

    RegisterNotes registers_;
    std::string note_;  // on the current line
    std::vector<double> offsets_, sizes_, more_ranges_;
    std::vector<uint32_t> text_ends_, range_ends_, names_, note_lines_, note_ends_;
    std::vector<uint16_t> depths_;
    std::vector<uint8_t> marks_;
    std::string new_names_, text_, notes_;

    size_t block_lines_;
    std::chrono::steady_clock::time_point written_;
};
