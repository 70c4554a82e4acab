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

}  // namespace

void put_hexcells(LineBuffer &out, std::span<const uint8_t> bytes) {
    constexpr size_t kChunk = 1024;
    for (size_t done = 0; done < bytes.size(); done += kChunk) {
        const auto part = bytes.subspan(done, std::min(kChunk, bytes.size() - done));
        char *p = out.claim(part.size() * 3);
        for (const uint8_t byte : part) p = std::copy_n(kCells[byte].data(), 3, p);
    }
}

void put_hexrow(LineBuffer &out, std::span<const uint8_t> bytes, const HexRow &row) {
    const size_t shown = std::min<size_t>(bytes.size(), row.columns);
    bytes = bytes.first(shown);
    put_hexcells(out, bytes);
    if (row.padded) out.fill(' ', 3 * (row.columns - shown));
    if (row.characters) {
        out.text(row.gap);
        const size_t pitch = 1 + row.after_character.size();
        char *p = out.claim(shown * pitch);
        for (const uint8_t byte : bytes) {
            *p++ = byte >= row.first_printable && byte <= 0x7E ? static_cast<char>(byte) : row.filler;
            p = std::copy(row.after_character.begin(), row.after_character.end(), p);
        }
    }
    out.put('\n');
}
