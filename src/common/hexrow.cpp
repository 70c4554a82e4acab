#include "common/hexrow.h"

#include <algorithm>

#if defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace {

char shown(uint8_t byte, uint8_t first_printable, char filler) {
    return byte >= first_printable && byte <= 0x7E ? static_cast<char>(byte) : filler;
}

size_t gap_size(const HexRow &row) {
    size_t n = 0;
    while (n < sizeof row.gap && row.gap[n]) n++;
    return n;
}

constexpr size_t kFullRow = 16;
constexpr size_t kFullCells = 3 * kFullRow;

#if defined(__x86_64__)
// What copy_hexcells writes, with byte shuffles: 32 digits, then three times 16 of them with blanks between.
__attribute__((target("ssse3"))) void shuffle_cells(char *p, const uint8_t *values) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(values));
    const __m128i nibble = _mm_set1_epi8(15);
    const __m128i digits =
        _mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f');
    const __m128i high = _mm_shuffle_epi8(digits, _mm_and_si128(_mm_srli_epi16(bytes, 4), nibble));
    const __m128i low = _mm_shuffle_epi8(digits, _mm_and_si128(bytes, nibble));
    const __m128i first = _mm_unpacklo_epi8(high, low);      // digits of bytes 0 to 7
    const __m128i last = _mm_unpackhi_epi8(high, low);       // of bytes 8 to 15
    const __m128i middle = _mm_alignr_epi8(last, first, 8);  // of bytes 4 to 11
    // A negative place is a blank.
    const auto put = [](char *to, __m128i from, __m128i places) __attribute__((target("ssse3"))) {
        const __m128i blanks = _mm_and_si128(_mm_cmplt_epi8(places, _mm_setzero_si128()), _mm_set1_epi8(' '));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to),
                         _mm_or_si128(_mm_shuffle_epi8(from, places), blanks));
    };
    put(p, first, _mm_setr_epi8(0, 1, -1, 2, 3, -1, 4, 5, -1, 6, 7, -1, 8, 9, -1, 10));
    put(p + 16, middle, _mm_setr_epi8(3, -1, 4, 5, -1, 6, 7, -1, 8, 9, -1, 10, 11, -1, 12, 13));
    put(p + 32, last, _mm_setr_epi8(-1, 6, 7, -1, 8, 9, -1, 10, 11, -1, 12, 13, -1, 14, 15, -1));
}

const auto put_cells = __builtin_cpu_supports("ssse3") ? shuffle_cells : copy_hexcells;
#else
constexpr auto put_cells = copy_hexcells;
#endif

// The row that nearly every line of a large dump is. It is put together in locals, which nothing written can
// alias, so that the compiler keeps it in vector registers.
void put_full_row(LineBuffer &out, std::span<const uint8_t, kFullRow> bytes, const HexRow &row) {
    uint8_t values[kFullRow];
    std::copy_n(bytes.data(), kFullRow, values);
    const size_t gap = gap_size(row);
    const uint8_t first_printable = row.first_printable;
    const char filler = row.filler;
    char characters[kFullRow];
    for (size_t i = 0; i < kFullRow; i++) characters[i] = shown(values[i], first_printable, filler);

    char *p = out.claim(kFullCells + gap + kFullRow + 1);
    put_cells(p, values);
    p += kFullCells;
    std::copy_n(row.gap, sizeof row.gap, p);  // what the copies touch too much is overwritten
    p += gap;
    std::copy_n(characters, kFullRow, p);
    p[kFullRow] = '\n';
}

}  // namespace

void copy_hexcells(char *p, const uint8_t *values) {
    for (size_t i = 0; i < kFullRow; i++) std::copy_n(kHexCells[values[i]].data(), 4, p + 3 * i);
}

void put_hexcells(LineBuffer &out, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) std::copy_n(kHexCells[byte].data(), 3, out.claim(3));
}

void put_hexrow(LineBuffer &out, std::span<const uint8_t> bytes, const HexRow &row) {
    if (!listening && bytes.size() >= 16 && row.columns == 16 && row.characters &&
        row.after_character.empty()) {
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
    out.end_row();
}
