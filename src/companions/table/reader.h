// Readers that pick a row's values out of the lines of a dump.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "companions/quoted_lines.h"
#include "companions/table/row.h"

class DumpReader {
 public:
    virtual ~DumpReader() = default;
    virtual void line(std::string_view line) = 0;
    virtual void finish(Row &row) = 0;
    // Whether the rest of the dump holds nothing more for the row.
    bool done() const { return done_; }

 protected:
    bool done_ = false;
};

std::unique_ptr<DumpReader> mxf_reader();
std::unique_ptr<DumpReader> movie_reader();
std::unique_ptr<DumpReader> exr_reader();
std::unique_ptr<DumpReader> tiff_reader();
std::unique_ptr<DumpReader> sdi_reader();
std::unique_ptr<DumpReader> transport_reader();

// The reader for a dump by its first two lines, which it is given as well. It names the format.
std::unique_ptr<DumpReader> reader_for(std::string_view first, std::string_view second);

// Cuts a dump that comes in pieces into lines and gives them to the reader for it. What is beyond 4 KiB of a
// line is dropped.
class DumpLines {
 public:
    DumpLines() = default;
    DumpLines(const DumpLines &) = delete;
    DumpLines &operator=(const DumpLines &) = delete;

    // False when the reader has all that it wants.
    bool add(std::string_view piece);
    void finish(Row &row);

 private:
    void take(std::string_view line);

    QuotedLines lines_{[this](std::string_view line) { take(line); }};
    std::string rest_;
    std::string first_;
    bool have_first_ = false;
    std::unique_ptr<DumpReader> reader_;
};

// A line without the file position that it begins with ("0000009e: ", "00000000/").
std::string_view without_position(std::string_view line);
