// The row of a hex dump: cells of two digits, then the same bytes as characters. All hex dumps of bytes are
// this row with a few parameters; what stands before the cells (an offset, a label) is the caller's.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "common/bytes.h"
#include "common/line_buffer.h"

struct HexRow {
    unsigned columns = 16;                  // cells in a full row
    bool padded = true;                     // a short row's missing cells are three blanks each
    char gap[4] = "";                       // between cells and characters
    bool characters = true;                 // false: cells only
    uint8_t first_printable = 0x20;         // 0x21 shows the space as the filler, too
    char filler = '.';                      // for bytes that do not show as themselves
    std::string_view after_character = "";  // behind every character
};

// Appends one row with its line feed; at most `columns` bytes are shown.
void put_hexrow(LineBuffer &out, std::span<const uint8_t> bytes, const HexRow &row);

// The digits of each byte: "00 ", "01 ", ... with a fourth character, so that a cell is one 32-bit copy.
inline constexpr auto kHexCells = [] {
    std::array<std::array<char, 4>, 256> cells{};
    constexpr char digits[] = "0123456789abcdef";
    for (unsigned i = 0; i < 256; i++) cells[i] = {digits[i >> 4], digits[i & 15], ' ', ' '};
    return cells;
}();

// Writes a byte's two digits; the place behind them.
inline char *write_hex(char *p, uint8_t byte) {
    std::memcpy(p, kHexCells[byte].data(), 2);
    return p + 2;
}

// Appends n bytes as "%02x " each, without a line feed.
void put_hexcells(LineBuffer &out, std::span<const uint8_t> bytes);

// The 48 characters of a full row's 16 cells, and one more. Processors without byte shuffles use it for every
// row.
void copy_hexcells(char *p, const uint8_t *values);

// Rows over a whole range; start_row(out, i) puts what stands before the row that begins at byte i.
template <typename StartRow>
void put_hexrows(LineBuffer &out, Bytes bytes, const HexRow &row, StartRow start_row) {
    const uint64_t chunk = uint64_t{256} * row.columns;
    for (uint64_t done = 0; done < bytes.size(); done += chunk) {
        const std::span<const uint8_t> rows = bytes.span(done, chunk);
        for (size_t i = 0; i < rows.size(); i += row.columns) {
            from(bytes, done + i, row.columns);
            start_row(out, done + i);
            put_hexrow(out, rows.subspan(i), row);
        }
    }
}
