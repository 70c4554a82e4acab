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

char shown(uint8_t byte, uint8_t first_printable, char filler) {
    return byte >= first_printable && byte <= 0x7E ? static_cast<char>(byte) : filler;
}

size_t gap_size(const HexRow &row) {
    size_t n = 0;
    while (n < sizeof row.gap && row.gap[n]) n++;
    return n;
}

// The row that nearly every line of a large dump is. It is put together in locals, which nothing written can
// alias, so that the compiler keeps it in vector registers.
void put_full_row(LineBuffer &out, std::span<const uint8_t, 16> bytes, const HexRow &row) {
    constexpr size_t kCellsSize = 3 * 16;
    uint8_t values[16];
    std::copy_n(bytes.data(), 16, values);
    const size_t gap = gap_size(row);
    const uint8_t first_printable = row.first_printable;
    const char filler = row.filler;
    char characters[16];
    for (size_t i = 0; i < 16; i++) characters[i] = shown(values[i], first_printable, filler);

    char *p = out.claim(kCellsSize + gap + 16 + 1);
    for (size_t i = 0; i < 16; i++) std::copy_n(kCells[values[i]].data(), 4, p + 3 * i);
    p += kCellsSize;
    std::copy_n(row.gap, sizeof row.gap, p);  // what the copies touch too much is overwritten
    p += gap;
    std::copy_n(characters, 16, p);
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
            out.put(shown(byte, row.first_printable, row.filler));
            out.text(row.after_character);
        }
    }
    out.put('\n');
}
