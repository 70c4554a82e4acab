#include "common/hexrow.h"

#include <algorithm>
#include <array>

namespace {

// "00 ", "01 ", ... with a fourth byte, so that a cell is one 32-bit copy.
constexpr auto kCells = [] {
    std::array<std::array<char, 4>, 256> cells{};
    constexpr char digits[] = "0123456789abcdef";
    for (unsigned i = 0; i < 256; i++) cells[i] = {digits[i >> 4], digits[i & 15], ' ', ' '};
    return cells;
}();

// Room for n cells and one byte more, which the last cell's copy touches.
char *put_cells(char *p, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) {
        std::copy_n(kCells[byte].data(), 4, p);
        p += 3;
    }
    return p;
}

char shown(uint8_t byte, const HexRow &row) {
    return byte >= row.first_printable && byte <= 0x7E ? static_cast<char>(byte) : row.filler;
}

size_t gap_size(const HexRow &row) {
    size_t n = 0;
    while (n < sizeof row.gap && row.gap[n]) n++;
    return n;
}

// The row that nearly every line of a large dump is: all of its cells, in one claim.
void put_full_row(LineBuffer &out, std::span<const uint8_t, 16> bytes, const HexRow &row) {
    constexpr size_t kCellsSize = 3 * 16;
    const size_t gap = gap_size(row);
    char *p = put_cells(out.claim(kCellsSize + gap + 16 + 1), bytes);
    std::copy_n(row.gap, sizeof row.gap, p);  // what it touches too much is overwritten
    p += gap;
    for (size_t i = 0; i < 16; i++) p[i] = shown(bytes[i], row);
    p[16] = '\n';
}

}  // namespace

void put_hexcells(LineBuffer &out, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) std::copy_n(kCells[byte].data(), 3, out.claim(3));
}

void put_hexrow(LineBuffer &out, std::span<const uint8_t> bytes, const HexRow &row) {
    if (bytes.size() >= 16 && row.columns == 16 && row.characters && row.after_character.empty()) {
        put_full_row(out, bytes.first<16>(), row);
        return;
    }
    const size_t n = std::min<size_t>(bytes.size(), row.columns);
    bytes = bytes.first(n);
    put_hexcells(out, bytes);
    if (row.padded) out.fill(' ', 3 * (row.columns - n));
    if (row.characters) {
        out.text({row.gap, gap_size(row)});
        for (const uint8_t byte : bytes) {
            out.put(shown(byte, row));
            out.text(row.after_character);
        }
    }
    out.put('\n');
}
